// System.h: questions about the system (Gestalt, the application's text encoding), handing a URL
// to the desktop, and the debugger and process calls of assertion reports.
#pragma once

#include "platform/CoreFoundation.h"
#include "platform/Files.h"
#include "platform/MacTypes.h"

enum : OSType {
  gestaltSystemVersion = MakeFourCharCode("sysv"),
  gestaltFindFolderAttr = MakeFourCharCode("fold"),
};

// Bits of the gestaltFindFolderAttr answer.
enum { gestaltFolderMgrPresent = 0, gestaltFolderMgrSupportsDomains = 4 };

// gestaltSystemVersion answers 0x1049 in BCD (system 10.4.9); gestaltFindFolderAttr answers that
// the Folder Manager is present and supports domains. Any other selector: gestaltUndefSelectorErr.
OSErr Gestalt(OSType selector, SInt32* response);

// The encoding of the application's narrow strings: kCFStringEncodingUTF8, as file names and
// terminals use here.
TextEncoding GetApplicationTextEncoding();

// Runs the desktop's opener, xdg-open, on the URL and waits for it; noErr when it reports success,
// kLSApplicationNotFoundErr when it is missing or fails. `outLaunchedURL` must be null.
OSStatus LSOpenCFURLRef(CFURLRef url, CFURLRef* outLaunchedURL);

// The stand-in's own calls for showing installed files where the user finds them. Whether items
// can be shown: there is a desktop, whose windows the alerts use; on a terminal, printed paths
// are the way to them.
Boolean LSCanRevealItems();

// Opens the file manager with the `count` items selected: org.freedesktop.FileManager1.ShowItems
// on the session bus; where nothing answers there, the first item's folder, opened with the
// desktop's default handler for folders. Items that are gone are left out (fnfErr when all are);
// kLSApplicationNotFoundErr when neither way serves.
OSStatus LSRevealItems(const FSRef* items, ItemCount count);

// Stops in the debugger when one is attached; otherwise says so on standard error and returns.
void Debugger();

// Ends the process at once with a failure status, after flushing standard I/O.
[[noreturn]] void ExitToShell();
