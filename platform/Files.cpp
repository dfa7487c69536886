// Files.cpp: references, catalog information, and creating, renaming, moving and deleting objects.
// Every call works inside a held folder, by one name there (PosixFiles.h).
#include "platform/Files.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <unordered_map>
#include <vector>

#include "platform/DiskBackend.h"
#include "platform/internal/FinderInfo.h"
#include "platform/internal/PosixFiles.h"
#include "platform/internal/Unicode.h"

namespace {

// Volume numbers stand for devices, numbered as first met: -1, -2, ...
std::unordered_map<UInt64, FSVolumeRefNum>& Volumes() {
  static auto* volumes = new std::unordered_map<UInt64, FSVolumeRefNum>;
  return *volumes;
}

FSVolumeRefNum VolumeOf(UInt64 device) {
  auto found = Volumes().find(device);
  if (found != Volumes().end()) return found->second;
  const FSVolumeRefNum volume =
      static_cast<FSVolumeRefNum>(-1 - static_cast<int>(Volumes().size()));
  Volumes().emplace(device, volume);
  return volume;
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

// Node IDs below 16 are reserved; only the root may have one (fsRtDirID).
UInt32 NodeID(const ObjectOnDisk& object) {
  if (IsRoot(object)) return fsRtDirID;
  const UInt32 inode = static_cast<UInt32>(object.m_identity.m_nInode);
  return inode < 16 ? inode + 16 : inode;
}

// The one component on disk that `name` stands for, after refusing names that are empty, hold '/'
// or NUL, are not valid UTF-16, are "." or "..", or begin as a temporary file's (bdNamErr), and
// names longer than 255 units or, in UTF-8, than the 255 bytes that file systems allow
// (errFSNameTooLong).
OSErr ComponentOf(UniCharCount nameLength, const UniChar* name, std::string& component) {
  if (nameLength == 0) return bdNamErr;
  if (nameLength > 255) return errFSNameTooLong;
  if (name == nullptr) return paramErr;
  for (UniCharCount i = 0; i < nameLength; ++i)
    if (name[i] == 0 || name[i] == '/') return bdNamErr;
  component.clear();
  if (!EncodeUtf8(name, nameLength, component)) return bdNamErr;
  if (component.size() > 255) return errFSNameTooLong;
  if (component == "." || component == ".." || IsTemporaryName(component)) return bdNamErr;
  return noErr;
}

// The folder `parentRef` refers to and the component on disk of `name` in it: the first step of
// every call that names an object in a folder.
OSErr ResolveFolderAndName(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                           ObjectOnDisk& parent, std::string& component) {
  const OSErr err = ResolveFolder(parentRef, parent);
  return err != noErr ? err : ComponentOf(nameLength, name, component);
}

// The catalog information that the create calls can set: Finder information only.
bool CanSetOnCreation(FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo) {
  const FSCatalogInfoBitmap finder = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;
  return (whichInfo & ~finder) == 0 && (whichInfo == 0 || catalogInfo != nullptr);
}

// Makes the file `component` in the held folder `folder`, never over anything there, with its
// Finder information, and hands out its reference. A file that cannot be finished is removed.
OSErr CreateFileIn(UInt32 folder, const std::string& component, FSCatalogInfoBitmap whichInfo,
                   const FSCatalogInfo* catalogInfo, FSRef* newRef) {
  DiskBackend& disk = ActiveDiskBackend();
  const int folderFd = HeldDescriptor(folder);
  int fd;
  int error = disk.Open(folderFd, component.c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666, fd);
  if (error != 0) return MacErrorFromErrno(error);
  if (whichInfo != 0) error = WriteFinderInfo(DescriptorPath(fd), false, whichInfo, *catalogInfo);
  // The reference is to the file made here, whatever takes its name later.
  ObjectOnDisk created;
  if (error == 0) error = LookAtDescriptor(fd, created);
  close(fd);
  if (error != 0) {
    disk.Remove(folderFd, component.c_str(), false);
    return MacErrorFromErrno(error);
  }
  created.m_nFolder = folder;
  created.m_strName = component;
  if (newRef != nullptr) MakeReference(created, newRef);
  return noErr;
}

// Gives `object` the name `component` in the held folder `destination` on the file system
// `device` (diffVolErr otherwise) in one step, over an object there only with `replace` (dupFNErr
// otherwise), flushes the folders involved and hands out its new reference.
OSErr MoveObjectTo(ObjectOnDisk object, UInt32 destination, UInt64 device,
                   const std::string& component, bool replace, FSRef* newRef) {
  if (IsRoot(object)) return paramErr;
  if (object.m_identity.m_nDevice != device) return diffVolErr;
  if (object.m_nFolder != destination || object.m_strName != component) {
    const int error =
        ActiveDiskBackend().Rename(HeldDescriptor(object.m_nFolder), object.m_strName.c_str(),
                                   HeldDescriptor(destination), component.c_str(), replace);
    if (error != 0) return MacErrorFromErrno(error);
    if (IsTemporaryName(object.m_strName)) ForgetTemporaryFile(object.m_strName);
    FlushFolder(destination);
    if (object.m_nFolder != destination) FlushFolder(object.m_nFolder);
  }
  object.m_nFolder = destination;
  object.m_strName = component;
  if (newRef != nullptr) MakeReference(object, newRef);
  return noErr;
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
      return errFSNameTooLong;
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

OSErr FSFlushVolume(FSVolumeRefNum vRefNum) {
  for (const auto& [device, volume] : Volumes()) {
    if (volume != vRefNum) continue;
    // A file system is reached through a folder held on it.
    const int held = HeldDescriptorOnDevice(device);
    if (held < 0) return nsvErr;
    return MacErrorFromErrno(FlushFolderAt(held, ".", true));
  }
  return nsvErr;
}

OSErr FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
  if (path == nullptr || ref == nullptr) return paramErr;
  int fd;
  const int error = ActiveDiskBackend().Open(AT_FDCWD, reinterpret_cast<const char*>(path),
                                             O_PATH | O_CLOEXEC, 0, fd);
  if (error != 0) {
    errno = error;  // callers that tell the user why read it, as after the system call itself
    return MacErrorFromErrno(error);
  }
  ObjectOnDisk object;
  const OSErr err = FindOpened(fd, object);
  if (err != noErr) {
    errno = ENOENT;
    return err;
  }
  MakeReference(object, ref);
  if (isDirectory != nullptr) *isDirectory = object.m_bIsDirectory;
  return noErr;
}

OSErr CopyPathOut(const std::string& text, UInt8* path, UInt32 maxPathSize) {
  if (path == nullptr || text.size() + 1 > maxPathSize) return paramErr;
  std::memcpy(path, text.c_str(), text.size() + 1);
  return noErr;
}

OSErr FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 maxPathSize) {
  ObjectOnDisk object;
  std::string text;
  OSErr err = ResolveReference(ref, object);
  if (err == noErr) err = CurrentPath(object, text);
  return err != noErr ? err : CopyPathOut(text, path, maxPathSize);
}

OSErr FSMakeFSRefUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                         TextEncoding, FSRef* newRef) {
  if (newRef == nullptr) return paramErr;
  ObjectOnDisk parent, child;
  std::string component;
  OSErr err = ResolveFolderAndName(parentRef, nameLength, name, parent, component);
  if (err != noErr) return err;
  const int error = Find(parent.m_nSelf, component, child);
  if (error != 0) return MacErrorFromErrno(error);
  MakeReference(child, newRef);
  return noErr;
}

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef) {
  if (fsSpec != nullptr || (whichInfo != kFSCatInfoNone && catalogInfo == nullptr)) return paramErr;
  ObjectOnDisk object;
  OSErr err = ResolveReference(ref, object);
  // A folder's name and parent are where it is now, which may not be where it was found.
  if (err == noErr && (outName != nullptr || parentRef != nullptr)) err = Locate(object);
  if (err != noErr) return err;
  if (outName != nullptr) {
    std::vector<UniChar> units;
    // A name written by another program may not be UTF-8, or may need more than 255 units; the
    // interface has no form for it.
    if (!DecodeUtf8(reinterpret_cast<const UInt8*>(object.m_strName.data()),
                    object.m_strName.size(), units) ||
        units.size() > 255)
      return bdNamErr;
    outName->length = static_cast<UInt16>(units.size());
    std::copy(units.begin(), units.end(), outName->unicode);
  }
  if (parentRef != nullptr) {
    ObjectOnDisk parent;
    if (object.m_nFolder == kNoFolder) {
      std::memset(parentRef, 0, sizeof *parentRef);  // the root's
    } else if (LookAtHeld(object.m_nFolder, parent) != 0) {
      return fnfErr;
    } else {
      MakeReference(parent, parentRef);
    }
  }
  if (catalogInfo != nullptr && whichInfo != kFSCatInfoNone) {
    if (whichInfo & kFSCatInfoNodeFlags)
      catalogInfo->nodeFlags = object.m_bIsDirectory ? kFSNodeIsDirectoryMask : 0;
    if (whichInfo & kFSCatInfoVolume) catalogInfo->volume = VolumeOf(object.m_identity.m_nDevice);
    if (whichInfo & kFSCatInfoNodeID) catalogInfo->nodeID = NodeID(object);
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
  if (first.m_identity.m_nDevice != second.m_identity.m_nDevice) return diffVolErr;
  return first.m_identity.m_nInode == second.m_identity.m_nInode ? noErr : errFSRefsDifferent;
}

OSErr FSCreateFileUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                          FSRef* newRef, FSSpec* newSpec) {
  if (!CanSetOnCreation(whichInfo, catalogInfo) || newSpec != nullptr) return paramErr;
  ObjectOnDisk parent;
  std::string component;
  OSErr err = ResolveFolderAndName(parentRef, nameLength, name, parent, component);
  return err != noErr ? err
                      : CreateFileIn(parent.m_nSelf, component, whichInfo, catalogInfo, newRef);
}

