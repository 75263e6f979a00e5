// The three commands of `ventrix`. Each returns the exit status of the program and throws Stop when it
// cannot continue.
#pragma once

#include "desk/cli/options.h"
#include "desk/cli/screen.h"

namespace ventrix::desk {

int Publish(const Options& options, const Screen& screen);
int Validate(const Options& options, const Screen& screen);
int Request(const Options& options, const Screen& screen);

}  // namespace ventrix::desk
