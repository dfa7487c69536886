// file-manager-service RECORD: stands in for the desktop's file manager on the session bus. It
// owns org.freedesktop.FileManager1 and appends each URI that ShowItems is asked to show to RECORD,
// one a line, until it is killed. RECORD is made only once the name is owned: a test waits for it
// before it starts what will call.
#include <gio/gio.h>

#include <cstdio>
#include <cstdlib>

namespace {

// The other two methods answer but record nothing: a caller that used one where it should show
// the items leaves the record empty.
const char kInterface[] =
    "<node><interface name='org.freedesktop.FileManager1'>"
    "<method name='ShowFolders'><arg type='as' direction='in'/><arg type='s' direction='in'/>"
    "</method>"
    "<method name='ShowItems'><arg type='as' direction='in'/><arg type='s' direction='in'/>"
    "</method>"
    "<method name='ShowItemProperties'><arg type='as' direction='in'/>"
    "<arg type='s' direction='in'/></method>"
    "</interface></node>";

const char* record_path = nullptr;

void Call(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method,
          GVariant* parameters, GDBusMethodInvocation* invocation, gpointer) {
  if (g_strcmp0(method, "ShowItems") == 0) {
    std::FILE* record = std::fopen(record_path, "a");
    if (record == nullptr) {
      g_dbus_method_invocation_return_error(invocation, G_IO_ERROR, G_IO_ERROR_FAILED,
                                            "cannot write %s", record_path);
      return;
    }
    GVariantIter* uris = nullptr;
    const gchar* uri = nullptr;
    g_variant_get(parameters, "(as&s)", &uris, nullptr);
    while (g_variant_iter_next(uris, "&s", &uri)) std::fprintf(record, "%s\n", uri);
    g_variant_iter_free(uris);
    std::fclose(record);
  }
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

void Acquired(GDBusConnection*, const gchar*, gpointer) {
  if (std::FILE* record = std::fopen(record_path, "w")) std::fclose(record);
}

// Another owner, or no bus at all: the test would wait for calls that never come.
void Lost(GDBusConnection*, const gchar*, gpointer) {
  std::fprintf(stderr, "file-manager-service: cannot own org.freedesktop.FileManager1\n");
  std::exit(1);
}

void Connected(GDBusConnection* bus, const gchar*, gpointer) {
  static const GDBusInterfaceVTable vtable = {Call, nullptr, nullptr, {}};
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kInterface, nullptr);
  g_dbus_connection_register_object(bus, "/org/freedesktop/FileManager1", node->interfaces[0],
                                    &vtable, nullptr, nullptr, nullptr);
  g_dbus_node_info_unref(node);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: file-manager-service RECORD\n");
    return 2;
  }
  record_path = argv[1];
  // The object is there before the name is: no call can come in between.
  g_bus_own_name(G_BUS_TYPE_SESSION, "org.freedesktop.FileManager1",
                 G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, Connected, Acquired, Lost, nullptr, nullptr);
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
