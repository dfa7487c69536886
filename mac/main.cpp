// main.cpp: Kestrail's entry point. It reads its command line, answers the system's
// open-documents event, which installs the file it names, and quits.
#include <map>

#include "mac/CommandLine.h"
#include "mac/Kestrail.h"
#include "platform/CoreFoundation.h"
#include "platform/EventLoop.h"

namespace {

const ProgramDescription kKestrail = {
    "kestrail",
    // Translators: the form of the command line; "kestrail" is the program's name.
    LOCALIZABLE_TEXT("usage: kestrail SETTINGS-FILE..."),
    LOCALIZABLE_TEXT(
        // Translators: what --help shows after the usage. The options stay as they are; the
        // lines are broken by hand, at most 79 characters long.
        "Installs a saved setting of an Orvelle filter where the filter finds it: in\n"
        "the filter's settings folder, which it makes the first time. It asks before\n"
        "it replaces a setting of the same name and tells you where the setting went.\n"
        "Settings of the older Glimmerbox product go into the Glimmerbox folder that\n"
        "you choose. Only the first file is installed.\n"
        "\n"
        "  --help     show this help\n"
        "  --version  show the version\n"),
    {},
};

int ReadKestrailCommandLine(const std::vector<std::string>& arguments, std::ostream& out,
                            std::ostream& err, std::vector<std::string>& files) {
  std::map<std::string, std::string> values;
  return ReadCommandLine(kKestrail, arguments, out, err, values, files);
}

}  // namespace

int main() {
  SetCommandLineReader(ReadKestrailCommandLine);
  const OSErr status = AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments,
                                             KestrailHandleOpenAppleEvent, 0, false);
  if (status != noErr) return status;
  RunApplicationEventLoop();
  return 0;
}
