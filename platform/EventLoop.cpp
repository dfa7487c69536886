// EventLoop.cpp: the handler table and the application event loop, fed by the command line.
#include "platform/EventLoop.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/Terminal.h"

namespace {

struct InstalledHandler {
  AEEventHandlerUPP m_pHandler;
  long m_nRefcon;
};

std::map<std::pair<AEEventClass, AEEventID>, InstalledHandler> s_mapHandlers;
bool s_bQuitRequested = false;
std::ostream* s_pLoopErrors = nullptr;

const char kUsage[] = "usage: kestrail SETTINGS-FILE...";

const char kHelp[] =
    "Installs a saved setting of an Orvelle filter where the filter finds it: in the filter's\n"
    "settings folder, which it makes the first time. It asks before it replaces a setting of the\n"
    "same name and tells you where the setting went. Settings of the older Glimmerbox product go\n"
    "into the Glimmerbox folder that you choose. Only the first file is installed.\n"
    "\n"
    "  --help     show this help\n"
    "  --version  show the version\n";

// The arguments after the program name, as the kernel keeps them: each ends with a zero byte.
std::vector<std::string> CommandLineArguments() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  std::vector<std::string> arguments;
  for (std::string argument; std::getline(in, argument, '\0');) arguments.push_back(argument);
  if (!arguments.empty()) arguments.erase(arguments.begin());
  return arguments;
}

// Sorts the arguments into files; returns -1 to go on with them, or the process's exit status.
int ReadArguments(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                  std::vector<std::string>& files) {
  bool options = true;
  for (const std::string& argument : arguments) {
    if (options && argument == "--") {
      options = false;
    } else if (options && argument == "--help") {
      out << kUsage << "\n\n" << kHelp;
      return 0;
    } else if (options && argument == "--version") {
      out << kApplicationName << ' ' << KESTRAIL_VERSION << '\n';
      return 0;
    } else if (options && argument.size() > 1 && argument[0] == '-') {
      err << kApplicationName << ": unknown option " << TerminalText(argument) << '\n'
          << kUsage << '\n';
      return 2;
    } else {
      files.push_back(argument);
    }
  }
  if (files.empty()) {
    err << kUsage << '\n';
    return 2;
  }
  return -1;
}

}  // namespace

OSErr AEInstallEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                            AEEventHandlerUPP handler, long handlerRefcon, Boolean) {
  if (handler == nullptr) return paramErr;
  s_mapHandlers[{theAEEventClass, theAEEventID}] = InstalledHandler{handler, handlerRefcon};
  return noErr;
}

void QuitApplicationEventLoop() { s_bQuitRequested = true; }

OSErr DispatchAppleEvent(const AppleEvent* event, AppleEvent* reply, bool& quit) {
  AEEventClass eventClass;
  AEEventID eventID;
  const OSErr err = GetEventClassAndID(event, eventClass, eventID);
  if (err != noErr) return err;
  const auto found = s_mapHandlers.find({eventClass, eventID});
  if (found == s_mapHandlers.end()) return errAEEventNotHandled;
  s_bQuitRequested = false;
  const OSErr status = found->second.m_pHandler(event, reply, found->second.m_nRefcon);
  quit = s_bQuitRequested;
  s_bQuitRequested = false;
  return status;
}

int RunEventLoop(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  std::vector<std::string> files;
  const int status = ReadArguments(arguments, out, err, files);
  if (status >= 0) return status;
  AppleEvent event, reply;
  AEInitializeDesc(&event);
  AEInitializeDesc(&reply);  // the sender waits for no reply
  std::ostream* const outerErrors = std::exchange(s_pLoopErrors, &err);
  // The handler's status and whether it quit do not matter here: the command line carries this
  // one event, so once it is handled the loop has nothing left to wait for.
  bool quit = false;
  if (MakeOpenDocumentsEvent(files, &event) == noErr) DispatchAppleEvent(&event, &reply, quit);
  s_pLoopErrors = outerErrors;
  AEDisposeDesc(&event);
  AEDisposeDesc(&reply);
  return -1;
}

std::ostream& EventLoopErrorStream() {
  return s_pLoopErrors != nullptr ? *s_pLoopErrors : std::cerr;
}

void RunApplicationEventLoop() {
  const int status = RunEventLoop(CommandLineArguments(), std::cout, std::cerr);
  if (status < 0) return;
  std::cout.flush();
  std::exit(status);
}
