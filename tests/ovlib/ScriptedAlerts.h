// ScriptedAlerts.h: a fixture whose alerts, assertion reports included, are answered by a script
// and recorded, so no test waits on a terminal.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/DialogBackend.h"
#include "tests/ScriptedDialogBackend.h"

// An alert's buttons as (label, item) pairs, in item order.
using AlertButtons = std::vector<std::pair<std::string, int>>;

class ScriptedAlertsTest : public testing::Test {
 protected:
  // Whether an assertion report named `function`.
  bool Reported(const std::string& function) const {
    for (const AlertDescription& alert : m_alerts.m_vecAlerts)
      if (alert.m_strExplanation.find("(function '" + function + "')") != std::string::npos)
        return true;
    return false;
  }
  // The buttons of the `index`th alert shown.
  AlertButtons Buttons(std::size_t index) const {
    AlertButtons buttons;
    for (const AlertDescription::Button& button : m_alerts.m_vecAlerts.at(index).m_vecButtons)
      buttons.emplace_back(button.m_strLabel, button.m_nItem);
    return buttons;
  }

  ScriptedDialogBackend m_alerts;
  ScopedDialogBackend m_installed{m_alerts};
};
