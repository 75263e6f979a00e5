// Carries out a script of a test: test_script SCRIPT ARGUMENTS... A step is a line with a command and its
// words, of which the last may contain spaces. $0 is the script, $1 its first argument, $# their number,
// $here the script's folder, $stem the first argument without its suffix. \n, \t, \r and \xHH are those
// bytes.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

#include "platform/environment.h"
#include "platform/path_text.h"
#include "platform/standard_streams.h"

namespace {

namespace fs = std::filesystem;
using ventrix::platform::PathFromUtf8;
using ventrix::platform::Utf8FromPath;
using Words = std::vector<std::string>;

Words arguments;  ///< The script, then its own arguments.

fs::path Folder() {
    return PathFromUtf8(arguments[0]).parent_path();
}

std::string Content(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void Append(const std::string& file, const std::string& text) {
    std::ofstream(PathFromUtf8(file), std::ios::binary | std::ios::app) << text;
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

std::string WithBytes(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            bytes += text[at];
        } else if (text[++at] == 'x') {
            bytes += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else {
            bytes += text[at] == 'n' ? '\n' : text[at] == 't' ? '\t' : text[at] == 'r' ? '\r' : text[at];
        }
    }
    return bytes;
}

std::string Filled(std::string word) {
    const std::string first = arguments.size() > 1 ? arguments[1] : "";
    word = WithBytes(word);
    Replace(word, "$stem", first.substr(0, first.rfind('.')));
    Replace(word, "$here", Utf8FromPath(Folder()));
    Replace(word, "$#", std::to_string(arguments.size() - 1));
    Replace(word, "$0", arguments[0]);
    Replace(word, "$1", first);
    return word;
}

/// Cuts the first `count` words off the line; the last one is the rest of it.
Words SplitWords(std::string line, std::size_t count) {
    Words words;
    while (words.size() + 1 < count) {
        const std::size_t space = std::min(line.find(' '), line.size());
        words.push_back(Filled(line.substr(0, space)));
        line.erase(0, space + 1);
    }
    words.push_back(Filled(line));
    return words;
}

std::string ProcessNumber() {
#ifdef _WIN32
    return std::to_string(::GetCurrentProcessId());
#else
    return std::to_string(::getpid());
#endif
}

/// Starts another script that nothing waits for.
void StartDetached(const std::string& script) {
#ifdef _WIN32
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring line = L'"' + std::wstring(program) + L"\" \"" + PathFromUtf8(script).wstring() + L'"';
    ::STARTUPINFOW info = {};
    info.cb = sizeof info;
    ::PROCESS_INFORMATION started = {};
    ::CreateProcessW(program, line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr, &info,
                     &started);
#else
    if (::fork() == 0) {
        ::setsid();
        ::execl("/proc/self/exe", "test_script", script.c_str(), nullptr);
    }
#endif
}

/// Copies the lines that do not contain the word.
void CopyWithout(const std::string& word, const std::string& from, const std::string& to) {
    std::string kept;
    const std::string text = Content(PathFromUtf8(from));
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        const std::string line = text.substr(start, end - start);
        kept += line.find(word) == std::string::npos ? line : "";
        start = end;
    }
    std::ofstream(PathFromUtf8(to), std::ios::binary) << kept;
}

/// The value of a property whose characters are ASCII.
std::string Property(const std::string& properties, const std::string& name) {
    const std::size_t start = ('\n' + properties).find('\n' + name + '=');
    if (start == std::string::npos) {
        return {};
    }
    const std::size_t value = start + name.size() + 1;
    std::string text = properties.substr(value, properties.find('\n', value) - value);
    for (std::size_t at = text.find("\\u"); at != std::string::npos; at = text.find("\\u", at + 1)) {
        text.replace(at, 6, 1, static_cast<char>(std::stoi(text.substr(at + 2, 4), nullptr, 16)));
    }
    return text;
}

/// What the `dita` command of a toolkit does: writes a page, and keeps the properties, the filter and the
/// variable DITA_HOME beside itself. With a file `blind` beside it, it does not report the filter.
void RunToolkit(const std::string& page) {
    const std::string option = "--propertyfile=";
    bool isVerbose = false;
    std::string properties;
    for (const std::string& argument : arguments) {
        isVerbose |= argument == "--verbose";
        if (argument.starts_with(option)) {
            properties = Content(PathFromUtf8(argument.substr(option.size())));
        }
    }
    std::ofstream(Folder() / "properties", std::ios::binary) << properties;
    if (const std::string filter = Property(properties, "args.filter"); !filter.empty()) {
        std::ofstream(Folder() / "filter", std::ios::binary) << Content(PathFromUtf8(filter));
    }
    std::ofstream(Folder() / "home", std::ios::binary)
        << ventrix::platform::EnvironmentValue("DITA_HOME").value_or("");
    const fs::path out = PathFromUtf8(Property(properties, "output.dir"));
    fs::create_directories(out);
    std::ofstream(out / "page.html", std::ios::binary) << page << '\n';
    if (isVerbose && !fs::exists(Folder() / "blind")) {
        std::cout << "[DOTJ007I] Duplicate condition ventrix-filter=read\n";
    }
}

void CountTo(int last) {
    for (int number = 1; number <= last; ++number) {
        std::cout << number << '\n';
    }
}

void Await(const std::string& file) {
    while (Content(PathFromUtf8(file)).empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

struct Step {
    std::size_t words;  ///< How many the command takes.
    std::function<void(const Words&)> carryOut;
};

const std::map<std::string, Step> kSteps = {
    {"print", {1, [](const Words& w) { std::cout << w[0] << std::endl; }}},
    {"put", {1, [](const Words& w) { std::cout << w[0]; }}},
    {"complain", {1, [](const Words& w) { std::cerr << w[0] << '\n'; }}},
    {"fill", {2, [](const Words& w) { std::cout << std::string(std::stoul(w[0]), w[1][0]); }}},
    {"count", {1, [](const Words& w) { CountTo(std::stoi(w[0])); }}},
    {"input", {1, [](const Words&) { std::cout << std::cin.rdbuf(); }}},
    {"append", {2, [](const Words& w) { Append(w[1], w[0] + '\n'); }}},
    {"overwrite",
     {2, [](const Words& w) { std::ofstream(PathFromUtf8(w[1]), std::ios::binary) << w[0] << '\n'; }}},
    {"drop", {3, [](const Words& w) { CopyWithout(w[0], w[1], w[2]); }}},
    {"copy", {2, [](const Words& w) { fs::copy_file(PathFromUtf8(w[0]), PathFromUtf8(w[1])); }}},
    {"number", {1, [](const Words& w) { Append(w[0], ProcessNumber()); }}},
    {"await", {1, [](const Words& w) { Await(w[0]); }}},
    {"start", {1, [](const Words& w) { StartDetached(w[0]); }}},
    {"sleep",
     {1, [](const Words& w) { std::this_thread::sleep_for(std::chrono::seconds(std::stoi(w[0]))); }}},
    {"toolkit", {1, [](const Words& w) { RunToolkit(w[0]); }}},
    {"signal", {1, [](const Words& w) { std::raise(std::stoi(w[0])); }}},
    {"exit", {1, [](const Words& w) { std::exit(std::stoi(w[0])); }}},
};

void CarryOut(const std::string& line) {
    const std::size_t space = std::min(line.find(' '), line.size());
    const auto step = kSteps.find(line.substr(0, space));
    if (step == kSteps.end()) {
        std::cerr << "test_script: unknown step: " << line << '\n';
        std::exit(99);
    }
    step->second.carryOut(SplitWords(space == line.size() ? "" : line.substr(space + 1), step->second.words));
}

}  // namespace

int main(int argc, char** argv) {
    arguments = ventrix::platform::ProgramArguments(argc, argv);
    arguments.erase(arguments.begin());
    std::ifstream script(PathFromUtf8(arguments.at(0)), std::ios::binary);
    bool isStep = false;
    for (std::string line; std::getline(script, line);) {
        if (isStep && !line.empty()) {
            CarryOut(line);
        }
        isStep |= line == ":steps";
    }
}
