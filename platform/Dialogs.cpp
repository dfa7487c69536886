// Dialogs.cpp: standard alerts handed to the active dialog backend, and the control records.
#include "platform/Dialogs.h"

#include <cstring>
#include <string>
#include <vector>

#include "platform/DialogBackend.h"
#include "platform/internal/CFObject.h"

struct OpaqueDialogPtr {
  AlertDescription m_alert;
  Boolean* m_pCheckBoxValue = nullptr;
};

namespace {

// Adds the button of one text slot: null is no button, except for the default slot, and the
// standard-label marker (the same value for all three slots) is the slot's standard label, in the
// user's language.
void AddButton(CFStringRef text, const char* standardLabel, DialogItemIndex item,
               AlertDescription& alert) {
  if (text == nullptr && item != kAlertStdAlertOKButton) return;
  const bool standard = text == nullptr || text == kAlertDefaultOKText;
  alert.m_vecButtons.push_back({standard ? LocalizedText(standardLabel) : DisplayText(text), item});
}

bool HasButton(const AlertDescription& alert, DialogItemIndex item) {
  for (const AlertDescription::Button& button : alert.m_vecButtons)
    if (button.m_nItem == item) return true;
  return false;
}

bool IsTitleData(ControlRef control, ControlPartCode part, ResType tagName) {
  return control != nullptr && part == kControlEntireControl &&
         tagName == kControlEditTextCFStringTag;
}

}  // namespace

OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamRec* param, UInt32 version) {
  if (param == nullptr || version != kStdCFStringAlertVersionOne) return paramErr;
  *param = AlertStdCFStringAlertParamRec{};
  param->version = version;
  param->defaultText = kAlertDefaultOKText;
  param->defaultButton = kAlertStdAlertOKButton;
  param->position = kWindowDefaultPosition;
  return noErr;
}

OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec* param, DialogRef* outAlert) {
  if (outAlert == nullptr || error == nullptr) return paramErr;
  AlertStdCFStringAlertParamRec defaults;
  if (param == nullptr) {
    GetStandardAlertDefaultParams(&defaults, kStdCFStringAlertVersionOne);
    param = &defaults;
  }
  AlertDescription alert;
  alert.m_nKind = alertType;
  alert.m_strMessage = DisplayText(error);
  if (explanation != nullptr) alert.m_strExplanation = DisplayText(explanation);
  // Translators: the standard titles of an alert's buttons.
  AddButton(param->defaultText, LOCALIZABLE_TEXT("OK"), kAlertStdAlertOKButton, alert);
  AddButton(param->cancelText, LOCALIZABLE_TEXT("Cancel"), kAlertStdAlertCancelButton, alert);
  // Translators: the standard title of the button that closes a document without saving it.
  AddButton(param->otherText, LOCALIZABLE_TEXT("Don't Save"), kAlertStdAlertOtherButton, alert);
  alert.m_nDefaultItem = param->defaultButton;
  alert.m_nCancelItem = param->cancelButton;
  if (!HasButton(alert, alert.m_nDefaultItem) ||
      (alert.m_nCancelItem != 0 && !HasButton(alert, alert.m_nCancelItem)))
    return paramErr;
  *outAlert = new OpaqueDialogPtr{std::move(alert)};
  return noErr;
}

OSStatus SetStandardAlertCheckBox(DialogRef alert, CFStringRef title, Boolean* value) {
  if (alert == nullptr || title == nullptr || value == nullptr) return paramErr;
  alert->m_alert.m_strCheckBox = DisplayText(title);
  alert->m_alert.m_bChecked = *value;
  alert->m_pCheckBoxValue = value;
  return noErr;
}

OSStatus RunStandardAlert(DialogRef inAlert, ModalFilterUPP, DialogItemIndex* outItemHit) {
  if (inAlert == nullptr) return paramErr;
  const DialogItemIndex item = ActiveDialogBackend().RunAlert(inAlert->m_alert);
  if (inAlert->m_pCheckBoxValue != nullptr)
    *inAlert->m_pCheckBoxValue = inAlert->m_alert.m_bChecked;
  delete inAlert;
  if (outItemHit != nullptr) *outItemHit = item;
  return noErr;
}

OSStatus SetControlTitleWithCFString(ControlRef control, CFStringRef title) {
  if (control == nullptr || title == nullptr) return paramErr;
  control->m_text = title->m_units;
  return noErr;
}

OSErr SetControlData(ControlRef control, ControlPartCode part, ResType tagName, Size size,
                     const void* data) {
  if (!IsTitleData(control, part, tagName) || size != sizeof(CFStringRef) || data == nullptr)
    return paramErr;
  CFStringRef text;
  std::memcpy(&text, data, sizeof text);
  if (text == nullptr) return paramErr;
  control->m_text = text->m_units;
  return noErr;
}

OSErr GetControlData(ControlRef control, ControlPartCode part, ResType tagName, Size bufferSize,
                     void* buffer, Size* actualSize) {
  if (!IsTitleData(control, part, tagName)) return paramErr;
  if (actualSize != nullptr) *actualSize = sizeof(CFStringRef);
  if (buffer == nullptr) return noErr;  // a question about the size only
  if (bufferSize < static_cast<Size>(sizeof(CFStringRef))) return paramErr;
  const CFStringRef text = CFStringCreateWithCharacters(
      kCFAllocatorDefault, control->m_text.data(), static_cast<CFIndex>(control->m_text.size()));
  std::memcpy(buffer, &text, sizeof text);
  return noErr;
}
