#include "platform/drives.h"

#include "platform/environment.h"

namespace ventrix::platform {
namespace {

constexpr char kVariableName[] = "VENTRIX_DRIVES";

}  // namespace

const DriveTable& ProcessDrives() {
    thread_local std::optional<std::string> parsedText;
    thread_local DriveTable table;
    const std::string text = EnvironmentValue(kVariableName).value_or("");
    if (parsedText != text) {
        table = ParseDrives(text);
        parsedText = text;
    }
    return table;
}

std::vector<std::string> MalformedProcessDrives() {
    return MalformedDrives(EnvironmentValue(kVariableName).value_or(""));
}

void SetProcessDrives(const DriveTable& drives) {
    SetEnvironmentValue(kVariableName, FormatDrives(drives));
}

std::string ToNative(std::string_view path) {
    return ToNative(ProcessDrives(), path);
}

std::optional<std::string> ToSystem(std::string_view nativePath) {
    return ToSystem(ProcessDrives(), nativePath);
}

}  // namespace ventrix::platform
