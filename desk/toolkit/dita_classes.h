// The class of a DITA element: the chain of element types from its base type to itself, " topic/ph
// ui-d/uicontrol ". A DTD supplies it; where there is none, the element's name gives the class that the
// standard vocabularies have.
#pragma once

#include <libxml/tree.h>

#include <string_view>

namespace ventrix::desk {

/// Gives every element that has no class one, if its name is known. False if a name was unknown, foreign
/// content left out: a DTD may know it.
bool AddMissingClasses(xmlDoc* document);

/// Renames the elements of a document to their base types ("uicontrol" to "ph"); their classes still tell
/// what they are. A stylesheet finds templates by name far quicker than by class.
void NameByBaseType(xmlDoc* document);

/// True if the type, as "topic/ph", stands in the element's class. False for anything but an element.
bool HasType(const xmlNode* node, std::string_view type);

}  // namespace ventrix::desk
