#include "desk/cli/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "desk/cli/exit_status.h"

namespace ventrix::desk {
namespace {

constexpr char kDescription[] =
    "Publishes DITA and other XML as HTML, and carries through the transformation what it would lose:\n"
    "attributes, inline elements, XPaths, source paths.";

constexpr char kFooter[] = R"(Examples:
  ventrix publish guide.ditamap -o out --attributes audience,product --elements uicontrol --xpath
  ventrix publish book.xml -o out --xslt /usr/share/xml/docbook/stylesheet/docbook-xsl/xhtml/docbook.xsl
  ventrix validate guide.ditamap
  ventrix request --document guide.ditamap "Validate -docId {docId} -logFile Z:\tmp\log.txt"

Exit status:
  0  done and clean                      5  the output folder was refused
  1  done, with findings                 6  the transformation failed or wrote nothing
  2  the command line is wrong           7  the host or the module could not start
  3  the document cannot be read       130  interrupted
  4  the module refused the request, or packaging ended it

Results go to standard output, everything else to standard error.)";

void AddCommon(CLI::App& verb, CommonOptions& common) {
    verb.add_option("--log", common.log, "Report log; lines are added at its end")->type_name("FILE");
    verb.add_option("--unsaved", common.unsaved,
                    "Play a referenced file that has unsaved changes; may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false);
    verb.add_option("--drive", common.drives,
                    "Let a drive (C, D ...) or server (\\\\name) stand for a folder; may be repeated")
        ->type_name("X=FOLDER")
        ->allow_extra_args(false);
    verb.add_option("--toolkit", common.toolkit,
                    "DITA Open Toolkit: builtin, installed, or a toolkit's folder")
        ->type_name("WHICH")
        ->capture_default_str();
    verb.add_option("--catalog", common.catalog, "XML catalog to ask for DTDs before the machine's own")
        ->type_name("FILE");
    verb.add_option("--color", common.color, "Colours: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN")
        ->capture_default_str();
    auto* quiet = verb.add_flag("--quiet,-q", common.quiet, "Only results and failures");
    verb.add_flag("--verbose,-v", common.verbose, "Also the host's console")->excludes(quiet);
    verb.add_flag("--json", common.json, "One JSON object on standard output and nothing else");
}

void AddNames(CLI::App& verb, const char* name, std::vector<std::string>& list, const char* what) {
    verb.add_option(name, list, what)->type_name("NAME,...")->allow_extra_args(false);
}

void AddPublish(CLI::App& verb, PublishOptions& publish) {
    verb.add_option("-o,--output", publish.output,
                    "Folder for the result; an earlier result in it is replaced")
        ->required()
        ->type_name("FOLDER");
    auto* ditaOt =
        verb.add_flag("--dita-ot", publish.ditaOt, "Transform with the DITA Open Toolkit (default for DITA)");
    verb.add_option("--xslt", publish.xslt, "Transform with this stylesheet")
        ->type_name("FILE")
        ->excludes(ditaOt);
    verb.add_option("--pre-script", publish.preScript,
                    "Program to run on the package before the transformation")
        ->type_name("FILE");
    verb.add_option("--post-script", publish.postScript,
                    "Program to run on the package after the transformation")
        ->type_name("FILE");
    verb.add_option("--ditaval", publish.ditaval, "DITAVAL file that filters a DITA document")
        ->type_name("FILE");
    verb.add_option("--out-file", publish.outFile, "Output path of the transformation")->type_name("PATH");
    AddNames(verb, "--attributes", publish.attributes, "Attributes to carry");
    AddNames(verb, "--elements", publish.elements, "Inline elements to carry whole");
    AddNames(
        verb, "--scoped-attributes", publish.scopedAttributes,
        "Four names a group: attribute 2 of element 1 lands on attribute 4 of the HTML element 3 around it");
    verb.add_option("--target-attr", publish.targetAttr, "HTML attribute for what is carried (data-twtags)")
        ->type_name("NAME");
    verb.add_flag("--xpath", publish.xpath, "Carry the XPath of every text's element");
    verb.add_option("--xpath-attr", publish.xpathAttr, "HTML attribute for the XPaths")->type_name("NAME");
    AddNames(verb, "--source-path", publish.sourcePath, "Elements whose first text carries the source file");
    verb.add_option("--source-path-attr", publish.sourcePathAttr, "HTML attribute for the source files")
        ->type_name("NAME");
    verb.add_option("--preserve-xpath", publish.preserveXpath, "XPath queries to carry on what they select")
        ->type_name("QUERY,...")
        ->allow_extra_args(false);
    verb.add_option("--preserve-xpath-attr", publish.preserveXpathAttr, "HTML attribute for those queries")
        ->type_name("NAME");
    verb.add_flag("--force", publish.force, "Empty an output folder that no earlier run made");
}

constexpr char kRequestText[] = "TEXT";
constexpr char kHint[] = "; --help tells what there is";

void RequireVerb(int argc, char** argv, const CLI::App& app) {
    if (argc < 2) {
        throw Stop{kExitUsage, std::string("say what to do: publish, validate or request") + kHint};
    }
    const std::string word = argv[1];
    const auto all = app.get_subcommands([](const CLI::App*) { return true; });
    const bool known =
        std::ranges::any_of(all, [&](const CLI::App* verb) { return verb->get_name() == word; });
    if (!word.starts_with('-') && !known) {
        throw Stop{kExitUsage, word + ": there is no such verb, but publish, validate and request" + kHint};
    }
}

/// An empty value ends a request, and an empty name names nothing. A whole request may be empty: the module
/// answers it.
void RefuseEmptyValues(const CLI::App& verb) {
    for (const CLI::Option* option : verb.get_options()) {
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
    app.set_version_flag("--version", "ventrix 1.0.0.1");
    app.set_help_flag("--help,-h", "Tell what there is, and end");
    app.require_subcommand(1);
    app.footer(kFooter);
    auto* publish = app.add_subcommand("publish", "Turn a document into a folder of HTML");
    auto* validate = app.add_subcommand("validate", "Tell whether a document can be published");
    auto* request =
        app.add_subcommand("request", "Send the module a request as it stands, and print its reply");
    publish->add_option("DOCUMENT", options.common.document, "DITA map or topic, or any XML file")
        ->required();
    validate->add_option("DOCUMENT", options.common.document, "DITA map or topic, or any XML file")
        ->required();
    request
        ->add_option("--document", options.common.document,
                     "Document to open; {docId} in TEXT becomes its id")
        ->required()
        ->type_name("DOCUMENT");
    request->add_option(kRequestText, options.requestText, "The request")->required();
    AddPublish(*publish, options.publish);
    for (CLI::App* verb : {publish, validate, request}) {
        AddCommon(*verb, options.common);
        verb->footer("'ventrix --help' lists examples and exit statuses.");
    }
    // Known even where the rest of the line is wrong, since a mistake is told in the same form.
    options.common.json =
        std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--json"; });
    RequireVerb(argc, argv, app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            throw Stop{kExitUsage, std::string(error.what()) + kHint};
        }
        app.exit(error);
        return false;
    }
    RefuseEmptyValues(*app.get_subcommands().front());
    options.verb = *publish ? Verb::kPublish : *validate ? Verb::kValidate : Verb::kRequest;
    return true;
}

}  // namespace ventrix::desk
