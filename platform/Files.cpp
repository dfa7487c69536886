// Files.cpp: references, catalog information, and creating, renaming, moving and deleting objects.
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "platform/DiskBackend.h"
#include "platform/internal/PosixFiles.h"
#include "platform/internal/Unicode.h"

namespace {

// What the 80 bytes of an FSRef hold. The marker tells a reference of this process from zeros.
struct ReferenceBytes {
  UInt32 m_nMarker;
  UInt32 m_nPathIndex;
  UInt64 m_nDevice;
  UInt64 m_nInode;
  SInt64 m_nBirthSeconds;
  UInt32 m_nBirthNanoseconds;
  UInt32 m_bHasBirthTime;
};
static_assert(sizeof(ReferenceBytes) <= sizeof(FSRef), "a reference must fit in an FSRef");

const UInt32 kReferenceMarker = MakeFourCharCode("KsRf");

// References carry an index into this table rather than a path, which would not fit in 80 bytes.
// Each path is stored once; entries are never removed, as references may be copied anywhere and
// live as long as the process.
class PathTable {
 public:
  UInt32 Intern(const std::string& path) {
    auto found = m_mapIndices.find(path);
    if (found != m_mapIndices.end()) return found->second;
    m_vecPaths.push_back(path);
    const UInt32 index = static_cast<UInt32>(m_vecPaths.size() - 1);
    m_mapIndices.emplace(path, index);
    return index;
  }
  const std::string* Find(UInt32 index) const {
    return index < m_vecPaths.size() ? &m_vecPaths[index] : nullptr;
  }

