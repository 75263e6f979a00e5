#include "publishing_world.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace ventrix::test {
namespace {

constexpr const char* kMark = ".ventrix-result";
const Tree kForeign = {{"CNAME", "guide.example.com"}, {"notes", "/"}, {"notes/mine.txt", "kept by hand"}};

/// The path of the first entry that differs, with what is wrong with it; empty if none does.
std::string Difference(const Tree& actual, const Tree& expected) {
    for (const auto& [name, content] : expected) {
        const auto found = actual.find(name);
        if (found == actual.end()) {
            return name + " is missing";
        }
        if (found->second != content) {
            return name + " differs";
        }
    }
    for (const auto& [name, content] : actual) {
        if (!expected.contains(name)) {
            return name + " is left over";
        }
    }
    return {};
}

bool IsWholePage(const std::string& page) {
    const std::size_t last = page.find_last_not_of(" \t\r\n");
    return last != std::string::npos && page.substr(0, last + 1).ends_with("</html>");
}

bool Names(const std::string& said, const std::string& word) {
    return said.find(word) != std::string::npos;
}

/// The word by which a message names a page or its source: "first" for xhtml/first.html.
std::string Stem(const std::string& name) {
    const std::string stem = fs::path(name).stem().string();
    return stem == "index" ? "guide" : stem;
}

/// Whether the entry is a file of the user, or of an earlier result that could not be recognised, under a
/// name that a message gives.
bool IsKept(const std::string& name, const std::string& said) {
    return (name.ends_with(".kept") || name.ends_with(".edited")) && Names(said, name);
}

std::string TopicName(int number) {
    static const char* const names[] = {"first", "second"};
    return number < 2 ? names[number] : "topic" + std::to_string(number);
}

}  // namespace

Tree TreeOf(const std::string& folder) {
    Tree tree;
    std::error_code ignored;
    for (const auto& entry : fs::recursive_directory_iterator(folder, ignored)) {
        std::string content = "/";
        if (!entry.is_directory()) {
            std::ifstream file(entry.path(), std::ios::binary);
            content.assign(std::istreambuf_iterator<char>(file), {});
        }
        tree[entry.path().lexically_relative(folder).string()] = std::move(content);
    }
    return tree;
}

PublishingWorld::PublishingWorld(int topics, std::string place) : topics_(topics), place_(std::move(place)) {
    fs::create_directories(Native("tmp"));
    WriteProgram("script", "#!/bin/sh\n");
}

void PublishingWorld::WriteSources(Edition edition) const {
    const std::string word = edition == Edition::kEarlier ? "Earlier" : "New";
    std::string map = "<map><title>" + word + "</title>";
    for (int topic = 0; topic < topics_; ++topic) {
        const std::string name = TopicName(topic);
        map += "<topicref href='" + name + ".dita'/>";
        Write("in/" + name + ".dita",
              "<topic id='t'><title>" + word + " " + name + "</title><body><p audience='a'>Text " +
                  "with <uicontrol>markup</uicontrol>.</p>" +
                  (topic == 0 ? "<image href='images/plan.svg'/>" : "") + "</body></topic>");
    }
    Write("in/guide.ditamap", map + "</map>");
    Write("in/images/plan.svg", "<svg xmlns='http://www.w3.org/2000/svg'><desc>" + word + "</desc></svg>");
}

Tree PublishingWorld::Output() const {
    Tree tree = TreeOf(Native(OutputName()));
    tree.erase(kMark);
    return tree;
}

std::vector<std::string> PublishingWorld::Environment() const {
    return {"TMPDIR=" + Native("tmp"), "HOME=" + Native("home")};
}

std::vector<std::string> PublishingWorld::PublishArguments() const {
    return {"publish",    "in/guide.ditamap", "-o",      OutputName(), "--attributes", "audience",
            "--elements", "uicontrol",        "--xpath", "--log",      "publish.log"};
}

Ended PublishingWorld::Finish(ProgramRun& run) {
    Ended ended;
    ended.status = run.Await();
    ended.out = run.Out();
    ended.error = run.Error();
    return ended;
}

