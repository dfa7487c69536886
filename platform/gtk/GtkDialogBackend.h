// GtkDialogBackend.h: the entry point of the GTK dialog module (lib/kestrail/gtk-dialogs.so, beside
// the application's bin/). The application looks the entry up with dlopen and dlsym only when
// there is a display, so that kestrail itself needs no GTK; nothing else of the module is seen.
#pragma once

#include <string>

#include "platform/DialogBackend.h"

// Opens the display and returns a backend that shows dialogs as GTK windows, for the caller to
// delete; or null, with one line on why in `reason`, when GTK cannot open the display.
extern "C" DialogBackend* KestrailMakeGtkDialogBackend(std::string& reason);

inline constexpr char kGtkDialogBackendEntry[] = "KestrailMakeGtkDialogBackend";
inline constexpr char kGtkDialogModule[] = "gtk-dialogs.so";  // in lib/kestrail/