OSErr FSCreateDirectoryUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                               FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                               FSRef* newRef, FSSpec* newSpec, UInt32* newDirID) {
  if (!CanSetOnCreation(whichInfo, catalogInfo) || newSpec != nullptr) return paramErr;
  ObjectOnDisk parent, created;
  std::string component;
  OSErr err = ResolveFolderAndName(parentRef, nameLength, name, parent, component);
  if (err != noErr) return err;
  DiskBackend& disk = ActiveDiskBackend();
  const int parentFd = HeldDescriptor(parent.m_nSelf);
  int error = disk.MakeFolder(parentFd, component.c_str(), 0777);
  if (error != 0) return MacErrorFromErrno(error);
  // Held at once. Anything but a folder of this user's in its place now was put there by someone
  // else since it was made: that is not the folder made here, and it is left alone.
  error = Find(parent.m_nSelf, component, created);
  if (error != 0) return MacErrorFromErrno(error);
  if (!created.m_bIsDirectory || created.m_nOwner != geteuid()) return fnfErr;
  if (whichInfo != 0)
    error = WriteFinderInfo(PathThroughHeld(created.m_nSelf), true, whichInfo, *catalogInfo);
  if (error != 0) {
    disk.Remove(parentFd, component.c_str(), true);
    return MacErrorFromErrno(error);
  }
  if (newRef != nullptr) MakeReference(created, newRef);
  if (newDirID != nullptr) *newDirID = NodeID(created);
  return noErr;
}

