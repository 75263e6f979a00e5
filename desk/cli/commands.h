// The three verbs of `ventrix`. Each gives the exit status, and throws Stop where it cannot go on.
#pragma once

#include "desk/cli/options.h"
#include "desk/cli/screen.h"

namespace ventrix::desk {

int Publish(const Options& options, const Screen& screen);
int Validate(const Options& options, const Screen& screen);
int Request(const Options& options, const Screen& screen);

}  // namespace ventrix::desk
