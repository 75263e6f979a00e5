#include "desk/toolkit/dita_classes.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "desk/xml/xml_handles.h"

namespace ventrix::desk {
namespace {

struct NamedClass {
    std::string_view name;
    std::string_view types;
};

/// Topic, concept, task, reference, glossary, map, bookmap and their standard domains, sorted by name.
constexpr NamedClass kClasses[] = {
    {"abbreviated-form", "topic/term abbrev-d/abbreviated-form"},
    {"abbrevlist", "map/topicref bookmap/abbrevlist"},
    {"abstract", "topic/abstract"},
    {"alt", "topic/alt"},
    {"amendments", "map/topicref bookmap/amendments"},
    {"anchor", "map/anchor"},
    {"anchorref", "map/topicref mapgroup-d/anchorref"},
    {"apiname", "topic/keyword pr-d/apiname"},
    {"appendices", "map/topicref bookmap/appendices"},
    {"appendix", "map/topicref bookmap/appendix"},
    {"area", "topic/figgroup ut-d/area"},
    {"attributedef", "topic/data subjectScheme/attributedef"},
    {"audience", "topic/audience"},
    {"author", "topic/author"},
    {"b", "topic/ph hi-d/b"},
    {"backmatter", "map/topicref bookmap/backmatter"},
    {"bibliolist", "map/topicref bookmap/bibliolist"},
    {"body", "topic/body"},
    {"bodydiv", "topic/bodydiv"},
    {"bookabstract", "map/topicref bookmap/bookabstract"},
    {"bookchangehistory", "topic/data bookmap/bookchangehistory"},
    {"bookid", "topic/data bookmap/bookid"},
    {"booklibrary", "topic/ph bookmap/booklibrary"},
    {"booklists", "map/topicref bookmap/booklists"},
    {"bookmap", "map/map bookmap/bookmap"},
    {"bookmeta", "map/topicmeta bookmap/bookmeta"},
    {"bookpartno", "topic/data bookmap/bookpartno"},
    {"bookrights", "topic/data bookmap/bookrights"},
    {"booktitle", "topic/title bookmap/booktitle"},
    {"booktitlealt", "topic/ph bookmap/booktitlealt"},
    {"boolean", "topic/boolean"},
    {"brand", "topic/brand"},
    {"category", "topic/category"},
    {"cause", "topic/section troubleshooting/cause"},
    {"chapter", "map/topicref bookmap/chapter"},
    {"chdesc", "topic/stentry task/chdesc"},
    {"chdeschd", "topic/stentry task/chdeschd"},
    {"chhead", "topic/sthead task/chhead"},
    {"choice", "topic/li task/choice"},
    {"choices", "topic/ul task/choices"},
    {"choicetable", "topic/simpletable task/choicetable"},
    {"choption", "topic/stentry task/choption"},
    {"choptionhd", "topic/stentry task/choptionhd"},
    {"chrow", "topic/strow task/chrow"},
    {"cite", "topic/cite"},
    {"cmd", "topic/ph task/cmd"},
    {"cmdname", "topic/keyword sw-d/cmdname"},
    {"codeblock", "topic/pre pr-d/codeblock"},
    {"codeph", "topic/ph pr-d/codeph"},
    {"coderef", "topic/xref pr-d/coderef"},
    {"colophon", "map/topicref bookmap/colophon"},
    {"colspec", "topic/colspec"},
    {"component", "topic/component"},
    {"conbody", "topic/body concept/conbody"},
    {"conbodydiv", "topic/bodydiv concept/conbodydiv"},
    {"concept", "topic/topic concept/concept"},
    {"condition", "topic/section troubleshooting/condition"},
    {"consequence", "topic/li hazard-d/consequence"},
    {"context", "topic/section task/context"},
    {"coords", "topic/ph ut-d/coords"},
    {"copyrholder", "topic/copyrholder"},
    {"copyright", "topic/copyright"},
    {"copyryear", "topic/copyryear"},
    {"created", "topic/created"},
    {"critdates", "topic/critdates"},
    {"data", "topic/data"},
    {"data-about", "topic/data-about"},
    {"dd", "topic/dd"},
    {"ddhd", "topic/ddhd"},
    {"dedication", "map/topicref bookmap/dedication"},
    {"delim", "topic/ph pr-d/delim"},
    {"desc", "topic/desc"},
    {"ditavalmeta", "map/topicmeta ditavalref-d/ditavalmeta"},
    {"ditavalref", "map/topicref ditavalref-d/ditavalref"},
    {"div", "topic/div"},
    {"dl", "topic/dl"},
    {"dlentry", "topic/dlentry"},
    {"dlhead", "topic/dlhead"},
    {"draft-comment", "topic/draft-comment"},
    {"draftintro", "map/topicref bookmap/draftintro"},
    {"dt", "topic/dt"},
    {"dthd", "topic/dthd"},
    {"dvrKeyscopePrefix", "topic/data ditavalref-d/dvrKeyscopePrefix"},
    {"dvrKeyscopeSuffix", "topic/data ditavalref-d/dvrKeyscopeSuffix"},
    {"dvrResourcePrefix", "topic/data ditavalref-d/dvrResourcePrefix"},
    {"dvrResourceSuffix", "topic/data ditavalref-d/dvrResourceSuffix"},
    {"elementdef", "topic/data subjectScheme/elementdef"},
    {"entry", "topic/entry"},
    {"enumerationdef", "map/topicref subjectScheme/enumerationdef"},
    {"equation-block", "topic/div equation-d/equation-block"},
    {"equation-figure", "topic/fig equation-d/equation-figure"},
    {"equation-inline", "topic/ph equation-d/equation-inline"},
    {"equation-number", "topic/ph equation-d/equation-number"},
    {"example", "topic/example"},
    {"fallback", "topic/fallback"},
    {"featnum", "topic/featnum"},
    {"fig", "topic/fig"},
    {"figgroup", "topic/figgroup"},
    {"figurelist", "map/topicref bookmap/figurelist"},
    {"filepath", "topic/ph sw-d/filepath"},
    {"fn", "topic/fn"},
    {"foreign", "topic/foreign"},
    {"fragment", "topic/figgroup pr-d/fragment"},
    {"fragref", "topic/xref pr-d/fragref"},
    {"frontmatter", "map/topicref bookmap/frontmatter"},
    {"glossAbbreviation", "topic/title concept/title glossentry/glossAbbreviation"},
    {"glossAcronym", "topic/title concept/title glossentry/glossAcronym"},
    {"glossAlt", "topic/section concept/section glossentry/glossAlt"},
    {"glossBody", "topic/body concept/conbody glossentry/glossBody"},
    {"glossPartOfSpeech", "topic/data concept/data glossentry/glossPartOfSpeech"},
    {"glossProperty", "topic/data concept/data glossentry/glossProperty"},
    {"glossScopeNote", "topic/note concept/note glossentry/glossScopeNote"},
    {"glossShortForm", "topic/title concept/title glossentry/glossShortForm"},
    {"glossStatus", "topic/data concept/data glossentry/glossStatus"},
    {"glossSurfaceForm", "topic/p concept/p glossentry/glossSurfaceForm"},
    {"glossSymbol", "topic/image concept/image glossentry/glossSymbol"},
    {"glossSynonym", "topic/title concept/title glossentry/glossSynonym"},
    {"glossUsage", "topic/note concept/note glossentry/glossUsage"},
    {"glossarylist", "map/topicref bookmap/glossarylist"},
    {"glossdef", "topic/abstract concept/abstract glossentry/glossdef"},
    {"glossentry", "topic/topic concept/concept glossentry/glossentry"},
    {"glossgroup", "topic/topic concept/concept glossgroup/glossgroup"},
    {"glossref", "map/topicref glossref-d/glossref"},
    {"glossterm", "topic/title concept/title glossentry/glossterm"},
    {"groupchoice", "topic/figgroup pr-d/groupchoice"},
    {"groupcomp", "topic/figgroup pr-d/groupcomp"},
    {"groupseq", "topic/figgroup pr-d/groupseq"},
    {"hasNarrower", "map/topicref subjectScheme/hasNarrower"},
    {"hazardstatement", "topic/note hazard-d/hazardstatement"},
    {"hazardsymbol", "topic/image hazard-d/hazardsymbol"},
    {"howtoavoid", "topic/li hazard-d/howtoavoid"},
    {"i", "topic/ph hi-d/i"},
    {"image", "topic/image"},
    {"imagemap", "topic/fig ut-d/imagemap"},
    {"index-base", "topic/index-base"},
    {"index-see", "topic/index-base indexing-d/index-see"},
    {"index-see-also", "topic/index-base indexing-d/index-see-also"},
    {"index-sort-as", "topic/index-base indexing-d/index-sort-as"},
    {"indexlist", "map/topicref bookmap/indexlist"},
    {"indexterm", "topic/indexterm"},
    {"indextermref", "topic/indextermref"},
    {"info", "topic/itemgroup task/info"},
    {"itemgroup", "topic/itemgroup"},
    {"keydef", "map/topicref mapgroup-d/keydef"},
    {"keytext", "topic/keytext"},
    {"keyword", "topic/keyword"},
    {"keywords", "topic/keywords"},
    {"kwd", "topic/keyword pr-d/kwd"},
    {"li", "topic/li"},
    {"line-through", "topic/ph hi-d/line-through"},
    {"lines", "topic/lines"},
    {"link", "topic/link"},
    {"linkinfo", "topic/linkinfo"},
    {"linklist", "topic/linklist"},
    {"linkpool", "topic/linkpool"},
    {"linktext", "topic/linktext"},
    {"longdescref", "topic/longdescref"},
    {"longquoteref", "topic/longquoteref"},
    {"lq", "topic/lq"},
    {"mainbooktitle", "topic/ph bookmap/mainbooktitle"},
    {"map", "map/map"},
    {"mapref", "map/topicref mapgroup-d/mapref"},
    {"markupname", "topic/keyword markup-d/markupname"},
    {"mathml", "topic/foreign mathml-d/mathml"},
    {"mathmlref", "topic/xref mathml-d/mathmlref"},
    {"menucascade", "topic/ph ui-d/menucascade"},
    {"messagepanel", "topic/ul hazard-d/messagepanel"},
    {"metadata", "topic/metadata"},
    {"msgblock", "topic/pre sw-d/msgblock"},
    {"msgnum", "topic/keyword sw-d/msgnum"},
    {"msgph", "topic/ph sw-d/msgph"},
    {"navref", "map/navref"},
    {"navtitle", "topic/navtitle"},
    {"no-topic-nesting", "topic/no-topic-nesting"},
    {"note", "topic/note"},
    {"notices", "map/topicref bookmap/notices"},
    {"numcharref", "topic/keyword markup-d/markupname xml-d/numcharref"},
    {"object", "topic/object"},
    {"ol", "topic/ol"},
    {"oper", "topic/ph pr-d/oper"},
    {"option", "topic/keyword pr-d/option"},
    {"othermeta", "topic/othermeta"},
    {"overline", "topic/ph hi-d/overline"},
    {"p", "topic/p"},
    {"param", "topic/param"},
    {"parameterentity", "topic/keyword markup-d/markupname xml-d/parameterentity"},
    {"parml", "topic/dl pr-d/parml"},
    {"parmname", "topic/keyword pr-d/parmname"},
    {"part", "map/topicref bookmap/part"},
    {"pd", "topic/dd pr-d/pd"},
    {"permissions", "topic/permissions"},
    {"ph", "topic/ph"},
    {"platform", "topic/platform"},
    {"plentry", "topic/dlentry pr-d/plentry"},
    {"postreq", "topic/section task/postreq"},
    {"pre", "topic/pre"},
    {"preface", "map/topicref bookmap/preface"},
    {"prereq", "topic/section task/prereq"},
    {"prodinfo", "topic/prodinfo"},
    {"prodname", "topic/prodname"},
    {"prognum", "topic/prognum"},
    {"prolog", "topic/prolog"},
    {"propdesc", "topic/stentry reference/propdesc"},
    {"propdeschd", "topic/stentry reference/propdeschd"},
    {"properties", "topic/simpletable reference/properties"},
    {"property", "topic/strow reference/property"},
    {"prophead", "topic/sthead reference/prophead"},
    {"proptype", "topic/stentry reference/proptype"},
    {"proptypehd", "topic/stentry reference/proptypehd"},
    {"propvalue", "topic/stentry reference/propvalue"},
    {"propvaluehd", "topic/stentry reference/propvaluehd"},
    {"pt", "topic/dt pr-d/pt"},
    {"publisher", "topic/publisher"},
    {"publisherinformation", "topic/publisher bookmap/publisherinformation"},
    {"q", "topic/q"},
    {"refbody", "topic/body reference/refbody"},
    {"refbodydiv", "topic/bodydiv reference/refbodydiv"},
    {"reference", "topic/topic reference/reference"},
    {"refsyn", "topic/section reference/refsyn"},
    {"related-links", "topic/related-links"},
    {"relcell", "map/relcell"},
    {"relcolspec", "map/relcolspec"},
    {"relheader", "map/relheader"},
    {"relrow", "map/relrow"},
    {"reltable", "map/reltable"},
    {"remedy", "topic/section troubleshooting/remedy"},
    {"repsep", "topic/ph pr-d/repsep"},
    {"required-cleanup", "topic/required-cleanup"},
    {"resourceid", "topic/resourceid"},
    {"responsibleParty", "topic/p troubleshooting/responsibleParty"},
    {"result", "topic/section task/result"},
    {"revised", "topic/revised"},
    {"row", "topic/row"},
    {"schemeref", "map/topicref subjectScheme/schemeref"},
    {"screen", "topic/pre ui-d/screen"},
    {"searchtitle", "topic/searchtitle"},
    {"section", "topic/section"},
    {"sectiondiv", "topic/sectiondiv"},
    {"sep", "topic/ph pr-d/sep"},
    {"series", "topic/series"},
    {"shape", "topic/keyword ut-d/shape"},
    {"shortcut", "topic/keyword ui-d/shortcut"},
    {"shortdesc", "topic/shortdesc"},
    {"simpletable", "topic/simpletable"},
    {"sl", "topic/sl"},
    {"sli", "topic/sli"},
    {"sort-as", "topic/data ut-d/sort-as"},
    {"source", "topic/source"},
    {"state", "topic/state"},
    {"stentry", "topic/stentry"},
    {"step", "topic/li task/step"},
    {"stepresult", "topic/itemgroup task/stepresult"},
    {"steps", "topic/ol task/steps"},
    {"steps-informal", "topic/section task/steps-informal"},
    {"steps-unordered", "topic/ul task/steps-unordered"},
    {"stepsection", "topic/li task/stepsection"},
    {"steptroubleshooting", "topic/itemgroup task/steptroubleshooting"},
    {"stepxmp", "topic/itemgroup task/stepxmp"},
    {"sthead", "topic/sthead"},
    {"strow", "topic/strow"},
    {"sub", "topic/ph hi-d/sub"},
    {"subjectHead", "map/topicref subjectScheme/subjectHead"},
    {"subjectScheme", "map/map subjectScheme/subjectScheme"},
    {"subjectdef", "map/topicref subjectScheme/subjectdef"},
    {"substep", "topic/li task/substep"},
    {"substeps", "topic/ol task/substeps"},
    {"sup", "topic/ph hi-d/sup"},
    {"svg-container", "topic/foreign svg-d/svg-container"},
    {"svgref", "topic/xref svg-d/svgref"},
    {"synblk", "topic/figgroup pr-d/synblk"},
    {"synnote", "topic/fn pr-d/synnote"},
    {"synnoteref", "topic/xref pr-d/synnoteref"},
    {"synph", "topic/ph pr-d/synph"},
    {"syntaxdiagram", "topic/fig pr-d/syntaxdiagram"},
    {"systemoutput", "topic/ph sw-d/systemoutput"},
    {"table", "topic/table"},
    {"tablelist", "map/topicref bookmap/tablelist"},
    {"task", "topic/topic task/task"},
    {"taskbody", "topic/body task/taskbody"},
    {"tasktroubleshooting", "topic/section task/tasktroubleshooting"},
    {"tbody", "topic/tbody"},
    {"term", "topic/term"},
    {"text", "topic/text"},
    {"textentity", "topic/keyword markup-d/markupname xml-d/textentity"},
    {"tgroup", "topic/tgroup"},
    {"thead", "topic/thead"},
    {"title", "topic/title"},
    {"titlealts", "topic/titlealts"},
    {"tm", "topic/tm"},
    {"toc", "map/topicref bookmap/toc"},
    {"topic", "topic/topic"},
    {"topicgroup", "map/topicref mapgroup-d/topicgroup"},
    {"topichead", "map/topicref mapgroup-d/topichead"},
    {"topicmeta", "map/topicmeta"},
    {"topicref", "map/topicref"},
    {"topicset", "map/topicref mapgroup-d/topicset"},
    {"topicsetref", "map/topicref mapgroup-d/topicsetref"},
    {"trademarklist", "map/topicref bookmap/trademarklist"},
    {"troubleSolution", "topic/bodydiv troubleshooting/troubleSolution"},
    {"troublebody", "topic/body troubleshooting/troublebody"},
    {"troubleshooting", "topic/topic troubleshooting/troubleshooting"},
    {"tt", "topic/ph hi-d/tt"},
    {"tutorialinfo", "topic/itemgroup task/tutorialinfo"},
    {"typeofhazard", "topic/li hazard-d/typeofhazard"},
    {"u", "topic/ph hi-d/u"},
    {"uicontrol", "topic/ph ui-d/uicontrol"},
    {"ul", "topic/ul"},
    {"unknown", "topic/unknown"},
    {"userinput", "topic/ph sw-d/userinput"},
    {"ux-window", "map/ux-window"},
    {"var", "topic/ph pr-d/var"},
    {"varname", "topic/keyword sw-d/varname"},
    {"vrm", "topic/vrm"},
    {"vrmlist", "topic/vrmlist"},
    {"wintitle", "topic/keyword ui-d/wintitle"},
    {"xmlatt", "topic/keyword markup-d/markupname xml-d/xmlatt"},
    {"xmlelement", "topic/keyword markup-d/markupname xml-d/xmlelement"},
    {"xmlnsname", "topic/keyword markup-d/markupname xml-d/xmlnsname"},
    {"xmlpi", "topic/keyword markup-d/markupname xml-d/xmlpi"},
    {"xref", "topic/xref"},
};

std::string_view TypesOf(std::string_view name) {
    const auto* row = std::lower_bound(std::begin(kClasses), std::end(kClasses), name,
                                       [](const NamedClass& a, std::string_view b) { return a.name < b; });
    return row != std::end(kClasses) && row->name == name ? row->types : std::string_view();
}

/// The types of a class without their modules: "ph uicontrol " for "+ topic/ph ui-d/uicontrol ".
std::string TypeNames(std::string_view types) {
    std::string names;
    for (std::size_t slash = types.find('/'); slash != std::string_view::npos; slash = types.find('/')) {
        types.remove_prefix(slash + 1);
        const std::size_t end = std::min(types.find(' '), types.size());
        names.append(types.substr(0, end)) += ' ';
        types.remove_prefix(end);
    }
    return names;
}

/// "ph" for "+ topic/ph ui-d/uicontrol "; empty if the class has no type of this module.
std::string BaseTopicType(const std::string& types) {
    constexpr std::string_view kModule = " topic/";
    const std::size_t module = types.find(kModule);
    if (module == std::string::npos) {
        return {};
    }
    const std::size_t begin = module + kModule.size();
    return types.substr(begin, types.find(' ', begin) - begin);
}

}  // namespace

bool IsForeign(const xmlNode* node) {
    for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
        if (node->ns != nullptr || HasType(node, "topic/foreign") || HasType(node, "topic/unknown")) {
            return true;
        }
    }
    return false;
}

