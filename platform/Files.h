// Files.h: the File Manager and Folder Manager calls of the library: references to existing files
// and folders, catalog information, creating, renaming, replacing, moving and deleting objects,
// data forks, and the user's Application Support folder. Every call returns a status code of
// MacTypes.h.
//
// A reference names one existing object by its file system identity, so two references compare
// equal however their object was reached. A folder's reference holds that folder from the moment
// it is found: calls inside it reach it wherever it is moved, and swapping a folder on the way for
// a link or another folder changes nothing of where they go. Any other object's reference stays
// valid while the object keeps its name in its folder: once it is deleted, replaced, renamed or
// moved, calls with the old reference fail. Names are UTF-16 units here and UTF-8 on disk; a name
// is one path component and can never reach outside the folder it is given to.
#pragma once

#include "platform/CoreFoundation.h"
#include "platform/MacTypes.h"

// 80 opaque bytes; all zero names nothing.
struct FSRef {
  UInt8 hidden[80];
};

struct FSSpec;  // never filled in by the stand-in: pass null wherever one is asked for

struct HFSUniStr255 {
  UInt16 length;
  UniChar unicode[255];
};

typedef SInt16 FSVolumeRefNum;
typedef UInt32 FSCatalogInfoBitmap;

enum : FSCatalogInfoBitmap {
  kFSCatInfoNone = 0x0000,
  kFSCatInfoNodeFlags = 0x0002,
  kFSCatInfoVolume = 0x0004,
  kFSCatInfoNodeID = 0x0010,
  kFSCatInfoContentMod = 0x0040,
  kFSCatInfoFinderInfo = 0x0800,
  kFSCatInfoFinderXInfo = 0x1000,
  kFSCatInfoDataSizes = 0x4000,
};

// A moment: seconds since 1904-01-01 UTC in 48 bits, and 1/65536ths of a second.
struct UTCDateTime {
  UInt16 highSeconds;
  UInt32 lowSeconds;
  UInt16 fraction;
};

enum : UInt16 { kFSNodeIsDirectoryMask = 0x0010 };

enum : UInt32 { fsRtDirID = 2 };  // node ID of the root folder "/"

// The catalog fields the library reads. Finder information is kept in host byte order, in the
// layout of the structs below: the file ones for a file, the folder ones for a folder.
struct FSCatalogInfo {
  UInt16 nodeFlags;
  FSVolumeRefNum volume;       // one number per mounted file system
  UInt32 nodeID;               // fsRtDirID for "/"; otherwise derived from the inode number
  UTCDateTime contentModDate;  // when the data fork was last written
  UInt8 finderInfo[16];
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize;   // the data fork's length in bytes
  UInt64 dataPhysicalSize;  // the space it takes on disk
};

struct FileInfo {
  OSType fileType;
  OSType fileCreator;
  UInt16 finderFlags;
  Point location;
  UInt16 reservedField;
};

struct FolderInfo {
  Rect windowBounds;
  UInt16 finderFlags;
  Point location;
  UInt16 reservedField;
};

struct ExtendedFileInfo {
  SInt16 reserved1[4];
  UInt16 extendedFinderFlags;
  SInt16 reserved2;
  SInt32 putAwayFolderID;
};

struct ExtendedFolderInfo {
  Point scrollPosition;
  SInt32 reserved1;
  UInt16 extendedFinderFlags;
  SInt16 reserved2;
  SInt32 putAwayFolderID;
};

// Resolves a POSIX path, relative ones from the working directory, following every symbolic
// link, the last one included. `isDirectory` may be null.
OSErr FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

// The object's absolute POSIX path in UTF-8 as it is now, zero-terminated; paramErr when it does
// not fit.
OSErr FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 maxPathSize);

// The object `name` inside the folder `parentRef`. A symbolic link there is named itself, not
// followed. fnfErr: no such object; dirNFErr: `parentRef` is no folder or is gone; bdNamErr: the
// name may not be used; errFSNameTooLong: it is longer than a name can be.
OSErr FSMakeFSRefUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                         TextEncoding textEncodingHint, FSRef* newRef);

// Reads the fields of `whichInfo` (kFSCatInfoNodeFlags, Volume, NodeID, ContentMod, FinderInfo,
// FinderXInfo, DataSizes)
// into `catalogInfo`, the object's name into `outName` and its folder into `parentRef`; each of
// them may be null. The root folder's name is empty and its parent a reference of zeros. Finder
// information that the file system does not keep reads as zeros. `fsSpec` must be null.
OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef);

// noErr when both name the same object; diffVolErr or errFSRefsDifferent when they do not; the
// error of an invalid reference otherwise.
OSErr FSCompareFSRefs(const FSRef* ref1, const FSRef* ref2);

