// Names and values as a document writes them, with their prefixes. Strings are UTF-8.
#pragma once

#include <string>

#include "desk/xml/xml_handles.h"

namespace ventrix::desk {

std::string QualifiedName(const xmlNode& element);
std::string QualifiedName(const xmlAttr& attribute);

/// The whole value, with its references expanded.
std::string ValueOf(const xmlAttr& attribute);

}  // namespace ventrix::desk