OSErr FSCreateTemporaryFile(const FSRef* parentRef, FSCatalogInfoBitmap whichInfo,
                            const FSCatalogInfo* catalogInfo, FSRef* newRef) {
  if (!CanSetOnCreation(whichInfo, catalogInfo)) return paramErr;
  ObjectOnDisk folder;
  OSErr err = ResolveFolder(parentRef, folder);
  if (err != noErr) return err;
  // Once per folder and process: a pack of settings would otherwise list its folder once for
  // every file it writes there.
  static auto* swept = new std::set<ObjectIdentity>;
  if (swept->insert(folder.m_identity).second) RemoveStaleTemporaryFiles(folder.m_nSelf);
  // The name is marked before the file exists, so that no moment passes in which a signal would
  // leave the file behind.
  const std::string name = NewTemporaryName();
  if (!RememberTemporaryFile(folder.m_nSelf, name)) return tmfoErr;
  err = CreateFileIn(folder.m_nSelf, name, whichInfo, catalogInfo, newRef);
  if (err != noErr) ForgetTemporaryFile(name);
  return err;
}

OSErr FSDeleteObject(const FSRef* ref) {
  ObjectOnDisk object;
  OSErr err = ResolveReference(ref, object);
  if (err == noErr) err = Locate(object);
  if (err != noErr) return err;
  if (IsRoot(object)) return paramErr;
  const int error = ActiveDiskBackend().Remove(HeldDescriptor(object.m_nFolder),
                                               object.m_strName.c_str(), object.m_bIsDirectory);
  if (error != 0) return error == EEXIST ? fBsyErr : MacErrorFromErrno(error);
  if (IsTemporaryName(object.m_strName)) ForgetTemporaryFile(object.m_strName);
  ForgetTrashRecord(object.m_nFolder, object.m_strName);
  return noErr;
}

