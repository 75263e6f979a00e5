// Something that a run did not do, or did differently from what the user may expect. Each finding is a
// warning on the screen, an entry of the JSON object, and makes the exit status 1 at least.
#pragma once

#include <string>

#include "desk/paths/paths.h"
#include "desk/xml/subject.h"

namespace ventrix::desk {

struct Finding {
    NativePath file;   ///< Empty if it belongs to no file.
    int line = 0;      ///< 0 if unknown.
    std::string code;  ///< A word for scripts, listed in docs/json.md, such as "not-encoded".
    std::string text;  ///< One line, without the file's name.
    int column = 0;    ///< In characters, from 1; 0 if unknown.
    Subject subject = {};
};

}  // namespace ventrix::desk