bool IsPhrase(const xmlNode* node) {
    return HasType(node, "topic/keyword") || HasType(node, "topic/term") || HasType(node, "topic/ph") ||
           HasType(node, "topic/cite");
}

bool AddMissingClasses(xmlDoc* document) {
    bool allKnown = true;
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        if (node->type != XML_ELEMENT_NODE || node->ns != nullptr ||
            xmlHasProp(node, Xml("class")) != nullptr) {
            continue;
        }
        const std::string_view types = TypesOf(View(node->name));
        if (!types.empty()) {
            xmlNewProp(node, Xml("class"), Xml(std::string("- ").append(types).append(" ").c_str()));
        } else if (View(node->name) != "dita" && !IsForeign(node)) {
            allKnown = false;
        }
    }
    return allKnown;
}

void NameByBaseType(xmlDoc* document) {
    xmlNode* root = xmlDocGetRootElement(document);
    for (xmlNode* node = root; node != nullptr; node = NextNode(node, root)) {
        const std::string types = node->type == XML_ELEMENT_NODE ? Attribute(node, "class") : std::string();
        if (types.find('/') == std::string::npos) {
            continue;
        }
        xmlSetProp(node, Xml("page-types"), Xml(TypeNames(types).c_str()));
        const std::string base = BaseTopicType(types);
        if (!base.empty() && View(node->name) != base) {
            xmlNodeSetName(node, Xml(base.c_str()));
        }
    }
}

bool HasType(const xmlNode* node, std::string_view type) {
    if (node == nullptr || node->type != XML_ELEMENT_NODE) {
        return false;
    }
    return HasWord(node, "class", type);
}

}  // namespace ventrix::desk
