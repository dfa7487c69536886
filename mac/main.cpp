// main.cpp: Kestrail's entry point. It reads its command line, answers the system's
// open-documents event, which installs the files it names, and quits.
#include <map>

#include "mac/CommandLine.h"
#include "mac/Kestrail.h"
#include "platform/CoreFoundation.h"
#include "platform/EventLoop.h"
#include "platform/Memory.h"
#include "xmlparser/Xml.h"

namespace {

const ProgramDescription kKestrail = {
    "kestrail",
    // Translators: the form of the command line; "kestrail" is the program's name.
    LOCALIZABLE_TEXT("usage: kestrail SETTINGS-FILE..."),
    LOCALIZABLE_TEXT(
        // Translators: what --help shows after the usage. The options stay as they are; the
        // lines are broken by hand, at most 79 characters long.
        "Installs saved settings of Orvelle filters where the filters find them: in\n"
        "each filter's settings folder, which is made the first time. Every file given\n"
        "is installed, in order; with two or more, one summary at the end tells where\n"
        "each setting went. Settings of the older Glimmerbox product go into the\n"
        "Glimmerbox folder that you choose, asked for once.\n"
        "\n"
        "When a setting of the same name is installed, you choose: keep the existing\n"
        "one, replace it, or keep both (the new one gets a numbered name). While more\n"
        "files are to come, a + after the answer (b+, r+) gives it for all of them.\n"
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
  // A large setting's document takes its memory as a whole file's text does: in large pages,
  // faulted in ahead of the parser.
  Xml::SetMemoryFunctions({AllocateMemoryBlock, FreeMemoryBlock, PrepareMemoryForWriting});
  SetCommandLineReader(ReadKestrailCommandLine);
  const OSErr status = AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments,
                                             KestrailHandleOpenAppleEvent, 0, false);
  if (status != noErr) return status;
  RunApplicationEventLoop();
  return 0;
}
