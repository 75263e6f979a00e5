// The class of a DITA element lists the element types from its base type down to its own: "+ topic/ph
// ui-d/uicontrol ". Normally the DTD supplies it; for a document without a DTD, the element's name determines
// the class that the standard vocabularies give it.
#pragma once

#include <libxml/tree.h>

#include <string>
#include <string_view>

namespace ventrix::desk {

/// Adds a class, and the default values of attributes, to every element without a class whose name is known.
/// False if there was an unknown name, except in foreign content: the document's DTD may know it.
bool AddMissingClasses(xmlDoc* document);

/// The name of the element's base type: "ph" for "+ topic/ph ui-d/uicontrol "; empty without a class.
std::string BaseName(const xmlNode* element);

/// Whether the element is of another vocabulary, or in an element for such content.
bool IsForeign(const xmlNode* node);

/// Whether a key can give the element its text and its target: a phrase or a term.
bool IsPhrase(const xmlNode* node);

/// Renames the elements to their base types ("uicontrol" to "ph") and keeps their classes. The attribute
/// "page-types" gets the types without their modules ("ph uicontrol "). A processor finds the template for a
/// name much faster than it evaluates a pattern for each class, and a stylesheet takes classes apart slowly.
void NameByBaseType(xmlDoc* document);

/// True if the element's class contains the type, such as "topic/ph". False for null and for other nodes.
bool HasType(const xmlNode* node, std::string_view type);

}  // namespace ventrix::desk
