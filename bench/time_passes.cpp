// Prints how long encoding and decoding of a large topic take, each the best of seven times on a fresh copy.
// Unlike bench_passes it needs no other library, and is built for Windows too, so that the platforms can be
// compared.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/documents.h"
#include "markers/document_pass.h"
#include "platform/drives.h"
#include "platform/path_text.h"

namespace {

namespace fs = std::filesystem;
using namespace ventrix;

constexpr std::size_t kTopicElements = 240000;
constexpr int kTimes = 7;

void Pass(const fs::path& file, bool decode) {
    PublishParams params;
    params.attributes = {"audience", "product", "platform", "props"};
    params.elements = {"uicontrol"};
    const std::string path = platform::ToSystem(platform::Utf8FromPath(file)).value();
    params.packageBase = path;
    std::string errorText;
    if (!ProcessXmlFile(path, decode, params, errorText)) {
        throw std::runtime_error(errorText);
    }
}

// The pieces in which a file was written decide how quickly it is read and deleted, and the platforms'
// functions that copy files use different ones.
void WriteInOnePiece(const fs::path& file, std::string_view content) {
    std::ofstream(file, std::ios::binary) << content;
}

std::string ContentOf(const fs::path& file) {
    std::string content(fs::file_size(file), '\0');
    std::ifstream(file, std::ios::binary).read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
}

double BestMilliseconds(const fs::path& source, const fs::path& copy, bool decode) {
    const std::string content = ContentOf(source);
    double best = 0;
    for (int time = 0; time < kTimes; ++time) {
        fs::remove(copy);
        WriteInOnePiece(copy, content);
        const auto start = std::chrono::steady_clock::now();
        Pass(copy, decode);
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        best = time == 0 ? taken.count() : std::min(best, taken.count());
    }
    return best;
}

}  // namespace

int main() {
    const fs::path source = fs::absolute("time_passes.xml");
    const fs::path encoded = fs::absolute("time_passes-encoded.xml");
    WriteInOnePiece(source, bench::MakeTopic(kTopicElements));
    const double encoding = BestMilliseconds(source, encoded, false);
    const double decoding = BestMilliseconds(encoded, fs::absolute("time_passes-decoded.xml"), true);
    std::printf("%.1f MB: encode %.0f ms, decode %.0f ms\n",
                static_cast<double>(fs::file_size(source)) / 1'000'000, encoding, decoding);
    for (const char* name : {"time_passes.xml", "time_passes-encoded.xml", "time_passes-decoded.xml"}) {
        fs::remove(name);
    }
}