// Create a new file or folder `name` in `parentRef`; dupFNErr when the name is taken. Of the
// catalog information only kFSCatInfoFinderInfo and kFSCatInfoFinderXInfo can be set; on file
// systems that keep no extended attributes the object is made without them. `newRef` may be
// null; `newSpec` must be null.
OSErr FSCreateFileUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                          FSRef* newRef, FSSpec* newSpec);
OSErr FSCreateDirectoryUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                               FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                               FSRef* newRef, FSSpec* newSpec, UInt32* newDirID);

// Creates an empty file in `parentRef` under a hidden name of its own, ".kestrail-unfinished-"
// then the process and a random part, for data that is to replace an object there
// (FSReplaceObject) or take a free name (FSRenameUnicode) once it is whole. No other call accepts
// a name of that form, so such a file never passes for anything else. Until it is renamed or
// deleted, the process removes it if SIGHUP, SIGINT or SIGTERM ends it; such files in the folder
// older than ten minutes, left by a process that was killed outright, are removed first. At most
// kMostTemporaryFiles exist at once (tmfoErr beyond). Finder information as for
// FSCreateFileUnicode. The stand-in's own call: the real system keeps such files in a temporary
// folder of the volume.
inline constexpr int kMostTemporaryFiles = 256;
OSErr FSCreateTemporaryFile(const FSRef* parentRef, FSCatalogInfoBitmap whichInfo,
                            const FSCatalogInfo* catalogInfo, FSRef* newRef);

// When `theRef` names a symbolic link, makes it name what the link leads to, following every link
// on the way, and sets `wasAliased`; `targetIsFolder` tells whether the result is a folder. A link
// that belongs to neither the user nor root is not followed (untrustedLinkErr): someone else put it
// there, and it could lead anywhere they choose. fnfErr for a link that leads nowhere.
OSErr FSResolveAliasFile(FSRef* theRef, Boolean resolveAliasChains, Boolean* targetIsFolder,
                         Boolean* wasAliased);

// Deletes a file, a link or an empty folder (fBsyErr when it is not empty). An object that
// FSMoveObjectToTrashSync put in the Trash takes its record there with it.
OSErr FSDeleteObject(const FSRef* ref);

enum : OptionBits {
  kFSFileOperationDefaultOptions = 0,
  // The stand-in's own: the object also stays where it is, the same file under a second name in
  // the Trash, until something replaces it there (FSReplaceObject). So a file about to be
  // replaced is in the Trash before its name changes hands, and at its place until then.
  kFSFileOperationLeaveSourceInPlace = 0x10000,
};

// Moves the object to the user's Trash and puts it, there, in `target` (which may be null): the
// home Trash when it lies on the file system of the user's data folder, else that file system's
// own ("/.Trash/UID" where the administrator made one, else "/.Trash-UID", made when missing).
// The Trash records the object's path and the moment, so that a file manager puts it back; the
// record and the object are durable when the call returns. A name taken in the Trash gets ".2",
// ".3", ... noTrashErr (the stand-in's own status) when no Trash can be found or made there (the
// system's own file systems, such as a tmpfs, have none, as on the desktop), or the file system
// cannot give a file a second name.
OSStatus FSMoveObjectToTrashSync(const FSRef* source, FSRef* target, OptionBits options);

// The stand-in's own call: whether FSMoveObjectToTrashSync finds or makes a Trash for the object,
// so that a question can say beforehand when an object would be deleted for good instead.
Boolean FSCanMoveObjectToTrash(const FSRef* ref);

// Renames the object where it is; dupFNErr when the name is taken, even by an object that appears
// while the call runs. `newRef` may be null. The new name is durable when the call returns.
OSErr FSRenameUnicode(const FSRef* ref, UniCharCount nameLength, const UniChar* name,
                      TextEncoding textEncodingHint, FSRef* newRef);

// Moves the object, keeping its name, into `destDirectory` on the same file system (diffVolErr
// otherwise); dupFNErr when the name is taken there. `newRef` may be null.
OSErr FSMoveObject(const FSRef* ref, const FSRef* destDirectory, FSRef* newRef);

enum : OptionBits {
  kFSReplaceObjectDefaultOptions = 0,
  kFSReplaceObjectReplaceMetadata = 0x01,  // the replacement keeps its own type, creator and dates
};