 private:
  std::vector<std::string> m_vecPaths;
  std::unordered_map<std::string, UInt32> m_mapIndices;
};

PathTable& Paths() {
  static PathTable* table = new PathTable;  // never destroyed: references outlive statics
  return *table;
}

// Volume numbers stand for devices, numbered as first met: -1, -2, ...
FSVolumeRefNum VolumeOf(UInt64 device) {
  static auto* volumes = new std::unordered_map<UInt64, FSVolumeRefNum>;
  auto found = volumes->find(device);
  if (found != volumes->end()) return found->second;
  const FSVolumeRefNum volume = static_cast<FSVolumeRefNum>(-1 - static_cast<int>(volumes->size()));
  volumes->emplace(device, volume);
  return volume;
}

std::string ParentPath(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::string LastComponent(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string JoinPath(const std::string& folder, const std::string& component) {
  return folder == "/" ? "/" + component : folder + "/" + component;
}

// The time of the last change to the object's data, in the File Manager's form.
UTCDateTime ModificationDate(const ObjectOnDisk& object) {
  const SInt64 kSecondsFrom1904To1970 = 2082844800;
  const UInt64 seconds = static_cast<UInt64>(object.m_nModifiedSeconds + kSecondsFrom1904To1970);
  UTCDateTime date;
  date.highSeconds = static_cast<UInt16>(seconds >> 32);
  date.lowSeconds = static_cast<UInt32>(seconds);
  date.fraction = static_cast<UInt16>((UInt64{object.m_nModifiedNanoseconds} << 16) / 1000000000);
  return date;
}

// The object of a reference given as a folder: dirNFErr when it is gone or is no folder.
OSErr ResolveFolder(const FSRef* ref, ObjectOnDisk& folder) {
  const OSErr err = ResolveReference(ref, folder);
  if (err == fnfErr || (err == noErr && !folder.m_bIsDirectory)) return dirNFErr;
  return err;
}

// The path of `name` inside `folder`, after refusing names that are empty, longer than 255
// units, not valid UTF-16, hold '/' or NUL, are "." or "..", or have the form of a temporary
// file's: bdNamErr.
OSErr ChildPath(const ObjectOnDisk& folder, UniCharCount nameLength, const UniChar* name,
                std::string& path) {
  if (nameLength == 0 || nameLength > 255) return bdNamErr;
  if (name == nullptr) return paramErr;
  for (UniCharCount i = 0; i < nameLength; ++i)
    if (name[i] == 0 || name[i] == '/') return bdNamErr;
  std::string component;
  if (!EncodeUtf8(name, nameLength, component)) return bdNamErr;
  if (component == "." || component == ".." || IsTemporaryName(component)) return bdNamErr;
  path = JoinPath(folder.m_strPath, component);
  return noErr;
}

// The path of `name` inside the folder `parentRef`.
OSErr PathInFolder(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                   std::string& path) {
  ObjectOnDisk parent;
  const OSErr err = ResolveFolder(parentRef, parent);
  return err != noErr ? err : ChildPath(parent, nameLength, name, path);
}

// Finder information lives in one 32-byte extended attribute: the 16 bytes of FileInfo or
// FolderInfo, then the 16 of their extended forms, every field big-endian. The widths say how to
// turn each of the four layouts into host byte order and back.
const char kFinderInfoAttribute[] = "user.com.apple.FinderInfo";
const int kFileInfoWidths[] = {4, 4, 2, 2, 2, 2, 0};
const int kFolderInfoWidths[] = {2, 2, 2, 2, 2, 2, 2, 2, 0};
const int kExtendedFileInfoWidths[] = {2, 2, 2, 2, 2, 2, 4, 0};
const int kExtendedFolderInfoWidths[] = {2, 2, 4, 2, 2, 4, 0};

// Converts 16 bytes between big-endian and host order field by field; the same step serves both
// ways, since swapping is its own inverse.
void SwapFields(const int* widths, const UInt8* from, UInt8* to) {
  for (; *widths != 0; from += *widths, to += *widths, ++widths) {
    if (*widths == 2) {
      const UInt16 value = static_cast<UInt16>((from[0] << 8) | from[1]);
      std::memcpy(to, &value, 2);
    } else {
      const UInt32 value = (static_cast<UInt32>(from[0]) << 24) |
                           (static_cast<UInt32>(from[1]) << 16) |
                           (static_cast<UInt32>(from[2]) << 8) | from[3];
      std::memcpy(to, &value, 4);
    }
  }
}

void HostToBigEndian(const int* widths, const UInt8* from, UInt8* to) {
  for (; *widths != 0; from += *widths, to += *widths, ++widths) {
    UInt32 value = 0;
    if (*widths == 2) {
      UInt16 field;
      std::memcpy(&field, from, 2);
      value = field;
    } else {
      std::memcpy(&value, from, 4);
    }
    for (int i = 0; i < *widths; ++i) to[i] = static_cast<UInt8>(value >> (8 * (*widths - 1 - i)));
  }
}

void ReadFinderInfo(const ObjectOnDisk& object, FSCatalogInfo& info) {
  std::memset(info.finderInfo, 0, sizeof info.finderInfo);
  std::memset(info.extFinderInfo, 0, sizeof info.extFinderInfo);
  UInt8 raw[32];
  // A missing attribute, or a file system (or link) without them, reads as zeros.
  if (lgetxattr(object.m_strPath.c_str(), kFinderInfoAttribute, raw, sizeof raw) != sizeof raw)
    return;
  const bool folder = object.m_bIsDirectory;
  SwapFields(folder ? kFolderInfoWidths : kFileInfoWidths, raw, info.finderInfo);
  SwapFields(folder ? kExtendedFolderInfoWidths : kExtendedFileInfoWidths, raw + 16,
             info.extFinderInfo);
}

// 0 or an errno value. File systems without extended attributes still get the object.
int WriteFinderInfo(const std::string& path, bool folder, FSCatalogInfoBitmap whichInfo,
                    const FSCatalogInfo& info) {
  UInt8 raw[32] = {};
  if (whichInfo & kFSCatInfoFinderInfo)
    HostToBigEndian(folder ? kFolderInfoWidths : kFileInfoWidths, info.finderInfo, raw);
  if (whichInfo & kFSCatInfoFinderXInfo)
    HostToBigEndian(folder ? kExtendedFolderInfoWidths : kExtendedFileInfoWidths,
                    info.extFinderInfo, raw + 16);
  if (lsetxattr(path.c_str(), kFinderInfoAttribute, raw, sizeof raw, 0) == 0) return 0;
  return errno == ENOTSUP || errno == EOPNOTSUPP ? 0 : errno;
}

// The catalog information that the create calls can set: Finder information only.
bool CanSetOnCreation(FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo) {
  const FSCatalogInfoBitmap finder = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;
  return (whichInfo & ~finder) == 0 && (whichInfo == 0 || catalogInfo != nullptr);
}

// Where the create calls make `name` in `parentRef`, once their arguments are checked.
OSErr CreationPath(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                   FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo, FSSpec* newSpec,
                   std::string& path) {
  if (!CanSetOnCreation(whichInfo, catalogInfo) || newSpec != nullptr) return paramErr;
  return PathInFolder(parentRef, nameLength, name, path);
}

// What the create calls share: making the object at `path` with `make`, giving it its Finder
// information and handing out its reference. An object that cannot be finished is removed again.
template <typename Make>
OSErr CreateObject(const std::string& path, FSCatalogInfoBitmap whichInfo,
                   const FSCatalogInfo* catalogInfo, FSRef* newRef, bool folder,
                   ObjectOnDisk& created, Make make) {
  if (!make(path)) return MacErrorFromErrno(errno);
  int error = whichInfo != 0 ? WriteFinderInfo(path, folder, whichInfo, *catalogInfo) : 0;
  if (error == 0) error = LookAtPath(path, created);
  if (error != 0) {
    if (folder)
      rmdir(path.c_str());
    else
      unlink(path.c_str());
    return MacErrorFromErrno(error);
  }
  if (newRef != nullptr) MakeReference(created, newRef);
  return noErr;
}

bool CreateFile(const std::string& path) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  return fd >= 0 && close(fd) == 0;
}

// Makes the names in `folder` durable. A failure is not passed on: it comes after the change,
// which stands and cannot be taken back, and a crash then leaves the folder as it was before the
// change or after it, never in between.
void FlushFolder(const std::string& folder) {
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ActiveDiskBackend().Flush(fd);
  close(fd);
}

// Gives the object at `from` the path `to` in one step, over an object there only with `replace`
// (dupFNErr otherwise), and flushes the folders involved.
OSErr RenameAndFlush(const std::string& from, const std::string& to, bool replace) {
  const int error = ActiveDiskBackend().Rename(from.c_str(), to.c_str(), replace);
  if (error != 0) return MacErrorFromErrno(error);
  if (IsTemporaryName(LastComponent(from))) ForgetTemporaryFile(from);
  FlushFolder(ParentPath(to));
  if (ParentPath(from) != ParentPath(to)) FlushFolder(ParentPath(from));
  return noErr;
}

// Looks again at a renamed or moved object and hands out its new reference.
OSErr ReferToPath(const std::string& path, FSRef* newRef) {
  ObjectOnDisk object;
  const int error = LookAtPath(path, object);
  if (error != 0) return MacErrorFromErrno(error);
  if (newRef != nullptr) MakeReference(object, newRef);
  return noErr;
}

// Moves `object` to `path`, which must lie on the file system `device` (diffVolErr otherwise),
// over an object there only with `replace`, and hands out its new reference.
OSErr MoveObjectTo(const ObjectOnDisk& object, UInt64 device, const std::string& path, bool replace,
                   FSRef* newRef) {
  if (object.m_strPath == "/") return paramErr;
  if (object.m_nDevice != device) return diffVolErr;
  const OSErr err =
      path != object.m_strPath ? RenameAndFlush(object.m_strPath, path, replace) : noErr;
  return err != noErr ? err : ReferToPath(path, newRef);
}

}  // namespace

OSErr MacErrorFromErrno(int error) {
  switch (error) {
    case 0:
      return noErr;
    case ENOENT:
      return fnfErr;
    case ENOTDIR:
      return dirNFErr;
    case EEXIST:
      return dupFNErr;
    case ENOTEMPTY:
      return fBsyErr;
    case EACCES:
    case EPERM:
      return afpAccessDenied;
    case EROFS:
      return vLckdErr;
    case ENOSPC:
    case EDQUOT:
      return dskFulErr;
    case ENAMETOOLONG:
      return bdNamErr;
    case EXDEV:
      return diffVolErr;
    case EISDIR:
      return notAFileErr;
    case EMFILE:
    case ENFILE:
      return tmfoErr;
    case ENOMEM:
      return memFullErr;
    case EINVAL:
      return paramErr;
    case EBADF:
      return rfNumErr;
    default:
      return ioErr;
  }
}

int LookAtPath(const std::string& path, ObjectOnDisk& object) {
  struct statx status;
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME,
            &status) != 0)
    return errno;
  object.m_strPath = path;
  object.m_nDevice = makedev(status.stx_dev_major, status.stx_dev_minor);
  object.m_nInode = status.stx_ino;
  object.m_bHasBirthTime = (status.stx_mask & STATX_BTIME) != 0;
  object.m_nBirthSeconds = object.m_bHasBirthTime ? status.stx_btime.tv_sec : 0;
  object.m_nBirthNanoseconds = object.m_bHasBirthTime ? status.stx_btime.tv_nsec : 0;
  object.m_bIsDirectory = S_ISDIR(status.stx_mode);
  object.m_bIsRegularFile = S_ISREG(status.stx_mode);
  object.m_nSize = status.stx_size;
  object.m_nAllocated = status.stx_blocks * 512;
  object.m_nModifiedSeconds = status.stx_mtime.tv_sec;
  object.m_nModifiedNanoseconds = status.stx_mtime.tv_nsec;
  return 0;
}

