// The constructs of DITA that the built-in toolkit does not handle.
#pragma once

#include <set>
#include <string>

#include "desk/toolkit/dita_document.h"

namespace ventrix::desk {

/// Reports each place of the document where its result will differ from what DITA describes, so that the user
/// can use the DITA Open Toolkit instead. Call it when reused content is in its place, and before keys and
/// links are resolved.
void ReportUnhandled(xmlDoc* document, const RemarkSink& remarks);

/// Why a page in the language differs; empty if the toolkit has its words, or if the language is in
/// `reported`, to which it is added.
std::string LanguageProblem(const std::string& language, std::set<std::string>& reported);

/// Reports the languages of a topic's page in which the toolkit has no words, and adds them to `reported`,
/// which has those that are not reported again. The language of the map, which may be empty, counts for
/// elements without one.
void ReportLanguages(xmlDoc* document, const std::string& mapLanguage, std::set<std::string>& reported,
                     const RemarkSink& remarks);

}  // namespace ventrix::desk
