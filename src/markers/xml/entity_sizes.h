// How much text entities stand for, told without expanding them: a few hundred bytes of declarations may
// stand for more than any memory holds.
#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <unordered_map>

namespace ventrix::xml {

class EntitySizes {
  public:
    /// Bytes of the entity's replacement text with all nested entities expanded. What is nested too deep or
    /// within itself counts as more than ExpansionLimit.
    std::size_t SizeOf(const xmlEntity& entity) { return SizeOf(entity, 0); }

  private:
    std::size_t SizeOf(const xmlEntity& entity, int depth);

    std::unordered_map<const xmlEntity*, std::size_t> known_;
};

}  // namespace ventrix::xml
