// The fixture of the bridge's tests: a scripted host and callbacks that write a log. At the end of each test
// it checks that no reference and no block is left.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "bridge/block_count.h"
#include "support/test_host.h"

namespace ventrix::test {

/// The calls of the callbacks that the tests define, one line each: Initialize, Notify, Message, CMSCommand
/// and HtmlDialogEventEx. Command, DialogEvent and GetResource are the kit's defaults.
extern Lines callbackLog;

/// Runs inside Notify, if set.
extern std::function<void()> whileNotified;

class BridgeTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    TestHost& Host() { return *host_; }

    /// Connects with an empty description, so that no version block is read.
    std::int32_t Connect();

    int moduleMark_ = 0;  ///< Its address serves as a module handle.

  private:
    std::unique_ptr<TestHost> host_;
    BlockCounts blocksBefore_ = {};
};

/// A value in kit memory.
Q_Value InKit(const HostValue& value);

}  // namespace ventrix::test
