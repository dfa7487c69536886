// DialogBackend.cpp: choosing the process's dialog backend.
#include "platform/DialogBackend.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "platform/EventLoop.h"
#include "platform/Terminal.h"
#include "platform/gtk/GtkDialogBackend.h"
#include "platform/internal/CFObject.h"

namespace {

bool IsSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] != '\0';
}

// The GTK dialogs from the module in ../lib/kestrail beside the executable's folder; null, with
// the reason, when the module or GTK cannot be loaded or GTK cannot open the display. The module
// stays loaded for the rest of the process, as the backend it made does.
DialogBackend* LoadGtkDialogBackend(std::string& reason) {
  const std::string path =
      CFBundleGetMainBundle()->m_strPath + "/../lib/kestrail/" + kGtkDialogModule;
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    reason = dlerror();
    return nullptr;
  }
  const auto make = reinterpret_cast<decltype(&KestrailMakeGtkDialogBackend)>(
      dlsym(module, kGtkDialogBackendEntry));
  if (make == nullptr) {
    reason = dlerror();
    return nullptr;
  }
  // The module looks its own words up with gettext(), in the application's text domain.
  BindMainBundleTexts();
  return make(reason);
}

// The one place that decides how alerts reach the user: windows when there is a graphical display
// and KESTRAIL_UI does not ask for the terminal, else the terminal. Windows that cannot be had are
// said so in one line, and the terminal serves instead.
std::unique_ptr<DialogBackend> ChooseDialogBackend() {
  const char* ui = std::getenv("KESTRAIL_UI");
  const bool text = ui != nullptr && std::strcmp(ui, "text") == 0;
  if (!text && (IsSet("WAYLAND_DISPLAY") || IsSet("DISPLAY"))) {
    std::string reason;
    if (DialogBackend* gtk = LoadGtkDialogBackend(reason))
      return std::unique_ptr<DialogBackend>(gtk);
    std::cerr << ProgramName() << ": no dialog windows (" << TerminalText(reason)
              << "); asking on the terminal" << std::endl;
  }
  return std::make_unique<TextDialogBackend>(std::cin, std::cout, std::cerr);
}

}  // namespace

DialogBackend& ActiveDialogBackend() {
  if (DialogBackend* installed = ScopedDialogBackend::Installed()) return *installed;
  static const std::unique_ptr<DialogBackend> chosen = ChooseDialogBackend();
  return *chosen;
}
