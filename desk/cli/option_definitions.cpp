#include "desk/cli/option_definitions.h"

#include "desk/cli/exit_status.h"

namespace ventrix::desk {
namespace {

constexpr char kExamples[] = R"(Examples:
  ventrix publish guide.ditamap -o out --attributes audience,product --elements uicontrol --xpath
  ventrix publish book.xml -o out --xslt /usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl
  ventrix validate guide.ditamap
  ventrix init guide.ditamap && ventrix publish
  ventrix request --document guide.ditamap "Validate -docId {docId} -logFile Z:\tmp\log.txt"
)";

constexpr char kEmptyLists[] =
    "Nothing after the \"=\" of a list, as in --attributes= or --ditaval=, leaves out the project file's "
    "value.\n";

std::string Footer() {
    std::string text = std::string(kExamples) + "\nExit status:\n";
    for (const ExitMeaning& meaning : kExitMeanings) {
        text += "  " + std::to_string(meaning.status) + "      " + meaning.text + '\n';
    }
    return text + "  " + kSignalStatus + "  " + kSignalMeaning +
           "\n\nResults are printed to standard output, all other messages to standard error.";
}

// The groups of the help, in the order in which people decide.
constexpr char kCarryGroup[] = "What to carry";
constexpr char kTransformGroup[] = "How to transform";
constexpr char kPlaceGroup[] = "Where to";
constexpr char kReadGroup[] = "What to read";
constexpr char kReportGroup[] = "How to report";

/// Moves the options that were added since the last call to a group of the help.
void GroupAdded(CLI::App& command, const char* group) {
    for (CLI::Option* option : command.get_options()) {
        if (option->get_group() == "Options" && option->nonpositional()) {
            option->group(group);
        }
    }
}

void AddConfig(CLI::App& command, CommonOptions& common) {
    command
        .add_option("--config", common.config,
                    "Project file (default: ventrix.toml beside the document, else in this folder)")
        ->type_name("FILE");
}

void AddReading(CLI::App& command, CommonOptions& common) {
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
        .add_option("--catalog", common.catalog, "XML catalog to search for DTDs before the system catalogs")
        ->type_name("FILE");
}

void AddToolkit(CLI::App& command, CommonOptions& common) {
    command
        .add_option(
            "--toolkit", common.toolkit,
            "Toolkit for DITA: builtin (the default, Ventrix's own), installed (the DITA Open Toolkit "
            "on this machine), or the folder of a DITA Open Toolkit")
        ->type_name("builtin|installed|FOLDER")
        ->capture_default_str();
}

void AddDesign(CLI::App& command, PublishOptions& publish) {
    command
        .add_option("--title", publish.title,
                    "Title of the publication, for the built-in toolkit (default: that of the document)")
        ->type_name("TEXT");
    command
        .add_option("--css", publish.css,
                    "Style sheet for the pages of the built-in toolkit, which counts after its own")
        ->type_name("FILE");
    command.add_option("--logo", publish.logo, "Image for the head of each page of the built-in toolkit")
        ->type_name("FILE");
}

void AddFilters(CLI::App& command, PublishOptions& publish) {
    command
        .add_option(
            "--ditaval", publish.ditaval,
            "DITAVAL file that filters a DITA document; may be repeated, the first matching rule counts")
        ->type_name("FILE")
        ->allow_extra_args(false);
}

void AddReporting(CLI::App& command, CommonOptions& common) {
    command.add_option("--log", common.log, "Report log; each run appends to it")->type_name("FILE");
    command.add_option("--color", common.color, "When to use colours")
        ->check(CLI::IsMember({"auto", "always", "never"}).description(""))
        ->type_name("auto|always|never")
        ->capture_default_str();
    auto* quiet = command.add_flag("--quiet,-q", common.quiet,
                                   "Print no notes and no progress: only results, warnings and errors");
    command.add_flag("--verbose,-v", common.verbose, "Also print the host's console output")->excludes(quiet);
    command.add_flag("--json", common.json, "Print one JSON object to standard output and nothing else");
}

void AddFormat(CLI::App& command, CommonOptions& common) {
    command
        .add_option(
            "--format", common.format,
            "Format of the findings: sarif for GitHub and others, codequality for GitLab, junit for CI "
            "servers")
        ->check(CLI::IsMember({"text", "json", "sarif", "junit", "codequality"}).description(""))
        ->type_name("text|json|sarif|junit|codequality")
        ->excludes(command.get_option("--json"))
        ->capture_default_str();
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
        ->check(CLI::IsMember({"libxslt", "saxon"}).description(""))
        ->type_name("libxslt|saxon");
    command
        .add_option("--pre-script", publish.preScript,
                    "Program to run on the packaged document before the transformation")
        ->type_name("FILE");
    command
        .add_option("--post-script", publish.postScript,
                    "Program to run on the packaged document after the transformation")
        ->type_name("FILE");
    AddFilters(command, publish);
    command
        .add_option("--transtype", publish.transtype,
                    "Transformation type of an installed toolkit that writes XHTML (default: xhtml)")
        ->type_name("NAME");
    command
        .add_option("--toolkit-param", publish.toolkitParams,
                    "Parameter for an installed toolkit; may be repeated")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
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

/// What readers and programs are given to use what the pages carry.
void AddPageData(CLI::App& command, PublishOptions& publish) {
    command.add_flag("--map", publish.map,
                     "Write ventrix-map.json beside the start page: where each element that carries data is "
                     "and comes from");
    CLI::Option* const viewer = command.add_flag(
        "--viewer", publish.viewer, "Add a viewer to the pages that filters them and shows their sources");
    command
        .add_option("--editor-root", publish.editorRoot,
                    "Folder where an editor finds the sources; the viewer links to them")
        ->type_name("FOLDER")
        ->needs(viewer);
}

void AddLossReport(CLI::App& command, PublishOptions& publish) {
    command
        .add_option(
            "--report", publish.report,
            "Write which of the preserved places did not arrive, as a page (.html) or as data (.json)")
        ->type_name("FILE");
}

void AddPlaces(CLI::App& command, PublishOptions& publish) {
    command.add_option("-o,--output", publish.output, "Folder for the result; replaces an earlier result")
        ->type_name("FOLDER");
    command.add_option("--out-file", publish.outFile, "Output path of the transformation")->type_name("PATH");
    command.add_flag("--force", publish.force,
                     "Use an output folder that contains other files; they are kept");
    command.add_flag("--dry-run", publish.dryRun,
                     "Print what would be packaged, transformed, replaced and kept, and change nothing");
}

void AddResources(CLI::App& command, CommonOptions& common) {
    command
        .add_option("--resource", common.resources,
                    "Map that defines keys for the document, for an installed toolkit; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
}

void AddPublish(CLI::App& command, Options& options) {
    command
        .add_option("DOCUMENT", options.common.document,
                    "DITA map, DITA topic or other XML file, or a deliverable of the project file "
                    "(default: all deliverables)")
        ->type_name("");
    AddPreservation(command, options.publish);
    GroupAdded(command, kCarryGroup);
    AddTransformation(command, options.publish);
    AddToolkit(command, options.common);
    AddDesign(command, options.publish);
    GroupAdded(command, kTransformGroup);
    AddPlaces(command, options.publish);
    AddPageData(command, options.publish);
    GroupAdded(command, kPlaceGroup);
    AddConfig(command, options.common);
    AddResources(command, options.common);
    AddReading(command, options.common);
    GroupAdded(command, kReadGroup);
    AddLossReport(command, options.publish);
    AddReporting(command, options.common);
    GroupAdded(command, kReportGroup);
    command.get_option("--dry-run")->excludes(command.get_option("--json"));
}

void AddValidate(CLI::App& command, Options& options) {
    command
        .add_option("DOCUMENT", options.common.document,
                    "DITA map, DITA topic or other XML file, or a deliverable of the project file "
                    "(default: all deliverables)")
        ->type_name("");
    AddFilters(command, options.publish);
    AddToolkit(command, options.common);
    GroupAdded(command, kTransformGroup);
    AddConfig(command, options.common);
    AddReading(command, options.common);
    GroupAdded(command, kReadGroup);
    AddReporting(command, options.common);
    AddFormat(command, options.common);
    GroupAdded(command, kReportGroup);
}

void AddRequest(CLI::App& command, Options& options) {
    command
        .add_option("--document", options.common.document,
                    "Document to open; {docId} in TEXT is replaced by its id")
        ->required()
        ->type_name("DOCUMENT");
    GroupAdded(command, kReadGroup);
    command.add_option(kRequestText, options.requestText, "Text of the request")->required()->type_name("");
    AddToolkit(command, options.common);
    GroupAdded(command, kTransformGroup);
    AddReading(command, options.common);
    GroupAdded(command, kReadGroup);
    AddReporting(command, options.common);
    GroupAdded(command, kReportGroup);
}

}  // namespace

void AddCommands(CLI::App& app, Options& options, std::string& helpTopic) {
    app.set_version_flag("-V,--version", std::string("ventrix ") + kVersion);
    app.set_help_flag("--help,-h", "Print this help and exit");
    app.require_subcommand(1);
    app.footer(Footer());
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    AddPublish(*app.add_subcommand("publish", "Publish a document as a folder of HTML pages"), options);
    AddValidate(*app.add_subcommand("validate", "Check whether a document can be published"), options);
    AddRequest(*app.add_subcommand("request", "Send a request to the module as given, and print the reply"),
               options);
    app.add_subcommand("init", "Write a commented project file, ventrix.toml, for a document")
        ->add_option("DOCUMENT", options.common.document,
                     "The document (default: the only DITA map in this folder)")
        ->type_name("");
    for (CLI::App* command : app.get_subcommands({})) {
        // Set again, so that the help lists it last.
        command->set_help_flag("--help,-h", "Print this help and exit");
        GroupAdded(*command, kReportGroup);
        command->group("Commands");
        const bool takesProject = command->get_name() == "publish" || command->get_name() == "validate";
        command->footer(std::string(takesProject ? kEmptyLists : "") +
                        "Run 'ventrix --help' for examples and exit statuses.");
    }
    app.add_subcommand("help", "Print the help for a command")
        ->group("Commands")
        ->add_option("COMMAND", helpTopic, "The command (default: all)")
        ->type_name("");
}

}  // namespace ventrix::desk
