// ScriptedAlerts.h: a fixture whose alerts, assertion reports included, are answered by a script
// and recorded, so no test waits on a terminal.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/DialogBackend.h"

class ScriptedAlertsTest : public testing::Test {
 protected:
  // Whether an assertion report named `function`.
  bool Reported(const std::string& function) const {
    for (const AlertDescription& alert : m_alerts.m_vecAlerts)
      if (alert.m_strExplanation.find("(function '" + function + "')") != std::string::npos)
        return true;
    return false;
  }

  ScriptedDialogBackend m_alerts;
  ScopedDialogBackend m_installed{m_alerts};
};
