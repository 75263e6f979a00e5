#include "platform/mount_points.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/posix/mount_table.h"

namespace fs = std::filesystem;

namespace ventrix::platform {
namespace {

bool IsOctal(char digit) {
    return digit >= '0' && digit <= '7';
}

std::string WithoutEscapes(const std::string& field) {
    std::string text;
    for (std::size_t at = 0; at < field.size(); ++at) {
        if (field[at] == '\\' && at + 3 < field.size() &&
            std::all_of(&field[at + 1], &field[at + 4], IsOctal)) {
            text += static_cast<char>(std::stoi(field.substr(at + 1, 3), nullptr, 8));
            at += 3;
        } else {
            text += field[at];
        }
    }
    return text;
}

std::vector<fs::path> MountPoints() {
    std::ifstream table("/proc/self/mountinfo");
    return ReadMountTable(table);
}

/// Empty if the folder does not exist: the empty path is not a mount point and nothing lies below it.
fs::path RealFolder(const fs::path& folder) {
    std::error_code error;
    fs::path real = fs::canonical(folder, error);
    return error ? fs::path() : real;
}

}  // namespace

std::vector<fs::path> ReadMountTable(std::istream& table) {
    std::vector<fs::path> points;
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string skipped;
        std::string point;
        if (fields >> skipped >> skipped >> skipped >> skipped >> point) {
            points.emplace_back(WithoutEscapes(point));
        }
    }
    return points;
}

bool IsMountPoint(const fs::path& folder) {
    const fs::path real = RealFolder(folder);
    return std::ranges::any_of(MountPoints(), [&](const fs::path& point) { return point == real; });
}

std::vector<fs::path> MountPointsBelow(const fs::path& folder) {
    const fs::path real = RealFolder(folder);
    std::vector<fs::path> points = MountPoints();
    std::erase_if(points, [&](const fs::path& point) {
        const fs::path relative = point.lexically_relative(real);
        return relative.empty() || relative == "." || *relative.begin() == "..";
    });
    return points;
}

}  // namespace ventrix::platform
