// Operations on XML documents that several parts of a document pass share. Nodes are handles that own
// nothing; their document owns the tree. Strings are UTF-8.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "markers/xml/dom.h"

namespace ventrix {

/// The qualified name as written. The view is valid as long as the document.
std::string_view NodeName(xml::Node node);

/// The content of a text node or the value of an attribute.
std::string NodeText(xml::Node node);

/// A new text node of the document, not yet in its tree.
xml::Node NewTextNode(xml::Document& document, std::string_view text);

/// A new text node, not yet in the tree, with the element group of the element: WrapElementGroup of its XML.
xml::Node NewElementGroupNode(xml::Document& document, xml::Node element);

bool IsElement(xml::Node node);   ///< False for a null node.
bool IsTextNode(xml::Node node);  ///< False for a null node and for a CDATA section.

/// True if the list contains exactly this name.
bool IsListed(std::string_view name, const std::list<std::string>& names);

/// The same for the node's name.
bool IsListedElement(xml::Node element, const std::list<std::string>& names);

/// True for a text node that is filled, in the sense of TrimBlanks. False for a null node.
bool IsFilledTextNode(xml::Node node);

/// The first filled text node among the element's descendants, in document order; null if there is none.
xml::Node FirstFilledTextNode(xml::Node element);

/// PrependComposedGroup on the content of a text node.
void PrependGroup(xml::Node textNode, std::string_view group);

/// The attribute of exactly that name; null if there is none.
xml::Node AttributeNode(xml::Node element, std::string_view name);

/// The value of the attribute of exactly that name; empty if there is none.
std::string AttributeValue(xml::Node element, std::string_view name);

/// Adds an attribute. The element must not have one of that name.
void AddAttribute(xml::Document& document, xml::Node element, std::string_view name, std::string_view value);

/// Appends a space and the value to the attribute's value. Adds the attribute, with the value alone, if the
/// element does not have it.
void SetOrAppendAttribute(xml::Document& document, xml::Node element, std::string_view name,
                          std::string_view value);

/// An empty document for a piece of XML whose nodes will be inserted into `main`.
std::unique_ptr<xml::Document> NewScratchDocument(xml::Document& main);

/// The root element of the XML, ready to be inserted into `main`; null if the XML does not parse.
xml::Node ParseElementXml(xml::Document& main, std::string_view xmlText);

/// Applies the settings that all documents of a pass share: loading finishes before it returns, no
/// validation, no external DTD, all whitespace preserved.
void ConfigureDocument(xml::Document& document);

/// The node that follows `node` in document order within the subtree of `top`, which itself is never
/// returned; null at the end. The children of `node` are skipped unless `enter`.
xml::Node NextInSubtree(xml::Node node, xml::Node top, bool enter);

}  // namespace ventrix
