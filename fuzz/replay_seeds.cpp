// Runs the seeds of one target: fuzz_seeds TARGET FOLDER_OR_FILE... Part of the tests, so that every input
// that once showed a fault is tried again with each compiler.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/environment.h"
#include "fuzz/targets.h"

namespace {

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& place) {
    if (!std::filesystem::is_directory(place)) {
        return {place};
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Replay(const ventrix::fuzz::NamedTarget& target, const std::filesystem::path& file) {
    std::fprintf(stderr, "%s\n", file.c_str());
    std::ifstream stream(file, std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(stream), {}};
    target.run(input);
    target.run(std::string_view(input).substr(0, input.size() / 2));
}

}  // namespace

int main(int count, char** arguments) {
    const std::string name = count > 1 ? arguments[1] : "";
    const auto* const target =
        std::ranges::find(ventrix::fuzz::kTargets, name, &ventrix::fuzz::NamedTarget::name);
    if (target == std::end(ventrix::fuzz::kTargets) || count < 3) {
        std::fprintf(stderr, "usage: fuzz_seeds TARGET FOLDER_OR_FILE... (no target '%s')\n", name.c_str());
        return 2;
    }
    ventrix::fuzz::PrepareProcess();
    std::size_t replayed = 0;
    for (int i = 2; i < count; ++i) {
        for (const std::filesystem::path& file : FilesIn(arguments[i])) {
            Replay(*target, file);
            ++replayed;
        }
    }
    std::printf("%zu seeds\n", replayed);
    return replayed == 0 ? 1 : 0;
}
