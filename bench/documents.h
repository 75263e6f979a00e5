// Documents made for the benchmarks, of the shapes that cost in different ways. The same arguments give the
// same bytes.
#pragma once

#include <cstddef>
#include <string>

namespace ventrix::bench {

/// A topic of sections with paragraphs, a quarter of either with an attribute that is carried over; inline
/// elements in running text. About 55 bytes and two tags for each element.
std::string MakeTopic(std::size_t elements);

/// A root with this many short sibling elements.
std::string MakeWide(std::size_t siblings);

/// Elements nested this deep, with a text in front of and behind each.
std::string MakeDeep(std::size_t levels);

}  // namespace ventrix::bench
