// MacTypes.h: the Mac's basic integer types, four-character codes and the status codes that the
// stand-in returns. Every other platform/ header builds on this one; it includes nothing of POSIX.
#pragma once

#include <cstdint>

typedef std::uint8_t UInt8;
typedef std::int8_t SInt8;
typedef std::uint16_t UInt16;
typedef std::int16_t SInt16;
typedef std::uint32_t UInt32;
typedef std::int32_t SInt32;
typedef std::uint64_t UInt64;
typedef std::int64_t SInt64;

typedef unsigned char Boolean;
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef FourCharCode ResType;
typedef UInt32 OptionBits;
typedef long Size;

// A byte count of one File Manager request. It is 32 bits wide, as on the system the code was
// written for, so a request for 4 GiB or more is cut to its low 32 bits.
typedef UInt32 ByteCount;
typedef UInt32 ItemCount;

typedef UInt16 UniChar;  // one UTF-16 code unit
typedef unsigned long UniCharCount;
typedef UInt32 TextEncoding;

typedef unsigned char* StringPtr;
typedef unsigned char Str255[256];  // length byte, then up to 255 bytes

struct Point {
  SInt16 v;
  SInt16 h;
};

struct Rect {
  SInt16 top;
  SInt16 left;
  SInt16 bottom;
  SInt16 right;
};

// The compiler refuses multi-character constants such as 'TEXT', so codes are spelled as strings:
// MakeFourCharCode("TEXT") is 0x54455854, the first character in the high byte.
constexpr FourCharCode MakeFourCharCode(const char (&code)[5]) {
  return (static_cast<FourCharCode>(static_cast<UInt8>(code[0])) << 24) |
         (static_cast<FourCharCode>(static_cast<UInt8>(code[1])) << 16) |
         (static_cast<FourCharCode>(static_cast<UInt8>(code[2])) << 8) |
         static_cast<FourCharCode>(static_cast<UInt8>(code[3]));
}

// Text encoding hints that File Manager calls take with a Unicode name. The stand-in reads every
// name as UTF-16 whatever the hint says.
enum : TextEncoding {
  kTextEncodingUnicodeDefault = 0x0100,
  kTextEncodingUnknown = 0xFFFF,
};

// Status codes. Constants rather than enumerators, so that they mix with computed statuses in
// conditional expressions.
inline constexpr OSErr noErr = 0;
inline constexpr OSErr dskFulErr = -34;  // no room left on the file system
inline constexpr OSErr nsvErr = -35;     // the reference is all zero or not one of this process
inline constexpr OSErr ioErr = -36;      // any failure without a closer code
inline constexpr OSErr bdNamErr = -37;   // empty, "/", NUL, "." or "..": no name
inline constexpr OSErr eofErr = -39;     // a read reached the end of the fork
inline constexpr OSErr posErr = -40;     // a position before the start of a fork
inline constexpr OSErr tmfoErr = -42;    // too many forks open
inline constexpr OSErr fnfErr = -43;    // no such file or folder, or the reference's object is gone
inline constexpr OSErr vLckdErr = -46;  // the file system is read-only
inline constexpr OSErr fBsyErr = -47;   // a folder that still holds objects cannot be deleted
inline constexpr OSErr dupFNErr = -48;  // an object of that name already exists
inline constexpr OSErr paramErr = -50;  // a null or out-of-range argument
inline constexpr OSErr rfNumErr = -51;  // not the number of an open fork
inline constexpr OSErr memFullErr = -108;           // out of memory
inline constexpr OSErr dirNFErr = -120;             // a folder was expected, or the folder is gone
inline constexpr OSErr notAFileErr = -1302;         // a file was expected, something else found
inline constexpr OSErr diffVolErr = -1303;          // the objects lie on different file systems
inline constexpr OSErr errFSForkNotFound = -1409;   // only the data fork exists
inline constexpr OSErr errFSNameTooLong = -1411;    // a name, or a path, longer than allowed
inline constexpr OSErr errFSRefsDifferent = -1420;  // other objects on the same file system
// The stand-in's own: a symbolic link that belongs to neither the user nor root, not followed.
inline constexpr OSErr untrustedLinkErr = -1450;
// The stand-in's own: no Trash can be found or made on the object's file system.
inline constexpr OSErr noTrashErr = -1451;
inline constexpr OSErr afpAccessDenied = -5000;  // permission denied
inline constexpr OSErr gestaltUndefSelectorErr = -5551;
inline constexpr OSStatus coreFoundationUnknownErr = -4960;
inline constexpr OSStatus kLSApplicationNotFoundErr = -10814;  // the URL opener failed
