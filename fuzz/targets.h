// The fuzz targets, one for each parser. A target takes any bytes and ends the process with a message if a
// parser breaks a promise; what the sanitizers find ends it too. fuzzer_entry.cpp runs one target under
// libFuzzer, replay_seeds.cpp all of them on the files in seeds/.
#pragma once

#include <string_view>

namespace ventrix::fuzz {

using Target = void(std::string_view input);

Target RequestGrammar;
Target MarkerDecode;
Target EncodeDecode;
Target XmlDocument;
Target XPathQueries;
Target Paths;
Target FileListing;
Target ReferenceListing;
Target Scan;
Target Format;
Target Templates;
Target Encodings;
Target ValueLists;
Target PropertyLists;
Target DitavalRules;
Target DitaMap;

struct NamedTarget {
    std::string_view name;  ///< Also of its folder in seeds/.
    Target* run;
};

inline constexpr NamedTarget kTargets[] = {
    {"request-grammar", RequestGrammar},
    {"marker-decode", MarkerDecode},
    {"encode-decode", EncodeDecode},
    {"xml-document", XmlDocument},
    {"xpath-queries", XPathQueries},
    {"paths", Paths},
    {"file-listing", FileListing},
    {"reference-listing", ReferenceListing},
    {"scan", Scan},
    {"format", Format},
    {"templates", Templates},
    {"encodings", Encodings},
    {"value-lists", ValueLists},
    {"property-lists", PropertyLists},
    {"ditaval", DitavalRules},
    {"dita-map", DitaMap},
};

}  // namespace ventrix::fuzz
