#include "desk/clients/applications.h"

#include <algorithm>
#include <iterator>

namespace ventrix::desk {
namespace {

struct Application {
    std::string_view name;
    std::string_view
        root;  ///< A document that declares only a root belongs to the first entry with that root.
    std::string_view dtd;  ///< The DTD's usual file name.
    std::string_view publicId;
};

constexpr Application kApplications[] = {
    {"DITA Map", "map", "map.dtd", "-//OASIS//DTD DITA Map//EN"},
    {"DITA BookMap", "bookmap", "bookmap.dtd", "-//OASIS//DTD DITA BookMap//EN"},
    {"DITA Topic", "topic", "topic.dtd", "-//OASIS//DTD DITA Topic//EN"},
    {"DITA Concept", "concept", "concept.dtd", "-//OASIS//DTD DITA Concept//EN"},
    {"DITA Task", "task", "task.dtd", "-//OASIS//DTD DITA Task//EN"},
    {"DITA General Task", "task", "generalTask.dtd", "-//OASIS//DTD DITA General Task//EN"},
    {"DITA Reference", "reference", "reference.dtd", "-//OASIS//DTD DITA Reference//EN"},
    {"DITA Composite", "dita", "ditabase.dtd", "-//OASIS//DTD DITA Composite//EN"},
    {"DITA Glossary Entry", "glossentry", "glossentry.dtd", "-//OASIS//DTD DITA Glossary Entry//EN"},
    {"DITA Glossary Group", "glossgroup", "glossgroup.dtd", "-//OASIS//DTD DITA Glossary Group//EN"},
    {"DITA Subject Scheme", "subjectScheme", "subjectScheme.dtd",
     "-//OASIS//DTD DITA Subject Scheme Map//EN"},
    {"DocBook", "book", "docbookx.dtd", "-//OASIS//DTD DocBook XML V4.5//EN"},
    {"DocBook", "article", "docbookx.dtd", "-//OASIS//DTD DocBook XML V4.4//EN"},
    {"DocBook", "chapter", "docbookx.dtd", "-//OASIS//DTD DocBook XML V4.3//EN"},
    {"DocBook", "set", "docbookx.dtd", "-//OASIS//DTD DocBook XML V4.2//EN"},
    {"DocBook", "refentry", "docbookx.dtd", "-//OASIS//DTD DocBook XML V4.1.2//EN"},
    {"XHTML", "html", "xhtml1-transitional.dtd", "-//W3C//DTD XHTML 1.0 Transitional//EN"},
    {"SVG", "svg", "svg11.dtd", "-//W3C//DTD SVG 1.1//EN"},
};

std::string NameWhere(std::string_view Application::*field, std::string_view value) {
    const auto* found =
        std::find_if(std::begin(kApplications), std::end(kApplications),
                     [&](const Application& row) { return !value.empty() && row.*field == value; });
    return found == std::end(kApplications) ? std::string() : std::string(found->name);
}

bool IsOneOfSeveral(std::string_view name) {
    return std::count_if(std::begin(kApplications), std::end(kApplications),
                         [name](const Application& row) { return row.name == name; }) > 1;
}

/// A name with several public ids could lead to another version of the DTD than the document's, so the id
/// itself is used as the name.
std::string NameOfPublicId(const std::string& publicId) {
    const std::string name = NameWhere(&Application::publicId, publicId);
    return name.empty() || IsOneOfSeveral(name) ? publicId : name;
}

}  // namespace

std::string ApplicationOf(const DocumentType& type) {
    if (!type.publicId.empty()) {
        return NameOfPublicId(type.publicId);
    }
    const std::string_view file =
        std::string_view(type.systemId).substr(type.systemId.find_last_of("/\\") + 1);
    const std::string name = NameWhere(&Application::dtd, file);
    return name.empty() ? NameWhere(&Application::root, type.root) : name;
}

std::vector<std::string> PublicIdsOf(const std::string& application) {
    std::vector<std::string> ids;
    for (const Application& row : kApplications) {
        if (row.name == application) {
            ids.emplace_back(row.publicId);
        }
    }
    if (ids.empty() && !application.empty()) {
        ids.push_back(application);
    }
    return ids;
}

}  // namespace ventrix::desk
