// EventLoop.cpp: the handler table and the application event loop, fed by the command line.
#include "platform/EventLoop.h"

#include <errno.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

struct InstalledHandler {
  AEEventHandlerUPP m_pHandler;
  long m_nRefcon;
};

std::map<std::pair<AEEventClass, AEEventID>, InstalledHandler> s_mapHandlers;
bool s_bQuitRequested = false;
std::ostream* s_pLoopErrors = nullptr;

CommandLineReader s_pReader = nullptr;

// The arguments after the program name, as the kernel keeps them: each ends with a zero byte.
std::vector<std::string> CommandLineArguments() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  std::vector<std::string> arguments;
  for (std::string argument; std::getline(in, argument, '\0');) arguments.push_back(argument);
  if (!arguments.empty()) arguments.erase(arguments.begin());
  return arguments;
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

void SetCommandLineReader(CommandLineReader reader) { s_pReader = reader; }

std::string ProgramName() { return program_invocation_short_name; }

int RunEventLoop(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  std::vector<std::string> files = arguments;
  if (s_pReader != nullptr) {
    files.clear();
    const int status = s_pReader(arguments, out, err, files);
    if (status >= 0) return status;
  }
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
