// What the person sees: results on standard output, everything else on standard error, colours and progress
// only where a person looks.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "desk/cli/options.h"
#include "desk/paths/paths.h"

namespace ventrix::desk {

class Screen {
  public:
    explicit Screen(const CommonOptions& options);

    void Result(const std::string& text) const;  ///< One line of the result; not with --json.
    void Note(const std::string& text) const;    ///< Said unless --quiet.
    void Warning(const std::string& text) const;
    void Error(const std::string& text) const;
    void Console(const std::string& text) const;  ///< The host's console; said with --verbose.

    bool ShowsProgress() const { return progress_; }
    bool Json() const { return json_; }

  private:
    void Say(const char* color, const char* word, const std::string& text) const;

    bool json_, quiet_, verbose_, colors_, progress_;
};

/// Sends what this process and its children print on standard output to standard error, for as long as it
/// lives: what a script or a client prints is no result.
class QuietStandardOutput {
  public:
    QuietStandardOutput();
    ~QuietStandardOutput();
    QuietStandardOutput(const QuietStandardOutput&) = delete;
    QuietStandardOutput& operator=(const QuietStandardOutput&) = delete;

  private:
    int kept_;
};

/// A line on the terminal that tells how far a run is, from what it adds to its log. Nothing where no person
/// looks.
class Progress {
  public:
    Progress(const Screen& screen, NativePath logFile, std::size_t files);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The name of the client that transforms; static text.
    void Transforming(bool on) { transforming_ = on; }

  private:
    void Show(const NativePath& logFile, std::size_t files, std::stop_token stop) const;

    std::atomic<bool> transforming_ = false;
    std::jthread thread_;
};

}  // namespace ventrix::desk
