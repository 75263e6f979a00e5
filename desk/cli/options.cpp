#include "desk/cli/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "desk/cli/exit_status.h"
#include "desk/cli/option_checks.h"
#include "desk/cli/spelling.h"

namespace ventrix::desk {
namespace {

constexpr char kDescription[] =
    "Publishes DITA and other XML as HTML and preserves what the transformation would lose: attributes,\n"
    "inline elements, XPaths and source paths.";

constexpr char kFooter[] = R"(Examples:
  ventrix publish guide.ditamap -o out --attributes audience,product --elements uicontrol --xpath
  ventrix publish book.xml -o out --xslt /usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl
  ventrix validate guide.ditamap
  ventrix request --document guide.ditamap "Validate -docId {docId} -logFile Z:\tmp\log.txt"

Exit status:
  0  success                             5  the output folder cannot be used
  1  completed, with findings            6  the transformation failed or wrote no pages
  2  invalid usage                       7  the host or the module could not start
  3  the document cannot be read       128  plus the number of the signal that ended the run,
  4  the module refused the request,        for example 130 after Ctrl-C
     or packaging failed

Results are printed to standard output, all other messages to standard error.)";

void AddCommon(CLI::App& command, CommonOptions& common) {
    command.add_option("--log", common.log, "Report log; each run appends to it")->type_name("FILE");
    command
        .add_option("--unsaved", common.unsaved,
                    "Treat a referenced file as having unsaved changes; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command
        .add_option("--allow-read", common.allowRead,
                    "Also allow entities and included text from this folder; may be repeated")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    command
        .add_option("--drive", common.drives,
                    "Map a drive (C, D ...) or server (\\\\name) to a folder; may be repeated")
        ->type_name("X=FOLDER")
        ->allow_extra_args(false);
    command
        .add_option(
            "--toolkit", common.toolkit,
            "Toolkit for DITA: builtin (the default, Ventrix's own), installed (the DITA Open Toolkit "
            "on this machine), or the folder of a DITA Open Toolkit")
        ->type_name("WHICH")
        ->capture_default_str();
    command
        .add_option("--catalog", common.catalog, "XML catalog to search for DTDs before the system catalogs")
        ->type_name("FILE");
    command.add_option("--color", common.color, "Use colours: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN")
        ->capture_default_str();
    auto* quiet = command.add_flag("--quiet,-q", common.quiet, "Print only results and errors");
    command.add_flag("--verbose,-v", common.verbose, "Also print the host's console output")->excludes(quiet);
    command.add_flag("--json", common.json, "Print one JSON object to standard output and nothing else");
}

void AddNames(CLI::App& command, const char* name, std::vector<std::string>& list, const char* what) {
    command.add_option(name, list, what)->type_name("NAME,...")->allow_extra_args(false);
}

void AddTransformation(CLI::App& command, PublishOptions& publish) {
    auto* ditaOt =
        command.add_flag("--dita-ot", publish.ditaOt,
                         "Transform as DITA, with the toolkit that --toolkit names (default for DITA)");
    auto* xslt = command.add_option("--xslt", publish.xslt, "Transform with this stylesheet")
                     ->type_name("FILE")
                     ->excludes(ditaOt);
    command
        .add_option("--param", publish.params,
                    "Parameter of the stylesheet, as an XPath expression; may be repeated")
        ->type_name("NAME=EXPRESSION")
        ->allow_extra_args(false);
    command
        .add_option("--string-param", publish.stringParams,
                    "Parameter of the stylesheet, as a string; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    command
        .add_option("--xslt-engine", publish.xsltEngine,
                    "XSLT processor: libxslt (default for XSLT 1.0) or saxon (default for 2.0 and 3.0)")
        ->check(CLI::IsMember({"libxslt", "saxon"}))
        ->type_name("WHICH");
    command
        .add_option("--pre-script", publish.preScript,
                    "Program to run on the packaged document before the transformation")
        ->type_name("FILE");
    command
        .add_option("--post-script", publish.postScript,
                    "Program to run on the packaged document after the transformation")
        ->type_name("FILE");
    command
        .add_option(
            "--ditaval", publish.ditaval,
            "DITAVAL file that filters a DITA document; may be repeated, the first matching rule counts")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command
        .add_option("--transtype", publish.transtype,
                    "Transformation type of an installed toolkit that writes XHTML (default: xhtml)")
        ->type_name("NAME");
    command
        .add_option("--toolkit-param", publish.toolkitParams,
                    "Parameter for an installed toolkit; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    command.add_option("--out-file", publish.outFile, "Output path of the transformation")->type_name("PATH");
    command
        .add_flag("--no-transform", publish.noTransform,
                  "Do not transform the document; only package it and run the scripts")
        ->excludes(ditaOt)
        ->excludes(xslt);
}

void AddPreservation(CLI::App& command, PublishOptions& publish) {
    AddNames(command, "--attributes", publish.attributes, "Attributes to preserve");
    AddNames(command, "--elements", publish.elements, "Inline elements to preserve, with their markup");
    AddNames(command, "--scoped-attributes", publish.scopedAttributes,
             "Groups A,B,C,D: attribute B of element A becomes attribute D of the enclosing HTML element C");
    command
        .add_option("--target-attr", publish.targetAttr,
                    "Tags attribute: HTML attribute for preserved values (default: data-twtags)")
        ->type_name("NAME");
    command.add_flag("--xpath", publish.xpath, "Record the XPath of the source element on every text node");
    command
        .add_option("--xpath-attr", publish.xpathAttr,
                    "HTML attribute for XPaths (default: the tags attribute)")
        ->type_name("NAME");
    AddNames(command, "--source-path", publish.sourcePath,
             "Elements that record the path of their source file, once per name and file");
    command
        .add_option("--source-path-attr", publish.sourcePathAttr,
                    "HTML attribute for source paths (default: the tags attribute)")
        ->type_name("NAME");
    command
        .add_option("--preserve-xpath", publish.preserveXpath,
                    "XPath query to record on the first text node of each element that it selects; may be "
                    "repeated")
        ->type_name("QUERY")
        ->allow_extra_args(false);
    command
        .add_option("--preserve-xpath-attr", publish.preserveXpathAttr,
                    "HTML attribute for these queries (default: the tags attribute)")
        ->type_name("NAME");
    command.add_flag(
        "--keep-markers", publish.keepMarkers,
        "Leave marker text in attribute values, comments, scripts and other files of the result");
}

void AddReporting(CLI::App& command, PublishOptions& publish) {
    command
        .add_option(
            "--report", publish.report,
            "Write which of the preserved places did not arrive, as a page (.html) or as data (.json)")
        ->type_name("FILE");
}

void AddPublish(CLI::App& command, PublishOptions& publish) {
    command.add_option("-o,--output", publish.output, "Folder for the result; replaces an earlier result")
        ->required()
        ->type_name("FOLDER");
    AddTransformation(command, publish);
    AddPreservation(command, publish);
    AddReporting(command, publish);
    command.add_flag("--force", publish.force,
                     "Use an output folder that contains other files; they are kept");
}

constexpr char kRequestText[] = "TEXT";
constexpr char kHint[] = "; see --help";

std::string Suggestion(const std::string& meant) {
    return "; did you mean '" + meant + "'? See --help";
}

void RequireCommand(int argc, char** argv, const CLI::App& app) {
    if (argc < 2) {
        throw Stop{kExitUsage,
                   std::string("missing command (expected publish, validate or request)") + kHint};
    }
    const std::string word = argv[1];
    const auto all = app.get_subcommands([](const CLI::App*) { return true; });
    const bool known =
        std::ranges::any_of(all, [&](const CLI::App* command) { return command->get_name() == word; });
    if (!word.starts_with('-') && !known) {
        const std::string meant = MeantWord(word, {"publish", "validate", "request"});
        throw Stop{kExitUsage,
                   "unknown command '" + word + '\'' +
                       (meant.empty() ? std::string(" (expected publish, validate or request)") + kHint
                                      : Suggestion(meant))};
    }
}

std::vector<std::string> OptionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// Reported before any other error: a misspelled option is often the one that seems to be missing.
void RefuseUnknownOption(const CLI::App& app) {
    for (const std::string& word : app.remaining(true)) {
        if (!word.starts_with('-')) {
            continue;
        }
        const std::string name = word.substr(0, word.find('='));
        const auto commands = app.get_subcommands();
        const std::string meant = MeantWord(name, OptionNames(commands.empty() ? app : *commands.front()));
        throw Stop{kExitUsage,
                   "unknown option '" + name + '\'' + (meant.empty() ? kHint : Suggestion(meant))};
    }
}

/// An empty token would end the request early, and an empty path names no file. The text of a whole request
/// may be empty, because the module replies to that.
void RefuseEmptyValues(const CLI::App& command) {
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& value : option->results()) {
            if (value.empty() && option->get_name() != kRequestText) {
                throw Stop{kExitUsage, option->get_name() + ": the value is empty" + kHint};
            }
        }
    }
}

}  // namespace

bool ReadOptions(int argc, char** argv, Options& options) {
    CLI::App app{kDescription, "ventrix"};
    app.set_version_flag("--version", std::string("ventrix ") + kVersion);
    app.set_help_flag("--help,-h", "Print this help and exit");
    app.require_subcommand(1);
    app.footer(kFooter);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    auto* publish = app.add_subcommand("publish", "Publish a document as a folder of HTML pages");
    auto* validate = app.add_subcommand("validate", "Check whether a document can be published");
    auto* request =
        app.add_subcommand("request", "Send a request to the module as given, and print the reply");
    publish->add_option("DOCUMENT", options.common.document, "DITA map, DITA topic or other XML file")
        ->required()
        ->type_name("");
    validate->add_option("DOCUMENT", options.common.document, "DITA map, DITA topic or other XML file")
        ->required()
        ->type_name("");
    request
        ->add_option("--document", options.common.document,
                     "Document to open; {docId} in TEXT is replaced by its id")
        ->required()
        ->type_name("DOCUMENT");
    request->add_option(kRequestText, options.requestText, "Text of the request")->required()->type_name("");
    AddPublish(*publish, options.publish);
    publish
        ->add_option("--resource", options.common.resources,
                     "Map that defines keys for the document, for an installed toolkit; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    for (CLI::App* command : {publish, validate, request}) {
        AddCommon(*command, options.common);
        command->group("Commands");
        command->footer("Run 'ventrix --help' for examples and exit statuses.");
    }
    // Set before parsing, so that usage errors are reported as JSON too.
    options.common.json =
        std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--json"; });
    RequireCommand(argc, argv, app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            RefuseUnknownOption(app);
            throw Stop{kExitUsage, std::string(error.what()) + kHint};
        }
        app.exit(error);
        return false;
    }
    RefuseEmptyValues(*app.get_subcommands().front());
    options.command = *publish ? Command::kPublish : *validate ? Command::kValidate : Command::kRequest;
    CheckPublishOptions(options.publish);
    return true;
}

}  // namespace ventrix::desk