Ended PublishingWorld::Publish(const std::vector<std::string>& variables,
                               const std::vector<std::string>& arguments) const {
    std::vector<std::string> environment = Environment(), all = PublishArguments();
    environment.insert(environment.end(), variables.begin(), variables.end());
    all.insert(all.end(), arguments.begin(), arguments.end());
    ProgramRun run(Native(), all, environment);
    return Finish(run);
}

Ended PublishingWorld::Validate(const std::vector<std::string>& variables) const {
    std::vector<std::string> environment = Environment();
    environment.insert(environment.end(), variables.begin(), variables.end());
    ProgramRun run(Native(), {"validate", "in/guide.ditamap"}, environment);
    return Finish(run);
}

std::string PublishingWorld::Begin() {
    for (Tree* result : {&new_, &earlier_}) {
        WriteSources(result == &new_ ? Edition::kNew : Edition::kEarlier);
        const Ended ended = Publish();
        if (ended.status != 0) {
            return "publishing without disturbance ends with " + std::to_string(ended.status) + ":\n" +
                   ended.out + ended.error;
        }
        for (const auto& [name, content] : kForeign) {
            if (content != "/") {
                Write(OutputName() + "/" + name, content);
            }
        }
        *result = Output();
    }
    WriteSources(Edition::kNew);
    sources_ = TreeOf(Native("in"));
    return new_ == earlier_ ? "both editions have the same result" : "";
}

void PublishingWorld::CheckSources(std::vector<std::string>& faults) const {
    const std::string difference = Difference(TreeOf(Native("in")), sources_);
    if (!difference.empty()) {
        faults.push_back("sources: " + difference);
    }
}

void PublishingWorld::CheckLeftovers(const std::string& said, std::vector<std::string>& faults) const {
    std::vector<fs::path> left;
    for (const char* folder : {"", "tmp"}) {
        for (const auto& entry : fs::directory_iterator(Native(folder))) {
            left.push_back(entry.path());
        }
    }
    if (!place_.empty()) {
        for (const auto& entry : fs::directory_iterator(Native(place_))) {
            left.push_back(entry.path());
        }
    }
    for (const fs::path& path : left) {
        const std::string name = path.filename().string();
        const bool expected = name == "in" || name == "script" || name == "tmp" || name == "publish.log" ||
                              name == "out" || path == fs::path(Native(place_)).parent_path();
        if (!expected && !Names(said, name)) {
            faults.push_back("left over, and no message names it: " + path.string());
        }
    }
}

bool PublishingWorld::Holds(const std::string& name, const std::string& content) const {
    return content == "/" ? fs::is_directory(Native(name)) : Read(name) == content;
}

/// After exit status 1, what is missing from the result has to be named.
void PublishingWorld::CheckIncomplete(const std::string& said, std::vector<std::string>& faults) const {
    const Tree output = Output();
    bool complete = true, named = false;
    for (const auto& [name, content] : new_) {
        const auto found = output.find(name);
        if ((found != output.end() && found->second == content) || kForeign.contains(name)) {
            continue;
        }
        complete = false;
        named = named || Names(said, Stem(name));
        if (found != output.end() &&
            !(name.ends_with(".html") ? IsWholePage(found->second) : Names(name, "buildlog"))) {
            faults.push_back("half-written: " + name);
        }
    }
    for (const auto& [name, content] : output) {
        if (!new_.contains(name) && !IsKept(name, said) && !Names(said, name)) {
            faults.push_back("not of the new result: " + name);
        }
    }
    if (!complete && !named) {
        faults.push_back("no message names what is missing (" + Difference(output, new_) + ")");
    }
    if (!Names(said, "warning")) {
        faults.push_back("exit status 1 without a warning");
    }
}

