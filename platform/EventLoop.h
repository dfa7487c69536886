// EventLoop.h: how the application event loop meets the command line: the application's reader
// of it (the stand-in's own call), building the open-documents event of a list of paths, handing
// an event to its handler, and the loop itself over given arguments and streams, for the tests.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/AppleEvents.h"

// The application's reading of its command line: given the arguments after the program's name
// and the standard output and error streams, it puts the files to open into `files` and returns
// -1, or returns the status the process is to end with (having answered or said why). The usage,
// the help and the version are the application's own. Without a reader every argument is a file.
typedef int (*CommandLineReader)(const std::vector<std::string>& arguments, std::ostream& out,
                                 std::ostream& err, std::vector<std::string>& files);
void SetCommandLineReader(CommandLineReader reader);

// The name the program was started under, without its folder: what the stand-in's own messages
// begin with.
std::string ProgramName();

// An open-documents event whose direct object lists `paths` as typeFileURL items, in order.
// Relative paths are taken from the working directory; nothing is checked yet: a missing file
// shows when its item is asked for as a typeFSRef.
OSErr MakeOpenDocumentsEvent(const std::vector<std::string>& paths, AppleEvent* event);

// The event's class and ID; paramErr for a descriptor that is no Apple event.
OSErr GetEventClassAndID(const AppleEvent* event, AEEventClass& eventClass, AEEventID& eventID);

// Hands `event` to the handler installed for its class and ID and returns the handler's status;
// errAEEventNotHandled when none is installed. `quit` tells whether the handler called
// QuitApplicationEventLoop.
OSErr DispatchAppleEvent(const AppleEvent* event, AppleEvent* reply, bool& quit);

// What RunApplicationEventLoop does for the arguments after the program name, with `out` and
// `err` for standard output and standard error. Returns the status the process is to end with
// when the command line reader ends it, or -1 once the open-documents event has been handled.
int RunEventLoop(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

// Where the stand-in says why a file cannot be had: the error stream of the running loop, or
// standard error outside a loop.
std::ostream& EventLoopErrorStream();
