#include "desk/cli/document_checks.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "desk/cli/exit_status.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/spelling.h"
#include "desk/documents/passed_over.h"
#include "desk/toolkit/ditaval.h"
#include "desk/toolkit/installed_toolkit.h"

namespace ventrix::desk {
namespace {

/// Attributes that DITA or DocBook define for profiling and metadata. A script may name them all for every
/// document.
constexpr std::array<std::string_view, 30> kStandardAttributes = {
    "arch",        "audience",     "base",       "condition", "conformance", "deliveryTarget",
    "dir",         "id",           "importance", "lang",      "os",          "otherprops",
    "outputclass", "platform",     "product",    "props",     "remap",       "rev",
    "revision",    "revisionflag", "role",       "security",  "status",      "translate",
    "userlevel",   "vendor",       "wordsize",   "xml:base",  "xml:id",      "xml:lang"};

/// Inline elements that DITA or DocBook define.
constexpr std::array<std::string_view, 45> kStandardElements = {
    "abbrev",    "acronym",      "apiname",  "application", "citetitle",      "cite",      "classname",
    "cmdname",   "code",         "codeph",   "command",     "computeroutput", "emphasis",  "filename",
    "filepath",  "firstterm",    "function", "guibutton",   "guilabel",       "guimenu",   "keycap",
    "keyword",   "link",         "literal",  "menucascade", "msgnum",         "msgph",     "option",
    "parameter", "parmname",     "phrase",   "productname", "quote",          "shortcut",  "state",
    "synph",     "systemoutput", "term",     "text",        "trademark",      "uicontrol", "userinput",
    "varname",   "wintitle",     "xref"};

/// A single letter is too large a part of a shorter name: `b` is not a misspelling of `p`.
constexpr std::size_t kShortestMisspelling = 3;

enum class NameKind { kAttribute, kElement };

class NameReporter {
  public:
    NameReporter(const DocumentNames& names, RunReport& report, const Screen& screen)
        : names_(names), report_(report), screen_(screen) {}

    void Lists(const char* option, NameKind kind, const std::vector<std::string>& lists) const {
        for (const std::string& list : lists) {
            for (const std::string& name : SplitList(list)) {
                Name(option, kind, name);
            }
        }
    }

    void Name(const char* option, NameKind kind, const std::string& name) const {
        const auto& known = kind == NameKind::kAttribute ? names_.attributes : names_.elements;
        if (known.contains(name)) {
            return;
        }
        const std::string problem =
            std::string(option) + ": '" + name + "' does not occur in any file of the document";
        const std::string meant = name.size() < kShortestMisspelling || IsStandard(kind, name)
                                      ? std::string()
                                      : MeantWord(name, {known.begin(), known.end()});
        if (meant.empty()) {
            screen_.Note(problem);
        } else {
            Warn(report_, screen_, {{}, 0, "misspelled-name", problem + "; did you mean '" + meant + "'?"});
        }
    }

  private:
    static bool IsStandard(NameKind kind, std::string_view name) {
        return kind == NameKind::kAttribute ? std::ranges::count(kStandardAttributes, name) > 0
                                            : std::ranges::count(kStandardElements, name) > 0;
    }

    const DocumentNames& names_;
    RunReport& report_;
    const Screen& screen_;
};

/// The attributes that the rules of the filters name.
std::set<std::string> FilteredAttributes(const std::vector<std::string>& filters) {
    std::set<std::string> attributes;
    for (const std::string& filter : filters) {
        std::string reason;
        for (const auto& [key, excluded] : ReadDitaval({filter}, reason).value_or(Ditaval()).excludes) {
            if (!key.first.empty()) {
                attributes.insert(key.first);
            }
        }
    }
    return attributes;
}

}  // namespace

void RefuseToolkitProject(const NativePath& document) {
    if (IsToolkitProject(document)) {
        throw Stop{kExitUsage,
                   document.utf8 +
                       " is a project file of the DITA Open Toolkit; publish the map that it names, "
                       "with its filter as --ditaval"};
    }
}

void ReportPassedOverFiles(const DocumentFiles& files, RunReport& report, const Screen& screen) {
    for (const PassedOverFile& file : PassedOverFiles(files)) {
        if (file.xml) {
            Warn(report, screen,
                 {file.path, 0, "passed-over",
                  "is XML, but nothing in it is preserved, because only files named .xml, .dita or .ditamap "
                  "are encoded; rename it"});
        } else {
            screen.Note(file.path.utf8 + " is packaged as it is; nothing in it is preserved");
        }
    }
}

void ReportAbsentNames(const PublishOptions& options, const DocumentNames& names, RunReport& report,
                       const Screen& screen) {
    const NameReporter reporter(names, report, screen);
    reporter.Lists("--attributes", NameKind::kAttribute, options.attributes);
    reporter.Lists("--elements", NameKind::kElement, options.elements);
    reporter.Lists("--source-path", NameKind::kElement, options.sourcePath);
    for (const std::string& attribute : FilteredAttributes(options.ditaval)) {
        reporter.Name("--ditaval", NameKind::kAttribute, attribute);
    }
    for (const std::string& groups : options.scopedAttributes) {
        const std::vector<std::string> fields = SplitList(groups);
        for (std::size_t group = 0; group + 3 < fields.size(); group += 4) {
            reporter.Name("--scoped-attributes", NameKind::kElement, fields[group]);
            reporter.Name("--scoped-attributes", NameKind::kAttribute, fields[group + 1]);
        }
    }
}

}  // namespace ventrix::desk
