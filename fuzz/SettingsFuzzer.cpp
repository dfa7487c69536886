// Feeds arbitrary bytes to the whole import of a settings file, as a user's double-click would:
// read, decode and examine it, find or make its filter's folder, ask for the Glimmerbox folder,
// copy or unpack it, and fill the messages with its names. Each input is imported twice into a
// fresh home, so that the second import meets the first one's file, asks the replace question and
// replaces it. The file's name holds markers, as a user's file name may, so that every message
// fills one in.
#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "mac/Kestrail.h"
#include "platform/DialogBackend.h"
#include "platform/Files.h"
#include "tests/ScriptedDialogBackend.h"

namespace {

std::string s_strHome;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char pattern[] = "/tmp/kestrail-fuzz-XXXXXX";
  if (mkdtemp(pattern) == nullptr) return 1;
  s_strHome = pattern;
  setenv("HOME", s_strHome.c_str(), 1);
  setenv("XDG_DATA_HOME", (s_strHome + "/data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", (s_strHome + "/config").c_str(), 1);
  // The built English texts, whose messages have markers to fill.
  setenv("KESTRAIL_LOCALEDIR", KESTRAIL_LOCALE_DIRECTORY, 1);
  setenv("LC_ALL", "C", 1);
  std::atexit([] { std::filesystem::remove_all(s_strHome); });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace fs = std::filesystem;
  fs::remove_all(s_strHome + "/data");
  fs::remove_all(s_strHome + "/in");
  fs::create_directories(s_strHome + "/in");
  fs::create_directories(s_strHome + "/Glimmerbox/Glimmerbox Settings");
  const std::string path = s_strHome + "/in/%1 setting %0";
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), size);
  FSRef file;
  if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &file, nullptr) != noErr)
    return 0;
  ScriptedDialogBackend dialogs;
  ScopedDialogBackend installed(dialogs);
  for (int import = 0; import < 2; ++import) {
    dialogs.m_queFolders = {s_strHome + "/Glimmerbox"};
    dialogs.m_queAnswers = {kAlertStdAlertCancelButton};  // Replace, when asked
    ImportOneSetting(file);
  }
  return 0;
}
