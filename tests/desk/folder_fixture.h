// A test in a folder of its own, on a machine with the one drive Z:.
#pragma once

#include <gtest/gtest.h>

#include "support/test_folder.h"

namespace ventrix::desk {

class FolderFixture : public testing::Test, protected test::TestFolder {
  protected:
    FolderFixture() { platform::SetProcessDrives({{"Z:\\", "/"}}); }
};

}  // namespace ventrix::desk
