// Desktop.h: what the platform asks of the desktop through GLib's GIO: which file systems have no
// Trash, and the file manager. GIO lives in a module of its own (lib/kestrail/desktop.so, beside
// the application's bin/), loaded on first use: a run that installs a setting without either
// question never pays for loading it.
#pragma once

#include <string>
#include <vector>

class Desktop {
 public:
  virtual ~Desktop() = default;

  // Whether the file system mounted at `top` is one of the system's own (a tmpfs, a kernel's file
  // system), where the desktop keeps no Trash and a file manager shows none.
  virtual bool IsSystemInternal(const std::string& top) = 0;

  // Has the file manager show the files at `paths` selected: org.freedesktop.FileManager1
  // .ShowItems on the session bus, else the first one's folder opened with the desktop's default
  // handler for folders. False when neither serves.
  virtual bool ShowItems(const std::vector<std::string>& paths) = 0;
};

// The desktop module's entry: a Desktop for the rest of the process.
extern "C" Desktop* KestrailMakeDesktop();

inline constexpr char kDesktopEntry[] = "KestrailMakeDesktop";
inline constexpr char kDesktopModule[] = "desktop.so";  // in lib/kestrail/

// The desktop of this process, loaded on first use; null, with one line on standard error, when
// the module cannot be loaded.
Desktop* LoadedDesktop();
