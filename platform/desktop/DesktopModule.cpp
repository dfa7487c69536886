// DesktopModule.cpp: the desktop module: the Trash rules and the file manager, through GIO.
#include "platform/desktop/Desktop.h"

#include <gio/gio.h>
#include <gio/gunixmounts.h>

namespace {

// The file manager may first have to start; it is given this long to answer.
const int kAnswerMilliseconds = 25000;

// Whether the desktop has a session bus: one named in the environment, or the user's own. Without
// either, GIO would start a bus of its own, which would outlive the process and serve no one.
bool HasSessionBus() {
  const char* address = g_getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && address[0] != '\0') return true;
  gchar* own = g_build_filename(g_get_user_runtime_dir(), "bus", nullptr);
  const bool exists = g_file_test(own, G_FILE_TEST_EXISTS);
  g_free(own);
  return exists;
}

// Asks the file manager that serves org.freedesktop.FileManager1 to show `uris` selected.
bool AskFileManager(const std::vector<std::string>& uris) {
  if (!HasSessionBus()) return false;
  GError* error = nullptr;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
  if (bus == nullptr) {
    g_clear_error(&error);
    return false;
  }
  GVariantBuilder items;
  g_variant_builder_init(&items, G_VARIANT_TYPE("as"));
  for (const std::string& uri : uris) g_variant_builder_add(&items, "s", uri.c_str());
  GVariant* reply = g_dbus_connection_call_sync(
      bus, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
      "org.freedesktop.FileManager1", "ShowItems", g_variant_new("(ass)", &items, ""), nullptr,
      G_DBUS_CALL_FLAGS_NONE, kAnswerMilliseconds, nullptr, &error);
  g_object_unref(bus);
  g_clear_error(&error);
  if (reply == nullptr) return false;
  g_variant_unref(reply);
  return true;
}

// `path` as a file URI, escaped as GLib escapes one; empty when it cannot be one.
std::string FileUri(const std::string& path) {
  gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
  if (uri == nullptr) return std::string();
  std::string text = uri;
  g_free(uri);
  return text;
}

class GioDesktop : public Desktop {
 public:
  bool IsSystemInternal(const std::string& top) override {
    GUnixMountEntry* mount = g_unix_mount_for(top.c_str(), nullptr);
    if (mount == nullptr) return false;
    const bool internal = g_unix_mount_is_system_internal(mount);
    g_unix_mount_free(mount);
    return internal;
  }

  bool ShowItems(const std::vector<std::string>& paths) override {
    std::vector<std::string> uris;
    for (const std::string& path : paths)
      if (const std::string uri = FileUri(path); !uri.empty()) uris.push_back(uri);
    if (uris.empty()) return false;
    if (AskFileManager(uris)) return true;
    // No file manager answers on the bus: the first item's folder, opened as the desktop opens
    // folders, shows it at least among its neighbours.
    gchar* folder = g_path_get_dirname(paths.front().c_str());
    const std::string folderUri = FileUri(folder);
    g_free(folder);
    GError* error = nullptr;
    const bool opened =
        !folderUri.empty() && g_app_info_launch_default_for_uri(folderUri.c_str(), nullptr, &error);
    g_clear_error(&error);
    return opened;
  }
};

}  // namespace

extern "C" Desktop* KestrailMakeDesktop() { return new GioDesktop; }
