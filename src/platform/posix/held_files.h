// Files that streams of this process hold open. As on NTFS, such a file can't be deleted meanwhile.
#pragma once

struct stat;

namespace ventrix::platform {

void HoldFile(int descriptor);
void ReleaseFile(int descriptor);  ///< Before the descriptor is closed.
bool IsHeld(const struct stat& file);

}  // namespace ventrix::platform
