// The size of an image that its topic scales.
#pragma once

#include <optional>
#include <string_view>

#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {

struct ImageSize {
    unsigned width = 0, height = 0;  ///< Pixels.
};

/// The size that the bytes of a PNG, GIF or JPEG file declare; nothing for other files.
std::optional<ImageSize> SizeIn(std::string_view image);

/// Turns the `scale` of an image, in percent, into a width and a height. One that has a width or a height
/// keeps it. What cannot be scaled is reported as a remark.
void ScaleImage(xmlNode* image, const RemarkSink& remarks);

}  // namespace ventrix::desk
