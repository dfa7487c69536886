// Navigation.h: Navigation Services' choose-folder dialog. The dialog is shown by the dialog
// backend of DialogBackend.h and is modal for the whole application, whatever modality the
// options ask for: it is finished when NavDialogRun returns.
#pragma once

#include "platform/AppleEvents.h"
#include "platform/CoreFoundation.h"
#include "platform/MacTypes.h"

typedef UInt32 WindowModality;
typedef struct OpaqueWindowPtr* WindowRef;
typedef struct OpaqueNavDialog* NavDialogRef;
typedef UInt32 NavUserAction;
typedef struct OpaqueNavEventProc* NavEventUPP;                // never called: pass null
typedef struct OpaqueNavObjectFilterProc* NavObjectFilterUPP;  // never called: pass null

enum : WindowModality {
  kWindowModalityNone = 0,
  kWindowModalitySystemModal = 1,
  kWindowModalityAppModal = 2,
  kWindowModalityWindowModal = 3,
};

enum : NavUserAction {
  kNavUserActionNone = 0,  // the dialog has not been run
  kNavUserActionCancel = 1,
  kNavUserActionChoose = 4,
};

enum : UInt16 { kNavDialogCreationOptionsVersion = 0 };

// The options the application sets. Only `message` reaches the user.
struct NavDialogCreationOptions {
  UInt16 version;
  CFStringRef message;
  UInt32 preferenceKey;     // no effect: nothing is remembered from one dialog to the next
  WindowModality modality;  // no effect: every dialog is application-modal
  WindowRef parentWindow;
};

struct NavReplyRecord {
  UInt16 version;
  Boolean validRecord;   // false unless the user chose a folder
  AEDescList selection;  // the chosen folder as one typeFSRef item
};

// No message, no parent window, application-modal.
OSStatus NavGetDefaultDialogCreationOptions(NavDialogCreationOptions* outOptions);

// A dialog that asks for one folder; the caller disposes of it with NavDialogDispose. The
// message is copied. `inOptions` may be null for the defaults.
OSStatus NavCreateChooseFolderDialog(const NavDialogCreationOptions* inOptions,
                                     NavEventUPP inEventProc, NavObjectFilterUPP inFilterProc,
                                     void* inClientData, NavDialogRef* outDialog);

// Shows the dialog and returns when the user has chosen a folder or cancelled.
OSStatus NavDialogRun(NavDialogRef inDialog);

// What the user did in the last run.
NavUserAction NavDialogGetUserAction(NavDialogRef inDialog);

// The reply of the last run, which the caller disposes of with NavDisposeReply. After a cancel
// the record is not valid and its selection is empty; the error of FSPathMakeRef when the chosen
// folder has gone since.
OSStatus NavDialogGetReply(NavDialogRef inDialog, NavReplyRecord* outReply);

OSStatus NavDisposeReply(NavReplyRecord* inReply);

void NavDialogDispose(NavDialogRef inDialog);
