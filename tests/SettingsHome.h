// SettingsHome.h: the fixture of the library's and the application's tests. Its user lives in a
// fresh temporary home (HOME, XDG_DATA_HOME and XDG_CONFIG_HOME all inside it), and its alerts,
// assertion reports included, are answered by a script and recorded, so no test waits on a
// terminal. Helpers lay out files and read back what the settings rules made.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "platform/DialogBackend.h"
#include "tests/ScopedVariable.h"
#include "tests/ScriptedDialogBackend.h"
#include "tests/TempFolder.h"

// An alert's buttons as (label, item) pairs, in item order.
using AlertButtons = std::vector<std::pair<std::string, int>>;

class SettingsHomeTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* folder : {"home", "home/data", "home/config", "in"})
      std::filesystem::create_directory(m_temp.Path(folder));
  }

  // A reference to `relative` inside the temporary folder.
  OVFileSystemReference Ref(const std::string& relative) const {
    OVFileSystemReference ref;
    const std::string path = m_temp.Path(relative);
    EXPECT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), ref, nullptr))
        << relative;
    return ref;
  }
  // Writes `contents` to in/`name` and refers to it.
  OVFileSystemReference Input(const std::string& name, const std::string& contents) const {
    m_temp.Write("in/" + name, contents);
    return Ref("in/" + name);
  }
  // The path of `ref` relative to the temporary folder; "" for a reference that names nothing.
  std::string Relative(const OVFileSystemReference& ref) const {
    char path[2048];
    if (FSRefMakePath(ref, reinterpret_cast<UInt8*>(path), sizeof path) != noErr) return "";
    return std::string(path).substr(m_temp.Path().size() + 1);
  }

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
  TempFolder m_temp;
  ScopedVariable m_home{"HOME", m_temp.Path("home").c_str()};
  ScopedVariable m_data{"XDG_DATA_HOME", m_temp.Path("home/data").c_str()};
  ScopedVariable m_config{"XDG_CONFIG_HOME", m_temp.Path("home/config").c_str()};
};
