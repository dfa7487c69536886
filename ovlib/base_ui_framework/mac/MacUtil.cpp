#include "ovlib/base_ui_framework/mac/MacUtil.h"

#include <boost/scoped_array.hpp>
#include <cstdio>
#include <memory>
#include <new>

#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "ovlib/general_framework/OVUtil.h"
#include "platform/CFHolder.h"
#include "platform/System.h"
#include "platform/Terminal.h"

namespace {

const char kSource[] = "ovlib/base_ui_framework/mac/MacUtil";

#define SUPPORT_TELEPHONE "1-800-555-0142"
#define SUPPORT_EMAIL "support@example.com"

// Mac Roman bytes; the text is ASCII, so any reading of it gives the same characters.
const char kReportMessage[] =
    "A bug has been detected in this filter.  Please report the information below to Orvelle "
    "at " SUPPORT_TELEPHONE " or " SUPPORT_EMAIL ".  Thanks!";

CFStringRef CreateReportExplanation(const char* file, unsigned int line, const char* function) {
  const char* const format = "Failure at line %d in file %s (function '%s')";
  const int length = std::snprintf(nullptr, 0, format, static_cast<int>(line), file, function);
  if (length < 0) return nullptr;
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), format, static_cast<int>(line), file, function);
  return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8);
}

// Shows one report alert with the current button texts and returns the item chosen, or 0 when
// the alert could not be shown.
DialogItemIndex RunReport(CFStringRef message, CFStringRef explanation,
                          const AlertStdCFStringAlertParamRec& params) {
  DialogRef alert;
  if (CreateStandardAlert(kAlertStopAlert, message, explanation, &params, &alert) != noErr)
    return 0;
  DialogItemIndex item = 0;
  if (RunStandardAlert(alert, nullptr, &item) != noErr) return 0;
  return item;
}

}  // namespace