void MakeReference(const ObjectOnDisk& object, FSRef* ref) {
  ReferenceBytes bytes = {kReferenceMarker,       Paths().Intern(object.m_strPath),
                          object.m_nDevice,       object.m_nInode,
                          object.m_nBirthSeconds, object.m_nBirthNanoseconds,
                          object.m_bHasBirthTime};
  std::memset(ref, 0, sizeof *ref);
  std::memcpy(ref->hidden, &bytes, sizeof bytes);
}

OSErr ResolveReference(const FSRef* ref, ObjectOnDisk& object) {
  if (ref == nullptr) return paramErr;
  ReferenceBytes bytes;
  std::memcpy(&bytes, ref->hidden, sizeof bytes);
  const std::string* path =
      bytes.m_nMarker == kReferenceMarker ? Paths().Find(bytes.m_nPathIndex) : nullptr;
  if (path == nullptr) return nsvErr;
  const int error = LookAtPath(*path, object);
  // Whatever stands in the way of the path (the object or a folder above it gone), the object
  // the reference was made for is not there.
  if (error == ENOENT || error == ENOTDIR) return fnfErr;
  if (error != 0) return MacErrorFromErrno(error);
  const bool same = object.m_nDevice == bytes.m_nDevice && object.m_nInode == bytes.m_nInode &&
                    object.m_bHasBirthTime == (bytes.m_bHasBirthTime != 0) &&
                    object.m_nBirthSeconds == bytes.m_nBirthSeconds &&
                    object.m_nBirthNanoseconds == bytes.m_nBirthNanoseconds;
  return same ? noErr : fnfErr;
}

