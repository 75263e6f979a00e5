// The common ground of the bridge's tests: a scripted host, callbacks that keep a log, and a balance of
// references and blocks at the end of each test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "bridge/block_count.h"
#include "support/test_host.h"

namespace ventrix::test {

/// What the test's own callbacks were called with, one line each: Initialize, Notify, Message, CMSCommand and
/// HtmlDialogEventEx. Command, DialogEvent and GetResource are the kit's defaults.
extern Lines callbackLog;

/// Runs inside Notify, when set.
extern std::function<void()> whileNotified;

class BridgeTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    TestHost& Host() { return *host_; }

    /// Connects with an empty description, so that no version block is asked.
    std::int32_t Connect();

    int moduleMark_ = 0;  ///< Its address serves as a module handle.

  private:
    std::unique_ptr<TestHost> host_;
    BlockCounts blocksBefore_ = {};
};

/// A value in kit memory.
Q_Value InKit(const HostValue& value);

}  // namespace ventrix::test
