// Output of the command line: results go to standard output, everything else to standard error. Colours and
// progress appear only on a terminal, unless an option says otherwise.
#pragma once

#include <atomic>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <thread>

#include "desk/cli/options.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

class Screen {
  public:
    explicit Screen(const CommonOptions& options);

    void Result(const std::string& text) const;   ///< One line of the result, unless it is printed as data.
    void Heading(const std::string& text) const;  ///< Above the result of one of several runs.
    void Note(const std::string& text) const;     ///< Nothing with --quiet.
    void Warning(const std::string& text) const;
    void Error(const std::string& text) const;
    void Console(const std::string& text) const;  ///< Output of the host's console; only with --verbose.

    bool ShowsProgress() const { return progress_; }

  private:
    void Print(const char* color, const char* label, const std::string& text) const;

    bool data_, quiet_, verbose_, colors_, progress_;
};

/// Prints a JSON object, the only output of --json, in one line on standard output. Invalid UTF-8, which a
/// truncated path may contain, becomes U+FFFD.
void PrintObject(const nlohmann::json& object);

/// Converts a path to a JSON string. The JSON library finds this function by its name.
void to_json(nlohmann::json& json, const NativePath& path);

/// Shows the progress of a run in one line of the terminal, from what the run appends to its log. Does
/// nothing if standard error is not a terminal.
class Progress {
  public:
    Progress(const Screen& screen, NativePath logFile, std::size_t files);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Reports whether a client is transforming the document, which the log does not show.
    void SetTransforming(bool transforming) { transforming_ = transforming; }

  private:
    void Show(const NativePath& logFile, std::size_t files, std::stop_token stop) const;

    std::atomic<bool> transforming_ = false;
    std::jthread thread_;
};

}  // namespace ventrix::desk