OSErr FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
  if (path == nullptr || ref == nullptr) return paramErr;
  char* resolved = realpath(reinterpret_cast<const char*>(path), nullptr);
  if (resolved == nullptr) return MacErrorFromErrno(errno);
  ObjectOnDisk object;
  const int error = LookAtPath(resolved, object);
  std::free(resolved);
  if (error != 0) return MacErrorFromErrno(error);
  MakeReference(object, ref);
  if (isDirectory != nullptr) *isDirectory = object.m_bIsDirectory;
  return noErr;
}

OSErr FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 maxPathSize) {
  ObjectOnDisk object;
  const OSErr err = ResolveReference(ref, object);
  if (err != noErr) return err;
  if (path == nullptr || object.m_strPath.size() + 1 > maxPathSize) return paramErr;
  std::memcpy(path, object.m_strPath.c_str(), object.m_strPath.size() + 1);
  return noErr;
}

OSErr FSMakeFSRefUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                         TextEncoding, FSRef* newRef) {
  if (newRef == nullptr) return paramErr;
  std::string path;
  const OSErr err = PathInFolder(parentRef, nameLength, name, path);
  return err != noErr ? err : ReferToPath(path, newRef);
}

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef) {
  if (fsSpec != nullptr || (whichInfo != kFSCatInfoNone && catalogInfo == nullptr)) return paramErr;
  ObjectOnDisk object;
  const OSErr err = ResolveReference(ref, object);
  if (err != noErr) return err;
  const bool root = object.m_strPath == "/";
  if (outName != nullptr) {
    const std::string component = root ? std::string() : LastComponent(object.m_strPath);
    std::vector<UniChar> units;
    // A name written by another program may not be UTF-8, or may need more than 255 units; the
    // interface has no form for it.
    if (!DecodeUtf8(reinterpret_cast<const UInt8*>(component.data()), component.size(), units) ||
        units.size() > 255)
      return bdNamErr;
    outName->length = static_cast<UInt16>(units.size());
    std::copy(units.begin(), units.end(), outName->unicode);
  }
  if (parentRef != nullptr) {
    if (root) {
      std::memset(parentRef, 0, sizeof *parentRef);
    } else {
      const OSErr parentErr = ReferToPath(ParentPath(object.m_strPath), parentRef);
      if (parentErr != noErr) return parentErr;
    }
  }
  if (catalogInfo != nullptr && whichInfo != kFSCatInfoNone) {
    if (whichInfo & kFSCatInfoNodeFlags)
      catalogInfo->nodeFlags = object.m_bIsDirectory ? kFSNodeIsDirectoryMask : 0;
    if (whichInfo & kFSCatInfoVolume) catalogInfo->volume = VolumeOf(object.m_nDevice);
    if (whichInfo & kFSCatInfoNodeID) {
      // Node IDs below 16 are reserved; only the root may have one (fsRtDirID).
      const UInt32 inode = static_cast<UInt32>(object.m_nInode);
      catalogInfo->nodeID = root ? UInt32(fsRtDirID) : inode < 16 ? inode + 16 : inode;
    }
    if (whichInfo & kFSCatInfoContentMod) catalogInfo->contentModDate = ModificationDate(object);
    if (whichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo))
      ReadFinderInfo(object, *catalogInfo);
    if (whichInfo & kFSCatInfoDataSizes) {
      catalogInfo->dataLogicalSize = object.m_bIsDirectory ? 0 : object.m_nSize;
      catalogInfo->dataPhysicalSize = object.m_bIsDirectory ? 0 : object.m_nAllocated;
    }
  }
  return noErr;
}

