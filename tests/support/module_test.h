// The fixture of tests that run the linked module: drives of its own, a connected host, and an empty
// reference cache.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pipeline/reference_scan.h"
#include "support/log_lines.h"
#include "support/test_drives.h"
#include "support/test_host.h"

namespace ventrix::test {

using testing::ElementsAre;
using testing::IsEmpty;

class ModuleTest : public testing::Test {
  protected:
    ModuleTest() { referenceCache = {}; }

    Lines LogLines() const { return LinesOf(drives.Read(R"(C:\log.txt)")); }

    TestDrives drives;
    LinkedHost host;
};

}  // namespace ventrix::test
