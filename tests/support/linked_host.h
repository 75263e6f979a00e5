// A scripted host for the module that is linked into the test program.
#pragma once

#include "bridge/connection.h"
#include "platform/module.h"
#include "support/scripted_host.h"

namespace ventrix::test {

class LinkedHost : public ScriptedHost {
  public:
    LinkedHost() : ScriptedHost(&Q_ApiClientInit, platform::MainModule()) {}
};

}  // namespace ventrix::test
