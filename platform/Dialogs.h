// Dialogs.h: standard alerts and the control-title calls. An alert is shown by the dialog backend
// of DialogBackend.h (text on a terminal, or a script in tests); this header is all the code above
// platform/ sees of it.
#pragma once

#include <vector>

#include "platform/CoreFoundation.h"
#include "platform/MacTypes.h"

typedef SInt16 AlertType;
typedef SInt16 DialogItemIndex;
typedef struct OpaqueDialogPtr* DialogRef;
typedef struct OpaqueModalFilterProc* ModalFilterUPP;  // always null: there are no event filters

enum : AlertType {
  kAlertStopAlert = 0,
  kAlertNoteAlert = 1,
  kAlertCautionAlert = 2,
};

// Button items: the button of `defaultText` is item 1, of `cancelText` item 2, of `otherText`
// item 3, whichever of them answers Return or Escape.
enum : DialogItemIndex {
  kAlertStdAlertOKButton = 1,
  kAlertStdAlertCancelButton = 2,
  kAlertStdAlertOtherButton = 3,
};

enum : UInt32 { kStdCFStringAlertVersionOne = 1 };
enum : UInt16 { kWindowDefaultPosition = 0 };

// Button texts that stand for the standard labels "OK", "Cancel" and "Don't Save".
inline const CFStringRef kAlertDefaultOKText = reinterpret_cast<CFStringRef>(-1L);
inline const CFStringRef kAlertDefaultCancelText = reinterpret_cast<CFStringRef>(-1L);
inline const CFStringRef kAlertDefaultOtherText = reinterpret_cast<CFStringRef>(-1L);

struct AlertStdCFStringAlertParamRec {
  UInt32 version;
  Boolean movable;
  Boolean helpButton;
  CFStringRef defaultText;  // null also means the standard OK label: an alert needs a button
  CFStringRef cancelText;   // null: no such button
  CFStringRef otherText;    // null: no such button
  SInt16 defaultButton;     // the item that Return (an empty answer) chooses
  SInt16 cancelButton;      // the item that Escape chooses, or 0
  UInt16 position;
  OptionBits flags;
};

// One OK button that is also the default; no cancel or other button.
OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamRec* param, UInt32 version);

// Makes an alert from copies of the texts, so the caller may release them at once. `explanation`
// and `param` may be null. paramErr when the default or cancel item names no button.
OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec* param, DialogRef* outAlert);

// The stand-in's own call, for one answer given to many questions: a check box titled `title` under
// the alert's texts, checked at first when `*value` is true. RunStandardAlert leaves in `*value`
// the state the user left it in, so `value` must last until then. paramErr for a null argument.
OSStatus SetStandardAlertCheckBox(DialogRef alert, CFStringRef title, Boolean* value);

// Shows the alert, waits for the answer and disposes of the alert, as the real call does.
OSStatus RunStandardAlert(DialogRef inAlert, ModalFilterUPP filterProc,
                          DialogItemIndex* outItemHit);

// A control reduced to what the title calls touch: one text, which is both its title and its
// edit text (the 'cfst' data of part 0). The caller owns the record: `OpaqueControlRef control;`.
struct OpaqueControlRef {
  std::vector<UniChar> m_text;
};
typedef OpaqueControlRef* ControlRef;
typedef SInt16 ControlPartCode;

enum : ResType { kControlEditTextCFStringTag = MakeFourCharCode("cfst") };
enum : ControlPartCode { kControlEntireControl = 0 };

OSStatus SetControlTitleWithCFString(ControlRef control, CFStringRef title);

// The 'cfst' data is a CFStringRef (`size` is sizeof(CFStringRef)): set copies the string's
// text, get returns a new string that the caller releases. paramErr for other parts, tags or
// sizes.
OSErr SetControlData(ControlRef control, ControlPartCode part, ResType tagName, Size size,
                     const void* data);
OSErr GetControlData(ControlRef control, ControlPartCode part, ResType tagName, Size bufferSize,
                     void* buffer, Size* actualSize);
