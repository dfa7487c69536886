// SettingsHome.h: a fixture whose user lives in a fresh temporary home (HOME, XDG_DATA_HOME and
// XDG_CONFIG_HOME all inside it), with alerts answered by a script, and helpers to lay out files
// and read back what the settings rules made.
#pragma once

#include <filesystem>
#include <string>

#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "tests/ScopedVariable.h"
#include "tests/TempFolder.h"
#include "tests/ovlib/ScriptedAlerts.h"

class SettingsHomeTest : public ScriptedAlertsTest {
 protected:
  void SetUp() override {
    ASSERT_FALSE(m_temp.Path().empty());
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

  TempFolder m_temp;
  ScopedVariable m_home{"HOME", m_temp.Path("home").c_str()};
  ScopedVariable m_data{"XDG_DATA_HOME", m_temp.Path("home/data").c_str()};
  ScopedVariable m_config{"XDG_CONFIG_HOME", m_temp.Path("home/config").c_str()};
};
