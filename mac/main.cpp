// main.cpp: Kestrail's entry point. It reads its command line, answers the system's
// open-documents event, which installs the file it names, and quits.
#include <map>

#include "mac/CommandLine.h"
#include "mac/Kestrail.h"
#include "platform/EventLoop.h"

namespace {

const ProgramDescription kKestrail = {
    "kestrail",
    "usage: kestrail SETTINGS-FILE...",
    "Installs a saved setting of an Orvelle filter where the filter finds it: in the filter's\n"
    "settings folder, which it makes the first time. It asks before it replaces a setting of the\n"
    "same name and tells you where the setting went. Settings of the older Glimmerbox product go\n"
    "into the Glimmerbox folder that you choose. Only the first file is installed.\n"
    "\n"
    "  --help     show this help\n"
    "  --version  show the version\n",
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
