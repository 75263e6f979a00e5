// Which files libxml2 and libxslt may open. They use no network and open regular files only, never a pipe, a
// device or a folder, and while a ReadScope lives, content comes from certain folders only. The settings
// belong to the process, so that a module in it, which uses the same libxml2, reads regular files only too.
#pragma once

#include <libxml/parser.h>
#include <libxslt/xsltInternals.h>

#include <string>
#include <vector>

#include "desk/paths/paths.h"

namespace ventrix::desk {

/// From now on, libxml2 opens regular files only, and no file beyond the limits of limits.h. May be repeated.
void ReadRegularFilesOnly();

/// Whether a file lies in one of the folders or below, wherever links lead.
bool LiesInOneOf(const NativePath& file, const std::vector<NativePath>& folders);

/// The message about a file outside the permitted folders: it names the file and the option that permits it.
std::string OutsideRefusal(const NativePath& file);

/// A document that a stylesheet asked for and did not get.
struct UnreadDocument {
    NativePath stylesheet = {};  ///< With the instruction that asks for it; empty if unknown.
    int line = 0;                ///< Of the instruction; 0 if unknown.
    std::string uri;
    std::string reason;  ///< One line.
};

/// While it lives, external entities and the documents that a stylesheet loads come from these folders and
/// what is below. DTDs, parameter entities and stylesheets may lie elsewhere. Scopes may nest; the innermost
/// one counts.
class ReadScope {
  public:
    explicit ReadScope(std::vector<NativePath> folders);
    ~ReadScope();
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;

    void Add(const std::vector<NativePath>& folders);

    /// The first refused file, one line with the place of the reference; empty if none was refused.
    const std::string& Refusal() const { return refusal_; }

    /// Whether the file may be read for this parser, null for none; if not, it is recorded as refused.
    bool Permits(const NativePath& file, const xmlParserCtxt* parser);

    /// Those of document() that could not be read, each once for an instruction.
    const std::vector<UnreadDocument>& Unread() const { return unread_; }

    /// `transformation` is at the instruction that asks for the document.
    void AddUnread(const xsltTransformContext& transformation, const std::string& uri,
                   const std::string& reason);

    /// The innermost scope; null if there is none.
    static ReadScope* Current();

  private:
    std::vector<NativePath> folders_;
    std::string refusal_;
    std::vector<UnreadDocument> unread_;
    ReadScope* outer_;
};

}  // namespace ventrix::desk
