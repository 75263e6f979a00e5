// A test with a folder of its own and Z: as the only drive.
#pragma once

#include <gtest/gtest.h>

#include "support/test_drives.h"

namespace ventrix::desk {

class FolderFixture : public testing::Test, protected test::TestFolder {
  protected:
    FolderFixture() { platform::SetProcessDrives(test::kSystemDrives); }
};

}  // namespace ventrix::desk