// Puts `replacementObject` in the place of `originalObject` in one step, under the original's
// name, and puts the result in `resultObject` (which may be null); readers of the folder see the
// original or the replacement, never neither. Both must lie on one file system (diffVolErr). The
// replacement keeps its own metadata whatever `flags` say; `newName`, `temporaryName` and
// `temporaryDirectory` must be null (no backups). fnfErr when either object is gone. The change
// is durable when the call returns.
OSStatus FSReplaceObject(const FSRef* originalObject, const FSRef* replacementObject,
                         CFStringRef newName, CFStringRef temporaryName,
                         const FSRef* temporaryDirectory, OptionBits flags, FSRef* resultObject);

// Makes everything written to the volume durable, the names in its folders included.
OSErr FSFlushVolume(FSVolumeRefNum vRefNum);

// The stand-in's own calls, for many files that take their names at once. Between the two,
// FSRenameUnicode, FSMoveObject and FSReplaceObject leave the folders they change unflushed, and
// FSEndDeferredFolderFlush then flushes each of them once. Whoever defers has made the renamed
// files' data durable first (FSFlushVolume): a name that outlives a crash must never lead to a
// file whose data did not.
void FSBeginDeferredFolderFlush();
void FSEndDeferredFolderFlush();

// Forks. Only the data fork exists; its name is empty. A fork number stays valid until
// FSCloseFork.
enum : SInt8 { fsCurPerm = 0, fsRdPerm = 1, fsWrPerm = 2, fsRdWrPerm = 3 };

enum : UInt16 {
  fsAtMark = 0,
  fsFromStart = 1,
  fsFromLEOF = 2,
  fsFromMark = 3,
  noCacheMask = 0x0020,  // accepted and ignored: the stand-in reads and writes through the cache
};

OSErr FSGetDataForkName(HFSUniStr255* dataForkName);

// Opens the data fork of a file (notAFileErr for a folder, a named pipe, a socket or a device,
// without waiting on any of them). fsWrPerm and fsRdWrPerm neither create nor truncate.
OSErr FSOpenFork(const FSRef* ref, UniCharCount forkNameLength, const UniChar* forkName,
                 SInt8 permissions, SInt16* forkRefNum);
OSErr FSCloseFork(SInt16 forkRefNum);
OSErr FSGetForkSize(SInt16 forkRefNum, SInt64* forkSize);
OSErr FSSetForkSize(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset);
OSErr FSSetForkPosition(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset);

typedef UInt16 FSAllocationFlags;
enum : FSAllocationFlags {
  kFSAllocDefaultFlags = 0x0000,
  kFSAllocAllOrNothingMask = 0x0001,  // the stand-in always reserves all or nothing
};

// Reserves disk space for `requestCount` bytes from the position given, without changing the
// fork's length, so that writing them cannot run out of room; dskFulErr when they do not fit.
// Where the file system cannot reserve space, noErr with an `actualCount` of 0. `actualCount` may
// be null.
OSErr FSAllocateFork(SInt16 forkRefNum, FSAllocationFlags flags, UInt16 positionMode,
                     SInt64 positionOffset, UInt64 requestCount, UInt64* actualCount);

// Makes everything written to the fork durable.
OSErr FSFlushFork(SInt16 forkRefNum);

// Reads or writes `requestCount` bytes at the position that `positionMode` and `positionOffset`
// give; the fork's mark then follows the last byte. A read that meets the end of the fork
// returns eofErr with the bytes it got. `actualCount` may be null.
OSErr FSReadFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                 ByteCount requestCount, void* buffer, ByteCount* actualCount);
OSErr FSWriteFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                  ByteCount requestCount, const void* buffer, ByteCount* actualCount);

// Folder Manager.
enum : FSVolumeRefNum {
  kOnSystemDisk = -32768,
  kOnAppropriateDisk = -32767,
  kUserDomain = -32763,
};

enum : OSType {
  kApplicationSupportFolderType = MakeFourCharCode("asup"),
  kFrameworksFolderType = MakeFourCharCode("fram"),
};

enum : Boolean { kDontCreateFolder = 0, kCreateFolder = 1 };

// The user's data folders; the three domains above all mean the current user:
//   kApplicationSupportFolderType: $XDG_DATA_HOME, or $HOME/.local/share when that is unset;
//   kFrameworksFolderType: the folder "Frameworks" inside it.
// With kCreateFolder the folder and any missing folder above it are made. fnfErr for another
// folder type or when neither variable gives an absolute path.
OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder,
                   FSRef* foundRef);

// Where FSFindFolder finds or makes the folder, as an absolute POSIX path in UTF-8 whether or not
// it exists: for telling the user which folder could not be made. fnfErr as for FSFindFolder;
// paramErr when the path does not fit. The stand-in's own call: the real folders always exist.
OSErr FSFindFolderPath(FSVolumeRefNum vRefNum, OSType folderType, UInt8* path, UInt32 maxPathSize);
