// FileManager.cpp: showing installed files in the desktop's file manager, and loading the
// desktop module that does it, with GIO, on first use.
#include "platform/System.h"

#include <dlfcn.h>

#include <iostream>
#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "platform/Terminal.h"
#include "platform/desktop/Desktop.h"
#include "platform/internal/CFObject.h"

namespace {

// The desktop from the module in ../lib/kestrail beside the executable's folder; null, with the
// reason, when it cannot be loaded. The module stays loaded for the rest of the process.
Desktop* LoadDesktop(std::string& reason) {
  const std::string path =
      CFBundleGetMainBundle()->m_strPath + "/../lib/kestrail/" + kDesktopModule;
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto make =
      module != nullptr
          ? reinterpret_cast<decltype(&KestrailMakeDesktop)>(dlsym(module, kDesktopEntry))
          : nullptr;
  if (make == nullptr) {
    reason = dlerror();
    return nullptr;
  }
  return make();
}

}  // namespace

Desktop* LoadedDesktop() {
  static Desktop* const desktop = [] {
    std::string reason;
    Desktop* loaded = LoadDesktop(reason);
    if (loaded == nullptr)
      std::cerr << ProgramName() << ": no desktop module (" << TerminalText(reason) << ")"
                << std::endl;
    return loaded;
  }();
  return desktop;
}

Boolean LSCanRevealItems() { return ActiveDialogBackend().ShowsWindows(); }

OSStatus LSRevealItems(const FSRef* items, ItemCount count) {
  if (items == nullptr || count == 0) return paramErr;
  // An item gone since (a setting that a later one of its pack replaced) is left out; the rest
  // are still shown.
  std::vector<std::string> paths;
  for (ItemCount i = 0; i < count; ++i) {
    UInt8 path[4096];
    if (FSRefMakePath(&items[i], path, sizeof path) == noErr)
      paths.emplace_back(reinterpret_cast<const char*>(path));
  }
  if (paths.empty()) return fnfErr;
  Desktop* desktop = LoadedDesktop();
  return desktop != nullptr && desktop->ShowItems(paths) ? noErr : kLSApplicationNotFoundErr;
}
