// FileManager.cpp: showing installed files in the desktop's file manager, through the freedesktop
// file manager interface on the session bus, or else by opening their folder.
#include <gio/gio.h>

#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/Files.h"
#include "platform/System.h"

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

}  // namespace

Boolean LSCanRevealItems() { return ActiveDialogBackend().ShowsWindows(); }

OSStatus LSRevealItems(const FSRef* items, ItemCount count) {
  if (items == nullptr || count == 0) return paramErr;
  // An item gone since (a setting that a later one of its pack replaced) is left out; the rest
  // are still shown.
  std::vector<std::string> uris;
  std::string firstPath;
  for (ItemCount i = 0; i < count; ++i) {
    UInt8 path[4096];
    if (FSRefMakePath(&items[i], path, sizeof path) != noErr) continue;
    gchar* uri = g_filename_to_uri(reinterpret_cast<const char*>(path), nullptr, nullptr);
    if (uri == nullptr) continue;
    uris.emplace_back(uri);
    g_free(uri);
    if (firstPath.empty()) firstPath = reinterpret_cast<const char*>(path);
  }
  if (uris.empty()) return fnfErr;
  if (AskFileManager(uris)) return noErr;
  // No file manager answers on the bus: the first item's folder, opened as the desktop opens
  // folders, shows it at least among its neighbours.
  gchar* folder = g_path_get_dirname(firstPath.c_str());
  gchar* folderUri = g_filename_to_uri(folder, nullptr, nullptr);
  g_free(folder);
  GError* error = nullptr;
  const gboolean opened =
      folderUri != nullptr && g_app_info_launch_default_for_uri(folderUri, nullptr, &error);
  g_free(folderUri);
  g_clear_error(&error);
  return opened ? noErr : kLSApplicationNotFoundErr;
}