int ReadDiskFileIntoBuffer(const OVFileSystemReference& file, std::vector<unsigned char>& buffer) {
  // A reference that names nothing is this program's fault; a file removed meanwhile is not.
  if (FSGetCatalogInfo(file, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == nsvErr)
    OV_AssertFailed(kSource, __LINE__, "ReadDiskFileIntoBuffer");
  HFSUniStr255 dataForkName;
  if (FSGetDataForkName(&dataForkName) != noErr) return -1;
  SInt16 fork;
  if (FSOpenFork(file, dataForkName.length, dataForkName.unicode, fsRdPerm, &fork) != noErr)
    return -1;
  SInt64 size;
  if (FSGetForkSize(fork, &size) != noErr) {
    FSCloseFork(fork);
    return -1;
  }
  buffer.resize(static_cast<std::size_t>(size));
  // One request of a 32-bit count: a file of 4 GiB or more never matches its size, and fails.
  ByteCount count = 0;
  const OSErr err =
      FSReadFork(fork, fsAtMark, 0, static_cast<ByteCount>(size), buffer.data(), &count);
  FSCloseFork(fork);
  return err == noErr && static_cast<SInt64>(count) == size ? 0 : -1;
}

int WriteBufferToDiskFile(const OVFileSystemReference& folder, const TString& name,
                          const std::vector<unsigned char>& buffer, bool overwrite,
                          OVFileSystemReference& newFile, const OVNewFileOptions& options) {
  const std::vector<UniChar> units = CreateUniCharVectorFromWString(name);
  const OSErr err = FSCreateTextFileUnicode(
      folder, units.size(), units.data(), overwrite, newFile,
      [&buffer](SInt16 fork) {
        OSErr writeErr =
            FSAllocateFork(fork, kFSAllocAllOrNothingMask, fsFromStart, 0, buffer.size(), nullptr);
        if (writeErr != noErr) return writeErr;
        const ByteCount size = static_cast<ByteCount>(buffer.size());
        ByteCount written = 0;
        writeErr = FSWriteFork(fork, fsAtMark, 0, size, buffer.data(), &written);
        // A buffer of 4 GiB or more does not fit one request; writing part of it is a failure.
        return writeErr == noErr && (written != size || size != buffer.size()) ? ioErr : writeErr;
      },
      options);
  return err == noErr ? 0 : -1;
}

FILE* FSRef_fopen(const FSRef* file, const char* mode) {
  UInt8 path[2048];
  if (FSRefMakePath(file, path, sizeof path) != noErr) return nullptr;
  return std::fopen(reinterpret_cast<const char*>(path), mode);
}

FILE* FSRefParentAndFilename_fopen(const FSRef* folder, const HFSUniStr255* name,
                                   const char* mode) {
  if (name == nullptr) return nullptr;
  FSRef file;
  const OSErr err =
      FSMakeFSRefUnicode(folder, name->length, name->unicode, kTextEncodingUnicodeDefault, &file);
  if (err == noErr) return FSRef_fopen(&file, mode);
  if (err != fnfErr) return nullptr;
  if (FSCreateTextFileUnicode(folder, name->length, name->unicode, false, &file) != noErr)
    return nullptr;
  return FSRef_fopen(&file, mode);
}

void OV_AssertFailed(const char* file, unsigned int line, const char* function) {
  static bool display_assertions = true;
  if (!display_assertions) return;
  AlertStdCFStringAlertParamRec params;
  if (GetStandardAlertDefaultParams(&params, kStdCFStringAlertVersionOne) != noErr) return;
  params.defaultText = CFSTR("Continue");
  params.cancelText = CFSTR("Debug");
  params.otherText = CFSTR("More Options");
  auto message = CFHold(
      CFStringCreateWithCString(kCFAllocatorDefault, kReportMessage, kCFStringEncodingMacRoman));
  auto explanation = CFHold(CreateReportExplanation(file, line, function));
  if (message == nullptr || explanation == nullptr) return;
  const CFStringRef messageText = message.get();
  const CFStringRef explanationText = explanation.get();
  switch (RunReport(messageText, explanationText, params)) {
    case kAlertStdAlertCancelButton:
      Debugger();
      break;
    case kAlertStdAlertOtherButton:
      params.cancelText = CFSTR("Ignore");
      params.otherText = CFSTR("Kill");
      switch (RunReport(messageText, explanationText, params)) {
        case kAlertStdAlertCancelButton:
          display_assertions = false;
          break;
        case kAlertStdAlertOtherButton:
          ExitToShell();
      }
      break;
  }
  // The report only informs: the caller goes on and fails the ordinary way.
}

void OV_WriteToConsole(const TString& text) {
  const std::string narrow = TerminalMessage(ConvertToCharString(text));
  std::fputs(narrow.c_str(), stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
}

std::vector<UniChar> CreateUniCharVectorFromWString(const TString& text) {
  // A character above U+FFFF keeps its low 16 bits and is not reported: such characters reach a
  // TString only from the user's own text (a character reference in a settings file, say), not
  // through a broken assumption of this program, so a report asking the user to tell the maker
  // about a bug would mislead; the result is the same either way.
  std::vector<UniChar> units(text.size());
  for (std::size_t i = 0; i < text.size(); ++i)
    units[i] = static_cast<UniChar>(static_cast<UInt32>(text[i]) & 0xFFFF);
  return units;
}

std::vector<UniChar> CreateUniCharVectorFromTString(const TString& text) {
  return CreateUniCharVectorFromWString(text);
}

CFStringRef CreateCFStringRefFromWString(const TString& text) {
  const std::vector<UniChar> units = CreateUniCharVectorFromWString(text);
  return CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                      static_cast<CFIndex>(units.size()));
}

CFStringRef CreateCFStringRefFromTString(const TString& text) {
  return CreateCFStringRefFromWString(text);
}

TString CreateWStringFromCFStringRef(CFStringRef string) {
  const CFIndex length = CFStringGetLength(string);
  if (length == 0) return TString();
  if (const UniChar* units = CFStringGetCharactersPtr(string))
    return TString(units, units + length);
  boost::scoped_array<UniChar> units(new (std::nothrow) UniChar[length]);
  if (!units) {
    OV_AssertFailed(kSource, __LINE__, "CreateWStringFromCFStringRef");
    return TString();
  }
  CFStringGetCharacters(string, CFRangeMake(0, length), units.get());
  return TString(units.get(), units.get() + length);
}

TString CreateTStringFromCFStringRef(CFStringRef string) {
  return CreateWStringFromCFStringRef(string);
}

TString CreateWStringFromUniCharArray(UniChar* units, unsigned long count) {
  auto string =
      CFHold(CFStringCreateWithCharacters(kCFAllocatorDefault, units, static_cast<CFIndex>(count)));
  if (string == nullptr) return TString();
  return CreateWStringFromCFStringRef(string.get());
}

TString CreateTStringFromUniCharArray(UniChar* units, unsigned long count) {
  return CreateWStringFromUniCharArray(units, count);
}

std::string ConvertWideCharStringToCharString(const TString& text) {
  auto string = CFHold(CreateCFStringRefFromTString(text));
  if (string == nullptr) return std::string();
  return CreateStringFromCFStringRef(string.get());
}

std::string CreateStringFromCFStringRef(CFStringRef string) {
  const CFStringEncoding encoding = GetApplicationTextEncoding();
  if (const char* bytes = CFStringGetCStringPtr(string, encoding)) return bytes;
  const CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string) + 1, encoding);
  boost::scoped_array<char> buffer(size > 0 ? new (std::nothrow) char[size] : nullptr);
  if (!buffer) {
    OV_AssertFailed(kSource, __LINE__, "CreateStringFromCFStringRef");
    return std::string();
  }
  if (!CFStringGetCString(string, buffer.get(), size, encoding)) return std::string();
  return buffer.get();
}

