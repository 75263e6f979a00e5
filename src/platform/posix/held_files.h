// The files that text streams of this process have open. As on NTFS, such a file cannot be deleted.
#pragma once

struct stat;

namespace ventrix::platform {

void HoldFile(int descriptor);
void ReleaseFile(int descriptor);  ///< To be called before the descriptor is closed.
bool IsHeld(const struct stat& file);

}  // namespace ventrix::platform
