// What the document passes share on top of the XML layer. Nodes are handles that own nothing; the document
// owns them all. Texts are UTF-8.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "markers/xml/dom.h"

namespace ventrix {

/// The qualified name as written. The view holds as long as the document.
std::string_view NodeName(xml::Node node);

/// A text node's content or an attribute's value.
std::string NodeText(xml::Node node);

/// A new text node of the document, not yet in its tree.
xml::Node NewTextNode(xml::Document& document, std::string_view text);

/// A new text node, not yet in the tree, of what WrapElementGroup makes of the element's XML.
xml::Node NewElementGroupNode(xml::Document& document, xml::Node element);

bool IsElement(xml::Node node);   ///< False for no node.
bool IsTextNode(xml::Node node);  ///< False for no node, and for a CDATA section.

/// True if the node's name is in the list, exactly.
bool IsListedElement(xml::Node element, const std::list<std::string>& names);

/// True for a text node with more than blanks; false for no node.
bool IsFilledTextNode(xml::Node node);

/// The first filled text node among the element's descendants, in document order, or no node.
xml::Node FirstFilledTextNode(xml::Node element);

/// Puts an attribute group, its words included, in front of a text node's content; a group that stands there
/// already is merged.
void PrependGroup(xml::Node textNode, std::string_view group);

/// The value of the attribute with exactly that name; empty without one.
std::string AttributeValue(xml::Node element, std::string_view name);

/// Adds an attribute that the element does not have.
void AddAttribute(xml::Document& document, xml::Node element, std::string_view name, std::string_view value);

/// Joins the value on behind the attribute's value, after a space if `withBlank`; adds the attribute with the
/// value alone where there is none.
void SetOrAppendAttribute(xml::Document& document, xml::Node element, std::string_view name,
                          std::string_view value, bool withBlank);

/// An empty document for a piece of XML whose nodes will be inserted into `main`.
std::unique_ptr<xml::Document> NewScratchDocument(xml::Document& main);

/// The root element of the XML, ready to be inserted into `main`; no node if it does not parse.
xml::Node ParseElementXml(xml::Document& main, std::string_view xmlText);

/// The settings that every document of a pass has: whole at once, no validation, no external DTD, all white
/// space kept.
void ConfigureDocument(xml::Document& document);

/// The node that follows in document order within `top`, which itself is never given. With `enter` the node's
/// children come first. No node at the end.
xml::Node NextInSubtree(xml::Node node, xml::Node top, bool enter);

}  // namespace ventrix