OSErr FSRenameUnicode(const FSRef* ref, UniCharCount nameLength, const UniChar* name, TextEncoding,
                      FSRef* newRef) {
  ObjectOnDisk object;
  std::string component;
  OSErr err = ResolveReference(ref, object);
  if (err == noErr) err = Locate(object);
  if (err == noErr && IsRoot(object)) err = paramErr;
  if (err == noErr) err = ComponentOf(nameLength, name, component);
  if (err != noErr) return err;
  return MoveObjectTo(object, object.m_nFolder, object.m_identity.m_nDevice, component, false,
                      newRef);
}

OSErr FSMoveObject(const FSRef* ref, const FSRef* destDirectory, FSRef* newRef) {
  ObjectOnDisk object, destination;
  OSErr err = ResolveReference(ref, object);
  if (err == noErr) err = Locate(object);
  if (err == noErr) err = ResolveFolder(destDirectory, destination);
  if (err != noErr) return err;
  return MoveObjectTo(object, destination.m_nSelf, destination.m_identity.m_nDevice,
                      object.m_strName, false, newRef);
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
  if (err == noErr) err = Locate(original);
  if (err == noErr) err = Locate(replacement);
  if (err != noErr) return err;
  // One object under two names: a rename between them would change nothing.
  if (original.m_identity.m_nDevice == replacement.m_identity.m_nDevice &&
      original.m_identity.m_nInode == replacement.m_identity.m_nInode)
    return paramErr;
  if (IsRoot(original)) return paramErr;
  return MoveObjectTo(replacement, original.m_nFolder, original.m_identity.m_nDevice,
                      original.m_strName, true, resultObject);
}

OSErr FSResolveAliasFile(FSRef* theRef, Boolean, Boolean* targetIsFolder, Boolean* wasAliased) {
  if (theRef == nullptr || targetIsFolder == nullptr || wasAliased == nullptr) return paramErr;
  ObjectOnDisk object;
  OSErr err = ResolveReference(theRef, object);
  if (err == noErr) err = Locate(object);
  if (err != noErr) return err;
  *wasAliased = object.m_bIsLink;
  *targetIsFolder = object.m_bIsDirectory;
  if (!object.m_bIsLink) return noErr;
  // The rule the kernel applies to links in shared folders: a link that someone else put there
  // could lead anywhere that they choose.
  if (object.m_nOwner != geteuid() && object.m_nOwner != 0) return untrustedLinkErr;
  int fd;
  const int error = ActiveDiskBackend().Open(HeldDescriptor(object.m_nFolder),
                                             object.m_strName.c_str(), O_PATH | O_CLOEXEC, 0, fd);
  if (error != 0) return MacErrorFromErrno(error);  // fnfErr: it leads nowhere
  ObjectOnDisk target;
  err = FindOpened(fd, target);
  if (err != noErr) return err;
  MakeReference(target, theRef);
  *targetIsFolder = target.m_bIsDirectory;
  return noErr;
}