std::string CreateStringFromUniCharArray(UniChar* units, unsigned long count) {
  auto string =
      CFHold(CFStringCreateWithCharacters(kCFAllocatorDefault, units, static_cast<CFIndex>(count)));
  if (string == nullptr) return std::string();
  return CreateStringFromCFStringRef(string.get());
}

CFStringRef CreateCFStringRefFromString(const std::string& text) {
  return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingASCII);
}

TString ConvertCharStringToWideCharString(const std::string& text) {
  auto string = CFHold(CreateCFStringRefFromString(text));
  if (string == nullptr) return TString();
  return CreateWStringFromCFStringRef(string.get());
}

TString CreateTStringFromUTF8(const std::string& bytes) {
  auto string =
      CFHold(CFStringCreateWithCString(kCFAllocatorDefault, bytes.c_str(), kCFStringEncodingUTF8));
  return string != nullptr ? CreateWStringFromCFStringRef(string.get()) : TString();
}

OSErr CreateTStringFromPathCall(const std::function<OSErr(UInt8* path, UInt32 size)>& call,
                                TString& path) {
  std::vector<UInt8> bytes(4096);
  OSErr err;
  while ((err = call(bytes.data(), static_cast<UInt32>(bytes.size()))) == paramErr &&
         bytes.size() < (1u << 20))
    bytes.resize(bytes.size() * 4);
  if (err == noErr) path = CreateTStringFromUTF8(reinterpret_cast<const char*>(bytes.data()));
  return err;
}

std::vector<UniChar> CreateUniCharVectorFromString(const std::string& text) {
  return CreateUniCharVectorFromWString(ConvertCharStringToWideCharString(text));
}

int CopyWStringToStr255(const TString& text, unsigned char* str255) {
  auto string = CFHold(CreateCFStringRefFromWString(text));
  if (string == nullptr) return -1;
  return CFStringGetPascalString(string.get(), str255, 255, kCFStringEncodingUnicode) ? 0 : -1;
}

OSStatus SetControlTitleWithTString(ControlRef control, const TString& title) {
  auto string = CFHold(CreateCFStringRefFromTString(title));
  if (string == nullptr) return paramErr;
  return SetControlTitleWithCFString(control, string.get());
}

OSStatus SetControlTitleWithInt(ControlRef control, int value) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%d", value);
  const CFStringRef text =
      CFStringCreateWithCString(kCFAllocatorDefault, digits, kCFStringEncodingASCII);
  if (text == nullptr) return paramErr;
  auto holder = CFHold(text);
  // The edit text data is the string reference itself, so its size is a pointer's.
  return SetControlData(control, kControlEntireControl, kControlEditTextCFStringTag, sizeof text,
                        &text);
}

OSStatus GetControlTitleAsInt(ControlRef control, int& value) {
  CFStringRef text = nullptr;
  const OSErr err = GetControlData(control, kControlEntireControl, kControlEditTextCFStringTag,
                                   sizeof text, &text, nullptr);
  if (err != noErr) return err;
  auto holder = CFHold(text);
  value = CFStringGetIntValue(text);
  return noErr;
}

int OpenURL(const TString& url) {
  auto text = CFHold(CreateCFStringRefFromTString(url));
  if (text == nullptr) return -1;
  auto address = CFHold(CFURLCreateWithString(kCFAllocatorDefault, text.get(), nullptr));
  if (address == nullptr) return -1;
  return LSOpenCFURLRef(address.get(), nullptr) == noErr ? 0 : -1;
}

OSStatus LoadFrameworkBundle(CFStringRef frameworkName, CFBundleRef* bundle) {
  if (bundle == nullptr) {
    // Going on would write through the null pointer.
    OV_AssertFailed(kSource, __LINE__, "LoadFrameworkBundle");
    return paramErr;
  }
  *bundle = nullptr;
  FSRef frameworksFolder;
  const OSErr err =
      FSFindFolder(kOnAppropriateDisk, kFrameworksFolderType, kCreateFolder, &frameworksFolder);
  if (err != noErr) return err;
  auto folderURL = CFHold(CFURLCreateFromFSRef(kCFAllocatorSystemDefault, &frameworksFolder));
  if (folderURL == nullptr) return coreFoundationUnknownErr;
  auto bundleURL = CFHold(CFURLCreateCopyAppendingPathComponent(
      kCFAllocatorSystemDefault, folderURL.get(), frameworkName, false));
  if (bundleURL == nullptr) return coreFoundationUnknownErr;
  auto made = CFHold(CFBundleCreate(kCFAllocatorSystemDefault, bundleURL.get()));
  *bundle = made != nullptr && CFBundleLoadExecutable(made.get()) ? made.release() : nullptr;
  return *bundle != nullptr ? noErr : coreFoundationUnknownErr;
}

bool MacOSVersionNumberAtLeast(long version) {
  SInt32 response;
  if (Gestalt(gestaltSystemVersion, &response) != noErr) return false;
  return response >= version;
}

bool MacOSXOrLaterPresent() { return MacOSVersionNumberAtLeast(0x1000); }
