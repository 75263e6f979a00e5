#include "markers/xml/node_table.h"

#include <algorithm>

namespace ventrix::xml {

void NodeTable::Reserve(std::size_t nodes) {
    const std::size_t wanted = size_ + nodes;
    if (wanted <= capacity_) {
        return;
    }
    const std::size_t capacity = std::max(wanted, 2 * capacity_);
    std::unique_ptr<NodeRecord, Release> records(
        static_cast<NodeRecord*>(platform::TakeMemory(capacity * sizeof(NodeRecord))));
    std::uninitialized_copy_n(records_.get(), size_, records.get());
    records_ = std::move(records);
    capacity_ = capacity;
}

}  // namespace ventrix::xml
