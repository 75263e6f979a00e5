// The lines of a report log, written out independently of the module.
#pragma once

#include <string>
#include <vector>

namespace ventrix::test {

using Lines = std::vector<std::string>;

inline const std::string kRuleLine(62, '*');
inline const std::string kTriedLine =
    "Es wird versucht, alle Dateien zu verpacken, auf die verwiesen wird...";
inline const std::string kValidLine = "Logarithmus:Liste der gültigen Dateien";
inline const std::string kBrokenLine = "Achtung:Liste der beschädigten Links";
inline const std::string kUnsavedLine = "Achtung:Liste der ungespeicherten Dateien";
inline const std::string kRootsText =
    "Einige Dateien, auf die verwiesen wird, befinden sich auf mehreren Laufwerken und können nicht verpackt "
    "werden!";
inline const std::string kEncodeHeading = "Es wird versucht, XML-Dateien zu codieren...";
inline const std::string kDecodeHeading = "Es wird versucht, Ausgabedateien zu decodieren...";

/// A section of a log: an empty line, the title, and the paths between two rules.
inline Lines Section(const std::string& title, const Lines& paths) {
    Lines lines = {"", title, kRuleLine};
    lines.insert(lines.end(), paths.begin(), paths.end());
    lines.push_back(kRuleLine);
    return lines;
}

/// The heading of a coding step.
inline Lines Heading(const std::string& text) {
    return {"", text, kRuleLine};
}

inline Lines operator+(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

/// Splits a log at CR LF. Other line ends stay in their line. A last line without an end is marked.
inline Lines LinesOf(const std::string& bytes) {
    Lines lines;
    std::size_t start = 0;
    for (auto end = bytes.find("\r\n"); end != std::string::npos; end = bytes.find("\r\n", start)) {
        lines.push_back(bytes.substr(start, end - start));
        start = end + 2;
    }
    if (start != bytes.size()) {
        lines.push_back("(not ended) " + bytes.substr(start));
    }
    return lines;
}

}  // namespace ventrix::test
