#include "desk/toolkit/image_scale.h"

#include <charconv>

#include "desk/toolkit/dita_run.h"
#include "platform/files.h"

namespace ventrix::desk {
namespace {

unsigned Byte(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

unsigned BigEndian(std::string_view bytes, std::size_t at, std::size_t count) {
    unsigned number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        number = number << 8 | Byte(bytes, at + i);
    }
    return number;
}

/// Whether a segment of a JPEG file describes the frame. Three numbers among them have another meaning.
bool IsFrame(unsigned marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Goes from segment to segment: each has a marker of two bytes and then its length.
std::optional<ImageSize> SizeInJpeg(std::string_view image) {
    for (std::size_t at = 2; at + 9 <= image.size() && Byte(image, at) == 0xFF;) {
        if (IsFrame(Byte(image, at + 1))) {
            return ImageSize{BigEndian(image, at + 7, 2), BigEndian(image, at + 5, 2)};
        }
        at += 2 + BigEndian(image, at + 2, 2);
    }
    return std::nullopt;
}

std::optional<ImageSize> SizeOfFile(const xmlNode* image) {
    const auto target = DitaTargetOf(Attribute(image, "href"));
    std::string content;
    if (!target.has_value() || platform::ReadWholeFile(target->path.utf8, content) != platform::kErrorNone) {
        return std::nullopt;
    }
    return SizeIn(content);
}

void SetScaled(xmlNode* image, const char* name, unsigned length, unsigned percent) {
    xmlSetProp(image, Xml(name),
               Xml(std::to_string(static_cast<unsigned long long>(length) * percent / 100).c_str()));
}

}  // namespace

std::optional<ImageSize> SizeIn(std::string_view image) {
    if (image.starts_with("\x89PNG\r\n\x1a\n") && image.size() >= 24) {
        return ImageSize{BigEndian(image, 16, 4), BigEndian(image, 20, 4)};
    }
    if (image.starts_with("GIF8") && image.size() >= 10) {
        return ImageSize{Byte(image, 6) | Byte(image, 7) << 8, Byte(image, 8) | Byte(image, 9) << 8};
    }
    return image.starts_with("\xFF\xD8") ? SizeInJpeg(image) : std::nullopt;
}

void ScaleImage(xmlNode* image, const RemarkSink& remarks) {
    if (xmlHasProp(image, Xml("width")) != nullptr || xmlHasProp(image, Xml("height")) != nullptr) {
        return;
    }
    const std::string scale = Attribute(image, "scale");
    unsigned percent = 0;
    const auto [end, error] = std::from_chars(scale.data(), scale.data() + scale.size(), percent);
    const bool isNumber = error == std::errc() && end == scale.data() + scale.size();
    const std::optional<ImageSize> size = isNumber ? SizeOfFile(image) : std::nullopt;
    if (!size.has_value()) {
        remarks(image, kNotHandled,
                "scale=\"" + scale + "\" of <image>: " +
                    (isNumber ? "only local PNG, GIF and JPEG files are scaled" : "not a whole number") +
                    ", so that the image has its own size; write a width into the topic",
                {.attribute = "scale", .value = scale});
        return;
    }
    SetScaled(image, "width", size->width, percent);
    SetScaled(image, "height", size->height, percent);
}

}  // namespace ventrix::desk
