#include "desk/cli/screen.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>

#include "desk/cli/run_log.h"
#include "platform/environment.h"
#include "platform/standard_streams.h"

namespace ventrix::desk {
namespace {

constexpr char kRed[] = "\033[31m";
constexpr char kYellow[] = "\033[33m";
constexpr char kPlain[] = "\033[0m";
constexpr char kClearLine[] = "\r\033[K";

/// Escapes control characters, so that a file name can neither break the line nor control the terminal.
std::string OneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            char code[5];
            std::snprintf(code, sizeof code, "\\x%02x", byte);
            line += code;
        } else {
            line += c;
        }
    }
    return line;
}

bool WantsColors(const std::string& option) {
    if (option != "auto") {
        return option == "always";
    }
    return platform::EnvironmentValue("NO_COLOR").value_or("").empty() && platform::IsErrorTerminal();
}

}  // namespace

Screen::Screen(const CommonOptions& options)
    : data_(options.json || options.format != "text"),
      quiet_(options.quiet),
      verbose_(options.verbose),
      colors_(WantsColors(options.color)),
      progress_(!options.quiet && !data_ && platform::IsErrorTerminal()) {}

void Screen::Result(const std::string& text) const {
    if (!data_) {
        std::cout << OneLine(text) << '\n';
    }
}

void Screen::Heading(const std::string& text) const {
    if (!data_) {
        // Flushed, so that messages on standard error come after it.
        std::cout << "== " << OneLine(text) << std::endl;
    }
}

void Screen::Print(const char* color, const char* label, const std::string& text) const {
    std::cerr << (colors_ ? color : "") << label << (colors_ ? kPlain : "") << OneLine(text) << '\n';
}

void Screen::Note(const std::string& text) const {
    if (!quiet_) {
        Print("", "", text);
    }
}

void Screen::Warning(const std::string& text) const {
    Print(kYellow, "warning: ", text);
}

void Screen::Error(const std::string& text) const {
    Print(kRed, "error: ", text);
}

void Screen::Console(const std::string& text) const {
    if (verbose_) {
        std::cerr << text << (text.ends_with('\n') ? "" : "\n");
    }
}

void PrintObject(const nlohmann::json& object) {
    std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void to_json(nlohmann::json& json, const NativePath& path) {
    json = path.utf8;
}

Progress::Progress(const Screen& screen, NativePath logFile, std::size_t files) {
    if (screen.ShowsProgress()) {
        thread_ = std::jthread(
            [this, log = std::move(logFile), files](std::stop_token stop) { Show(log, files, stop); });
    }
}

Progress::~Progress() {
    if (thread_.joinable()) {
        thread_.request_stop();
        thread_.join();
        std::cerr << kClearLine << std::flush;
    }
}

void Progress::Show(const NativePath& logFile, std::size_t files, std::stop_token stop) const {
    const std::uint64_t start = LogSize(logFile);
    std::mutex mutex;
    std::condition_variable_any tick;
    std::unique_lock lock(mutex);
    while (!tick.wait_for(lock, stop, std::chrono::milliseconds(200), [] { return false; }) &&
           !stop.stop_requested()) {
        const RunLog log = ReadRunLog(LogFrom(logFile, start));
        std::cerr << kClearLine;
        if (log.decoded > 0) {
            std::cerr << "decoding page " << log.decoded;
        } else if (transforming_) {
            std::cerr << "transforming";
        } else if (log.encoded > 0) {
            std::cerr << "encoding " << log.encoded << " of " << files;
        } else {
            std::cerr << "packaging";
        }
        std::cerr << std::flush;
    }
}

}  // namespace ventrix::desk
