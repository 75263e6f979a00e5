// DTDs for external entities. The file of an entity has no DOCTYPE, but it may use the entities that the
// document declares which refers to it. Strings are UTF-8.
#pragma once

#include <functional>
#include <map>
#include <memory>

#include "desk/paths/paths.h"
#include "platform/temp_folder.h"

namespace ventrix::desk {

/// The document that declares the entities which the file of an entity may use; empty if it is not such a
/// file, or a copy of one.
using DeclaringDocument = std::function<NativePath(const NativePath& file)>;

class EntityDtds {
  public:
    explicit EntityDtds(DeclaringDocument declaringDocument)
        : declaringDocument_(std::move(declaringDocument)) {}

    /// A DTD for the file of an entity, which exists as long as this object. It declares the entities of its
    /// document and, after them, what the other DTD declares, which may be empty. Empty if the file is not an
    /// entity's, or the DTD cannot be written.
    NativePath DtdFor(const NativePath& file, const NativePath& otherDtd);

  private:
    DeclaringDocument declaringDocument_;
    std::unique_ptr<platform::TemporaryFolder> folder_;
    std::map<std::pair<NativePath, NativePath>, NativePath> written_;  ///< By the document and the other DTD.
};

}  // namespace ventrix::desk
