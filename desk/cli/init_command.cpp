#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "desk/cli/commands.h"
#include "desk/cli/exit_status.h"
#include "desk/cli/project_file.h"
#include "desk/documents/document_files.h"
#include "platform/native_files.h"

namespace fs = std::filesystem;

namespace ventrix::desk {
namespace {

/// Names that readers of a result filter by, of DITA and DocBook.
constexpr std::array<std::string_view, 10> kFilterAttributes = {
    "audience", "product", "platform", "otherprops", "deliveryTarget",
    "props",    "arch",    "os",       "userlevel",  "condition"};

/// Inline elements that a page shows in a way of their own.
constexpr std::array<std::string_view, 8> kInlineElements = {"uicontrol", "wintitle", "codeph",  "filepath",
                                                             "guilabel",  "guimenu",  "command", "filename"};

constexpr char kHead[] =
    R"(# What "ventrix publish" makes from this folder. Paths start at the folder of this file.
# A line that begins with "#" has no effect. Each option of the command line is a key here;
# "ventrix help publish" explains them. The command line wins over this file.

# Options above the first [[publish]] hold for every deliverable.
#quiet = true

# A deliverable: "ventrix publish NAME" publishes one, "ventrix publish" all of them.
[[publish]]
)";

/// A TOML string.
std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (byte < 0x20 || byte == 0x7f) {
            char code[7];
            std::snprintf(code, sizeof code, "\\u%04X", byte);
            quoted += code;
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

/// Those of the names that occur in the document, as a TOML array.
template <typename Names, typename Known>
std::string OccurringIn(const Known& known, const Names& names) {
    std::string list;
    for (const std::string_view name : names) {
        if (known.contains(name)) {
            list += (list.empty() ? "" : ", ") + Quoted(name);
        }
    }
    return '[' + list + ']';
}

/// The value that stands for all values of an option in a comment.
std::string ExampleOf(const OptionDescription& option) {
    if (option.type.empty()) {
        return "true";
    }
    return option.repeats ? "[" + Quoted(option.type) + "]" : Quoted(option.type);
}

/// The other options, as comments, by their groups.
std::string FurtherOptions(const std::string& set) {
    std::string text;
    std::string group;
    for (const OptionDescription& option : OptionsOf(Command::kPublish)) {
        const bool isSet = set.find('\n' + option.name + " = ") != std::string::npos ||
                           set.find("\n#" + option.name + " = ") != std::string::npos;
        if (isSet || IsCommandLineOnly(option.name)) {
            continue;
        }
        if (option.group != group) {
            group = option.group;
            text += "\n# " + group + '\n';
        }
        text += "# " + option.text + "\n#" + option.name + " = " + ExampleOf(option) + '\n';
    }
    return text;
}

/// The stylesheet that suits a document that is not DITA: DocBook's, if it is installed.
std::string StylesheetFor(const DocumentFiles& files) {
    constexpr char kDocBook[] = "/usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl";
    std::error_code error;
    const bool isDocBook = files.names.elements.contains("article") || files.names.elements.contains("book");
    return isDocBook && fs::exists(kDocBook, error) ? kDocBook : std::string();
}

std::string RelativeTo(const fs::path& folder, const NativePath& document) {
    const fs::path relative = ToFilesystem(document).lexically_relative(folder);
    return relative.empty() ? document.utf8 : FromFilesystem(relative).utf8;
}

std::string NameFor(const NativePath& document) {
    const std::string stem = FromFilesystem(ToFilesystem(document).stem()).utf8;
    return stem.starts_with('-') ? "document" : stem;
}

std::string ProjectText(const NativePath& document, const NativePath& file, const DocumentFiles& files) {
    const fs::path folder = ToFilesystem(FolderOf(file));
    std::string set = "name = " + Quoted(NameFor(document)) +
                      "\ndocument = " + Quoted(RelativeTo(folder, document)) + "\noutput = \"out\"\n";
    if (const std::string stylesheet = StylesheetFor(files); !files.dita) {
        set += stylesheet.empty() ? "# A document that is not DITA needs a stylesheet.\n#xslt = \"FILE\"\n"
                                  : "xslt = " + Quoted(stylesheet) + '\n';
    }
    set += "\n# The values of these attributes and the markup of these elements are preserved.\n";
    set += "attributes = " + OccurringIn(files.names.attributes, kFilterAttributes) + '\n';
    set += "elements = " + OccurringIn(files.names.elements, kInlineElements) + '\n';
    return kHead + set + FurtherOptions(set);
}

/// The document to write the file for. Throws Stop if none is named and there is not exactly one map.
NativePath ChooseDocument(const std::string& named) {
    if (!named.empty()) {
        return AbsolutePath({named});
    }
    std::vector<NativePath> maps;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::current_path(error), error)) {
        if (entry.path().extension() == ".ditamap") {
            maps.push_back(FromFilesystem(entry.path()));
        }
    }
    if (maps.size() == 1) {
        return maps.front();
    }
    throw Stop{kExitUsage,
               maps.empty() ? "there is no DITA map in this folder; name a document: ventrix init DOCUMENT"
                            : "there are several DITA maps in this folder; name one: ventrix init DOCUMENT"};
}

void RefuseExisting(const NativePath& path) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(ToFilesystem(path), error))) {
        throw Stop{kExitUsage, path.utf8 + " exists already; edit it, or move it away"};
    }
}

/// Throws Stop if the file exists or cannot be written, which leaves no file behind.
void WriteNew(const NativePath& path, const std::string& text) {
    const std::error_code error = platform::WriteNewFile(ToFilesystem(path), text);
    if (error) {
        RefuseExisting(path);
        throw Stop{kExitUsage, path.utf8 + " cannot be written: " + error.message()};
    }
}

}  // namespace

int Init(const Options& options, const Screen& screen) {
    const NativePath file = AbsolutePath({kProjectFileName});
    RefuseExisting(file);
    const NativePath document = ChooseDocument(options.common.document);
    const DocumentFiles files = ListDocumentFiles(document);
    if (files.refused) {
        throw Stop{kExitUnreadable, document.utf8 + " cannot be read: " + files.reason};
    }
    WriteNew(file, ProjectText(document, file, files));
    screen.Result("wrote " + file.utf8);
    screen.Note(files.dita || !StylesheetFor(files).empty()
                    ? "next: edit it, then run 'ventrix publish'"
                    : "next: set xslt in it to a stylesheet, then run 'ventrix publish'");
    return kExitDone;
}

}  // namespace ventrix::desk
