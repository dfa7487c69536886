// MacUtil.h: the platform utilities: whole-file buffers, assertion reports, and conversions
// between TStrings and the platform's UTF-16 units and CFStrings, with a few platform
// conveniences (control titles, opening a URL, loading a framework, system version tests).
// Statuses are 0 or -1 unless a routine says it returns the platform's.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "platform/CoreFoundation.h"
#include "platform/Dialogs.h"
#include "platform/Files.h"
#include "xmlparser/TString.h"

// Whole-file buffers.

// The whole data fork of `file`; afterwards `buffer` holds exactly the file's bytes. A reference
// that names nothing is also reported through OV_AssertFailed.
int ReadDiskFileIntoBuffer(const OVFileSystemReference& file, std::vector<unsigned char>& buffer);

// Creates the file `name` in `folder` holding exactly `buffer`, typed 'TEXT' with creator four
// spaces, and puts it in `newFile`. The file is written whole under a temporary name and then
// takes the name in one step: with `overwrite` it takes the place of an object of that name,
// without it the name must be free. A write that fails leaves the folder as it was. `options` as
// for OVFileSystemReference::Copy.
int WriteBufferToDiskFile(const OVFileSystemReference& folder, const TString& name,
                          const std::vector<unsigned char>& buffer, bool overwrite,
                          OVFileSystemReference& newFile, const OVNewFileOptions& options = {});

// Assertion reports.

// Reports a failed check in a stop alert naming `file`, `line` and `function`, and returns when
// the user has answered, unless the user chooses to end the process. Once the user has chosen
// "Ignore", later reports are dropped.
void OV_AssertFailed(const char* file, unsigned int line, const char* function);

// Writes `text` and a line end to standard error, as a terminal may show it (TerminalMessage).
void OV_WriteToConsole(const TString& text);

// Conversions. A TString character becomes one UTF-16 unit (its low 16 bits) and a unit one
// character: surrogate pairs are neither made nor joined.

std::vector<UniChar> CreateUniCharVectorFromWString(const TString& text);
std::vector<UniChar> CreateUniCharVectorFromTString(const TString& text);

// New strings that the caller releases; null on failure.
CFStringRef CreateCFStringRefFromWString(const TString& text);
CFStringRef CreateCFStringRefFromTString(const TString& text);

// `string` must not be null.
TString CreateWStringFromCFStringRef(CFStringRef string);
TString CreateTStringFromCFStringRef(CFStringRef string);

TString CreateWStringFromUniCharArray(UniChar* units, unsigned long count);
TString CreateTStringFromUniCharArray(UniChar* units, unsigned long count);

// Narrow strings are in the application's text encoding (GetApplicationTextEncoding) when made
// from platform strings, and are read as ASCII when made into them; text that does not convert
// gives an empty result.
std::string ConvertWideCharStringToCharString(const TString& text);
std::string CreateStringFromCFStringRef(CFStringRef string);
CFStringRef CreateCFStringRefFromString(const std::string& text);
TString ConvertCharStringToWideCharString(const std::string& text);
// UTF-8 bytes, such as a path from the platform; empty when they are not well-formed.
TString CreateTStringFromUTF8(const std::string& bytes);

// The path that `call` writes as zero-terminated UTF-8 into the buffer it is given, as text. Paths
// have no length limit once folders are held, so the buffer grows, up to 1 MiB, while the call
// answers paramErr for one too small. The call's last status.
OSErr CreateTStringFromPathCall(const std::function<OSErr(UInt8* path, UInt32 size)>& call,
                                TString& path);

// Routines that neither kestrail nor kestrail-pack calls. They belong to the library and stay, but
// nothing in the applications rests on them, nor on the stand-in calls that exist only for them
// (platform/README.md), and no test proves them: whoever first calls one gives it a test.

// A standard I/O stream on the file, or null.
FILE* FSRef_fopen(const FSRef* file, const char* mode);

// The same for `name` in `folder`, which is first created (typed 'TEXT', creator four spaces)
// when missing.
FILE* FSRefParentAndFilename_fopen(const FSRef* folder, const HFSUniStr255* name, const char* mode);

// The narrow conversions above, from and to UTF-16 units.
std::string CreateStringFromUniCharArray(UniChar* units, unsigned long count);
std::vector<UniChar> CreateUniCharVectorFromString(const std::string& text);

// `text` as a length-prefixed string of UTF-16 units, two bytes each in host order, in the
// caller's Str255: at most 127 units fit.
int CopyWStringToStr255(const TString& text, unsigned char* str255);

// Control titles; the platform's status, paramErr when the string cannot be made.
OSStatus SetControlTitleWithTString(ControlRef control, const TString& title);
OSStatus SetControlTitleWithInt(ControlRef control, int value);
OSStatus GetControlTitleAsInt(ControlRef control, int& value);

// Hands the URL to the desktop's opener; 0 only when it was opened.
int OpenURL(const TString& url);

// Loads the framework bundle `frameworkName` from the frameworks folder and puts it in `bundle`,
// which the caller releases; on failure `bundle` is null and the status is the folder search's,
// or coreFoundationUnknownErr.
OSStatus LoadFrameworkBundle(CFStringRef frameworkName, CFBundleRef* bundle);

// Whether the system version (BCD, such as 0x1040) is at least `version`.
bool MacOSVersionNumberAtLeast(long version);
bool MacOSXOrLaterPresent();
