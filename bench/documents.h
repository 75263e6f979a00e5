// Generates the documents of the benchmarks, in shapes that stress different parts. The same arguments give
// the same bytes.
#pragma once

#include <cstddef>
#include <string>

namespace ventrix::bench {

/// A topic of sections with paragraphs, a quarter of each with an attribute that encoding carries over, and
/// inline elements in running text. About 55 bytes and two tags per element.
std::string MakeTopic(std::size_t elements);

/// A root with this many short sibling elements.
std::string MakeWide(std::size_t siblings);

/// Elements nested this deep, with text before and after each.
std::string MakeDeep(std::size_t levels);

}  // namespace ventrix::bench