OSErr FSCompareFSRefs(const FSRef* ref1, const FSRef* ref2) {
  ObjectOnDisk first, second;
  OSErr err = ResolveReference(ref1, first);
  if (err == noErr) err = ResolveReference(ref2, second);
  if (err != noErr) return err;
  if (first.m_nDevice != second.m_nDevice) return diffVolErr;
  return first.m_nInode == second.m_nInode ? noErr : errFSRefsDifferent;
}

OSErr FSCreateFileUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                          FSRef* newRef, FSSpec* newSpec) {
  std::string path;
  const OSErr err =
      CreationPath(parentRef, nameLength, name, whichInfo, catalogInfo, newSpec, path);
  if (err != noErr) return err;
  ObjectOnDisk created;
  return CreateObject(path, whichInfo, catalogInfo, newRef, false, created, CreateFile);
}

OSErr FSCreateDirectoryUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                               FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                               FSRef* newRef, FSSpec* newSpec, UInt32* newDirID) {
  std::string path;
  OSErr err = CreationPath(parentRef, nameLength, name, whichInfo, catalogInfo, newSpec, path);
  if (err != noErr) return err;
  ObjectOnDisk created;
  err = CreateObject(path, whichInfo, catalogInfo, newRef, true, created,
                     [](const std::string& path) { return mkdir(path.c_str(), 0777) == 0; });
  if (err == noErr && newDirID != nullptr) {
    const UInt32 inode = static_cast<UInt32>(created.m_nInode);
    *newDirID = inode < 16 ? inode + 16 : inode;
  }
  return err;
}

