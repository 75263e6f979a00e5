// A folder with the sources of a map, an earlier result with files of the user in it, and what has to hold of
// them after any run, however it ended.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "program_run.h"

namespace ventrix::test {

/// What a folder holds: a path below it, and the file's content, or "/" for a folder.
using Tree = std::map<std::string, std::string>;

Tree TreeOf(const std::string& folder);

/// Which of two states of the sources is there. Every page of a result tells them apart.
enum class Edition { kEarlier, kNew };

struct Ended {
    int status = -1;
    std::string out, error;
};

class PublishingWorld : public TestFolder {
  public:
    /// A map with this many topics, the first with a graphic. `place` is where the output folder goes: a
    /// folder below this one, or "".
    explicit PublishingWorld(int topics, std::string place = {});

    /// Brings the world to its start: the result of the earlier edition in `out` with two files of the user,
    /// and the sources of the new edition. Empty, or why that failed.
    std::string Begin();

    Ended Publish(const std::vector<std::string>& variables = {},
                  const std::vector<std::string>& arguments = {}) const;
    Ended Validate(const std::vector<std::string>& variables = {}) const;
    std::vector<std::string> PublishArguments() const;
    std::vector<std::string> Environment() const;
    static Ended Finish(ProgramRun& run);

    /// What is wrong after a run of `publish` that ended by itself, one line each.
    std::vector<std::string> FaultsAfterPublish(const Ended& ended) const;
    /// What is wrong after a run of `validate`, compared with one that nothing disturbed.
    std::vector<std::string> FaultsAfterValidate(const Ended& ended, const Ended& undisturbed) const;
    /// What is wrong after a run that was killed. It may leave anything but a loss.
    std::vector<std::string> FaultsAfterKill() const;

    /// Publishes the earlier edition, without disturbance and without --force, and returns to the start after
    /// the run `before`. What is wrong, one line each.
    std::vector<std::string> SettleAndReturn(const Ended& before);

    /// Removes what a disturbed run left in its folder for temporary files.
    void ClearTemporaryFolder() const;

    /// Whether a name of this world is a file with this content, or a folder for "/".
    bool Holds(const std::string& name, const std::string& content) const;

    /// Whether the output folder has entries that no result has.
    bool HasKeptEntries() const { return Output() != earlier_; }

    std::string OutputName() const { return place_ + "out"; }

    void WriteSources(Edition edition) const;

  private:
    Tree Output() const;
    void CheckSources(std::vector<std::string>& faults) const;
    void CheckLeftovers(const std::string& said, std::vector<std::string>& faults) const;
    void CheckIncomplete(const std::string& said, std::vector<std::string>& faults) const;

    int topics_;
    std::string place_;
    Tree sources_, earlier_, new_;
};

}  // namespace ventrix::test
