// main.cpp: Kestrail's entry point. It answers the system's open-documents event, which installs
// the file it names, and quits.
#include "mac/Kestrail.h"

int main() {
  const OSErr status = AEInstallEventHandler(kCoreEventClass, kAEOpenDocuments,
                                             KestrailHandleOpenAppleEvent, 0, false);
  if (status != noErr) return status;
  RunApplicationEventLoop();
  return 0;
}