OSErr FSCreateTemporaryFile(const FSRef* parentRef, FSCatalogInfoBitmap whichInfo,
                            const FSCatalogInfo* catalogInfo, FSRef* newRef) {
  if (!CanSetOnCreation(whichInfo, catalogInfo)) return paramErr;
  ObjectOnDisk folder;
  OSErr err = ResolveFolder(parentRef, folder);
  if (err != noErr) return err;
  RemoveStaleTemporaryFiles(folder.m_strPath);
  // The name is marked before the file exists, so that no moment passes in which a signal would
  // leave the file behind.
  const std::string path = JoinPath(folder.m_strPath, NewTemporaryName());
  if (!RememberTemporaryFile(path)) return tmfoErr;
  ObjectOnDisk created;
  err = CreateObject(path, whichInfo, catalogInfo, newRef, false, created, CreateFile);
  if (err != noErr) ForgetTemporaryFile(path);
  return err;
}

OSErr FSDeleteObject(const FSRef* ref) {
  ObjectOnDisk object;
  const OSErr err = ResolveReference(ref, object);
  if (err != noErr) return err;
  const int result =
      object.m_bIsDirectory ? rmdir(object.m_strPath.c_str()) : unlink(object.m_strPath.c_str());
  if (result != 0) return errno == EEXIST ? fBsyErr : MacErrorFromErrno(errno);
  if (IsTemporaryName(LastComponent(object.m_strPath))) ForgetTemporaryFile(object.m_strPath);
  return noErr;
}

OSErr FSRenameUnicode(const FSRef* ref, UniCharCount nameLength, const UniChar* name, TextEncoding,
                      FSRef* newRef) {
  ObjectOnDisk object;
  OSErr err = ResolveReference(ref, object);
  if (err != noErr) return err;
  if (object.m_strPath == "/") return paramErr;
  ObjectOnDisk parent;
  parent.m_strPath = ParentPath(object.m_strPath);
  std::string path;
  err = ChildPath(parent, nameLength, name, path);
  return err != noErr ? err : MoveObjectTo(object, object.m_nDevice, path, false, newRef);
}

OSErr FSMoveObject(const FSRef* ref, const FSRef* destDirectory, FSRef* newRef) {
  ObjectOnDisk object, destination;
  OSErr err = ResolveReference(ref, object);
  if (err == noErr) err = ResolveFolder(destDirectory, destination);
  if (err != noErr) return err;
  const std::string path = JoinPath(destination.m_strPath, LastComponent(object.m_strPath));
  return MoveObjectTo(object, destination.m_nDevice, path, false, newRef);
}

OSStatus FSReplaceObject(const FSRef* originalObject, const FSRef* replacementObject,
                         CFStringRef newName, CFStringRef temporaryName,
                         const FSRef* temporaryDirectory, OptionBits flags, FSRef* resultObject) {
  if (newName != nullptr || temporaryName != nullptr || temporaryDirectory != nullptr ||
      (flags & ~kFSReplaceObjectReplaceMetadata) != 0)
    return paramErr;
  ObjectOnDisk original, replacement;
  OSErr err = ResolveReference(originalObject, original);
  if (err == noErr) err = ResolveReference(replacementObject, replacement);
  if (err != noErr) return err;
  // One object under two names: a rename between them would change nothing.
  if (original.m_nDevice == replacement.m_nDevice && original.m_nInode == replacement.m_nInode)
    return paramErr;
  return MoveObjectTo(replacement, original.m_nDevice, original.m_strPath, true, resultObject);
}