std::vector<std::string> PublishingWorld::FaultsAfterPublish(const Ended& ended) const {
    std::vector<std::string> faults;
    const std::string said = ended.out + ended.error;
    const Tree output = Output();
    if (ended.status < 0) {
        faults.emplace_back("the run did not end");
    } else if (ended.status >= 1000) {
        faults.push_back("ended by signal " + std::to_string(ended.status - 1000));
    } else if (ended.status == 0 && output != new_) {
        faults.push_back("exit status 0, but the result is not whole: " + Difference(output, new_));
    } else if (ended.status == 1) {
        CheckIncomplete(said, faults);
    } else if (ended.status > 1 && output != earlier_ && !(ended.status > 128 && output == new_)) {
        // A signal may come when the new result is complete.
        faults.push_back("the earlier result is not as it was: " + Difference(output, earlier_));
    }
    for (const auto& [name, content] : kForeign) {
        const auto found = output.find(name);
        const std::string aside = place_ + ".out.ventrix-run/earlier";
        const bool named = Names(said, place_ + ".out.ventrix-run") && Holds(aside + "/" + name, content);
        if ((found == output.end() || found->second != content) && !named) {
            faults.push_back("lost a file of the user: " + name);
        }
    }
    if (ended.status > 1 && ended.error.empty()) {
        faults.emplace_back("failed without a message");
    }
    CheckSources(faults);
    CheckLeftovers(said, faults);
    return faults;
}

std::vector<std::string> PublishingWorld::FaultsAfterValidate(const Ended& ended,
                                                              const Ended& undisturbed) const {
    std::vector<std::string> faults;
    if (ended.status < 0) {
        faults.emplace_back("the run did not end");
    } else if (ended.status >= 1000) {
        faults.push_back("ended by signal " + std::to_string(ended.status - 1000));
    } else if (ended.status == undisturbed.status && ended.out != undisturbed.out) {
        faults.push_back("same exit status, but another answer than without the fault");
    } else if (ended.status != undisturbed.status && ended.error.empty() && ended.out == undisturbed.out) {
        faults.emplace_back("failed without a message");
    }
    const std::string difference = Difference(Output(), earlier_);
    if (!difference.empty()) {
        faults.push_back("the result was changed: " + difference);
    }
    CheckSources(faults);
    CheckLeftovers(ended.out + ended.error, faults);
    return faults;
}

std::vector<std::string> PublishingWorld::FaultsAfterKill() const {
    std::vector<std::string> faults;
    for (const auto& [name, content] : kForeign) {
        const bool present = Holds(OutputName() + "/" + name, content) ||
                             Holds(place_ + ".out.ventrix-run/earlier/" + name, content);
        if (!present) {
            faults.push_back("lost a file of the user: " + name);
        }
    }
    CheckSources(faults);
    return faults;
}

void PublishingWorld::ClearTemporaryFolder() const {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(Native("tmp"))) {
        fs::remove_all(entry.path(), ignored);
    }
}

std::vector<std::string> PublishingWorld::SettleAndReturn(const Ended& before) {
    std::vector<std::string> faults;
    ClearTemporaryFolder();
    WriteSources(Edition::kEarlier);
    const Ended ended = Publish();
    Tree output = Output();
    std::erase_if(output, [&](const auto& entry) { return IsKept(entry.first, before.error + ended.error); });
    const std::string difference = Difference(output, earlier_);
    // What the disturbed run could not record counts as the user's, which the next run has to say.
    const bool kept = output != Output();
    if (ended.status != 0 && !(ended.status == 1 && kept)) {
        faults.push_back("the next run ends with " + std::to_string(ended.status) + ": " + ended.error);
    } else if (!difference.empty()) {
        faults.push_back("the next run's result is not whole: " + difference + "\n" + ended.error);
    }
    WriteSources(Edition::kNew);
    std::error_code ignored;
    for (const std::string& folder : {std::string(), place_}) {
        for (const auto& entry : fs::directory_iterator(Native(folder))) {
            if (entry.path().filename().string().starts_with("out.failed")) {
                fs::remove_all(entry.path(), ignored);
            }
        }
    }
    return faults;
}

}  // namespace ventrix::test
