// CoreFoundation.h: reference-counted strings of UTF-16 units, file and web URLs, framework
// bundles and the application's localized texts, as far as the library's conversions, messages
// and framework loading use them.
// Objects returned by a Create... or Copy... call are the caller's to CFRelease; null is failure.
#pragma once

#include "platform/MacTypes.h"

struct FSRef;

typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef UInt32 CFStringEncoding;
typedef const void* CFTypeRef;
typedef CFTypeRef CFPropertyListRef;
typedef const struct CFAllocatorObject* CFAllocatorRef;
typedef const struct CFStringObject* CFStringRef;
typedef const struct CFURLObject* CFURLRef;
typedef struct CFBundleObject* CFBundleRef;

struct CFRange {
  CFIndex location;
  CFIndex length;
};

inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return CFRange{location, length}; }

// The stand-in has one allocator; both names stand for it.
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;
inline constexpr CFAllocatorRef kCFAllocatorSystemDefault = nullptr;

enum : CFIndex { kCFNotFound = -1 };

enum : CFStringEncoding {
  kCFStringEncodingMacRoman = 0,
  kCFStringEncodingUnicode = 0x0100,  // UTF-16 units in host byte order
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingUTF8 = 0x08000100,
};

// Drops one reference; the object is freed with the last. Null is ignored, and so are the
// constant strings that CFSTR returns.
void CFRelease(CFTypeRef object);

// A constant string for a literal: made once per distinct text, never freed. Literals are read
// as UTF-8.
#define CFSTR(text) CFStringMakeConstantString("" text "")
CFStringRef CFStringMakeConstantString(const char* text);

// The stand-in's own marks of the keys of the main bundle's texts, which xgettext collects into
// the translators' template (resources/locale/kestrail.pot): CFSTR_LOCALIZABLE is CFSTR for a key,
// LOCALIZABLE_TEXT the literal itself for a key kept as a C string until it is looked up. Other
// literals are never translated, whatever they say: folder names and preference keys among them.
#define CFSTR_LOCALIZABLE(key) CFSTR(key)
#define LOCALIZABLE_TEXT(key) key
// The two keys of a text that says a number: the singular and the plural English text, the two
// first arguments of CFBundleCopyLocalizedStringForCount.
#define CFSTR_LOCALIZABLE_PLURAL(key, pluralKey) CFSTR(key), CFSTR(pluralKey)

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters,
                                         CFIndex count);

// Decodes `count` bytes in UTF-8, ASCII or Mac Roman. Any byte sequence that is not well-formed in
// the encoding gives null: there is no partial string and no replacement character. For UTF-8 a
// leading byte-order mark is dropped. `isExternalRepresentation` must be false.
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);

// The same for a zero-terminated string.
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding);

CFIndex CFStringGetLength(CFStringRef string);

// Copies the units of `range`, which must lie inside the string.
void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer);

// The string's own units for a string made from units; null for one decoded from bytes, whose
// units must then be copied with CFStringGetCharacters.
const UniChar* CFStringGetCharactersPtr(CFStringRef string);

// Always null: the stand-in keeps no zero-terminated byte form to lend out.
const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);

// The most bytes that `length` units can take in `encoding`, kCFNotFound on overflow.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

// Writes the whole string and a terminating zero into `buffer`; false, with nothing promised about
// `buffer`, when a unit has no form in the encoding or the result does not fit.
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);

// The same as a length-prefixed string: a length byte, then the bytes. kCFStringEncodingUnicode
// writes two bytes per unit. False when the bytes exceed `bufferSize` - 1 or 255.
Boolean CFStringGetPascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize,
                                CFStringEncoding encoding);

// The decimal number at the start of the string, after optional white space and sign; 0 when
// there is none.
SInt32 CFStringGetIntValue(CFStringRef string);

enum CFURLPathStyle { kCFURLPOSIXPathStyle = 0 };

// A file URL ("file:///a/b", with a trailing slash for a folder) for a valid reference.
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* ref);

// Parses a URL; null when the text holds characters that a URL may not hold or a broken escape.
// `baseURL` must be null.
CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef text, CFURLRef baseURL);

// `url` with `component` appended to its path, escaped as needed.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef component, Boolean isDirectory);

// The unescaped path of a file URL, without a trailing slash except for "/"; null for other URLs.
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);

// A bundle for the folder that a file URL names; null when there is no such folder.
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);

// Loads the bundle's executable: the shared object inside the bundle folder named like the folder
// without its extension ("Name.framework/Name"). Releasing the bundle unloads it.
Boolean CFBundleLoadExecutable(CFBundleRef bundle);

// The application's own bundle, which is never released. Its localized texts are gettext
// catalogs of the text domain "kestrail" in share/locale beside the executable's folder (so
// <prefix>/bin/kestrail reads <prefix>/share/locale), or in $KESTRAIL_LOCALEDIR when that is set.
CFBundleRef CFBundleGetMainBundle();

// A new string: the main bundle's text for `key` in the user's language (from the locale
// environment), else its English text, else `value`, or `key` when `value` is null or empty.
// Other bundles have no texts. `tableName` is ignored: a bundle has one table.
CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef tableName);

// The stand-in's own call, for a text that says a number: the main bundle's text for `key` (the
// singular English text) and `pluralKey` in the form that the user's language uses for `count`,
// as catalogs with plural forms keep it; untranslated, `key` for 1 and `pluralKey` otherwise. A
// new string; null for a null key.
CFStringRef CFBundleCopyLocalizedStringForCount(CFStringRef key, CFStringRef pluralKey,
                                                unsigned long count);

// What kind of object `object` is: strings, URLs, bundles and each kind of preference value
// (number, boolean, array, dictionary, date, data) have identifiers of their own.
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFStringGetTypeID();

// A copy of the value of `key` in the preferences of `applicationID`, read from the user's
// preferences file $XDG_CONFIG_HOME/<applicationID>.plist ($HOME/.config when unset), an XML
// property list. Values keep their types. Null when the file is missing or malformed, or holds no
// such key; also when it is no regular file of at most 1 MiB or cannot be read, which one line on
// standard error says.
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
