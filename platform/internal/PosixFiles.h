// PosixFiles.h: how a file reference maps onto POSIX, shared by the File Manager sources of
// platform/: the folders this process holds open, what a reference records of its object, and the
// one translation of errno into Mac status codes. Only platform/ includes this header.
//
// A folder, once found, is held open for the rest of the process, and every call that works inside
// it goes through that handle (openat, mkdirat, renameat2, unlinkat, fstatat) with the name alone,
// never following a link there. Swapping any folder on the way for a link, or for another folder,
// after it was found changes nothing of where a call reads or writes.
#pragma once

#include <string>

#include "platform/Files.h"

// No held folder: the place of the root, and of a folder whose place is read back when asked.
inline constexpr UInt32 kNoFolder = 0xFFFFFFFF;

// What tells one object from every other, however it is reached. The birth time, where the file
// system keeps one, tells a new object from a deleted one whose inode it reuses.
struct ObjectIdentity {
  UInt64 m_nDevice = 0;
  UInt64 m_nInode = 0;
  SInt64 m_nBirthSeconds = 0;
  UInt32 m_nBirthNanoseconds = 0;
  bool m_bHasBirthTime = false;

  auto operator<=>(const ObjectIdentity&) const = default;
};

// An object as one look at it found it, and where it was found.
struct ObjectOnDisk {
  UInt32 m_nFolder = kNoFolder;  // the held folder that holds it
  std::string m_strName;         // its name there, one component
  UInt32 m_nSelf = kNoFolder;    // a folder's own handle, held from the moment it was found
  ObjectIdentity m_identity;
  bool m_bIsDirectory = false;
  bool m_bIsRegularFile = false;  // neither a folder nor a link, pipe, socket or device
  bool m_bIsLink = false;
  UInt32 m_nOwner = 0;
  UInt64 m_nLinkCount = 0;
  UInt64 m_nSize = 0;
  UInt64 m_nAllocated = 0;  // bytes of disk space
  SInt64 m_nModifiedSeconds = 0;
  UInt32 m_nModifiedNanoseconds = 0;
};

// One of the user's base folders as the desktop defines them: the absolute path in `variable`
// (such as XDG_DATA_HOME), else `underHome` (such as ".local/share") inside $HOME. A relative
// value is not one the desktop recognises and counts as unset. False when neither gives a path.
bool UserBaseFolder(const char* variable, const char* underHome, std::string& path);

// The Mac status for a failed POSIX call's errno.
OSErr MacErrorFromErrno(int error);

// Splits an absolute path into its folder and last component; "/" has no last component.
void SplitPath(const std::string& path, std::string& folder, std::string& name);

// The descriptor of a held folder; -1 for kNoFolder and for a folder let go once it was deleted.
int HeldDescriptor(UInt32 folder);

// The descriptor of a held folder on the file system `device`; -1 when none is held there.
int HeldDescriptorOnDevice(UInt64 device);

// Looks at `name` in the held folder `folder` without following a link there and without holding
// anything: to check a reference, or a name about to be used. 0 or an errno value.
int LookAt(UInt32 folder, const std::string& name, ObjectOnDisk& object);

// Looks at the held folder `self` itself; ENOENT once it has been removed.
int LookAtHeld(UInt32 self, ObjectOnDisk& object);

// Looks at what the descriptor `fd` was opened on; where it lies is left to the caller.
int LookAtDescriptor(int fd, ObjectOnDisk& object);

// Finds `name` in the held folder `folder` for a new reference: a folder there is held from this
// very look, so that what is held is what was looked at. 0 or an errno value.
int Find(UInt32 folder, const std::string& name, ObjectOnDisk& object);

// The object behind `fd`, a descriptor opened with O_PATH by a path (or through a link), for a new
// reference; the call takes `fd` over. A folder is held; anything else is found again in its
// folder by its name there. A Mac status.
OSErr FindOpened(int fd, ObjectOnDisk& object);

// Writes a reference to `object` into `ref`.
void MakeReference(const ObjectOnDisk& object, FSRef* ref);

// The object that `ref` names, checked against the disk: nsvErr for a reference that names
// nothing, fnfErr when its object is gone or replaced. A held folder answers wherever it went.
OSErr ResolveReference(const FSRef* ref, ObjectOnDisk& object);

// The same for a reference given as a folder: dirNFErr when it is gone or is no folder.
OSErr ResolveFolder(const FSRef* ref, ObjectOnDisk& folder);

// Makes sure that `object`'s folder and name are where it is now: a folder may have been moved
// since it was found, or found by path. The root has no folder. fnfErr when it is gone.
OSErr Locate(ObjectOnDisk& object);

// Whether `object` is the root folder "/".
bool IsRoot(const ObjectOnDisk& object);

// The object's absolute path now, as the kernel names its folder. fnfErr when it is gone.
OSErr CurrentPath(ObjectOnDisk& object, std::string& path);

// `text` zero-terminated in the caller's `path` of `maxPathSize` bytes, as the calls that give a
// path answer; paramErr when it does not fit.
OSErr CopyPathOut(const std::string& text, UInt8* path, UInt32 maxPathSize);

// The kernel's path of the descriptor `fd`, "/proc/self/fd/N", and of `name` inside it when given:
// a path for the calls that take no descriptor (links, extended attributes) that reaches the very
// object the descriptor holds; `name` itself is the last component.
std::string DescriptorPath(int fd, const std::string& name = std::string());

// The same through the descriptor of the held folder `folder`.
std::string PathThroughHeld(UInt32 folder, const std::string& name = std::string());

// Makes the names in the folder `name` (in `at`, or AT_FDCWD with a path) durable, or with
// `wholeFileSystem` everything written to its file system. 0 or an errno value.
int FlushFolderAt(int at, const char* name, bool wholeFileSystem);

// Makes the names in the held folder `folder` durable. A failure is not passed on: it comes after
// the change, which stands and cannot be taken back.
void FlushFolder(UInt32 folder);

// Deletes the record of the object `name` in the held folder `folder` when FSMoveObjectToTrashSync
// put it there in this process: an object deleted from the Trash leaves no record behind.
void ForgetTrashRecord(UInt32 folder, const std::string& name);

// Temporary files (TemporaryFiles.cpp), the ones FSCreateTemporaryFile makes.

// Whether a name begins as a temporary file's does; no name given by a caller may.
bool IsTemporaryName(const std::string& component);

// A fresh name of that form, unique to this process and call.
std::string NewTemporaryName();

// Removes the temporary files in the held folder `folder` that a killed process left behind: names
// of exactly the form NewTemporaryName makes, regular files of this user, unchanged for ten
// minutes.
void RemoveStaleTemporaryFiles(UInt32 folder);

// Marks the temporary file `name` in the held folder `folder` (made or about to be made) for
// removal if SIGHUP, SIGINT or SIGTERM ends the process; false when too many are marked already.
bool RememberTemporaryFile(UInt32 folder, const std::string& name);

// Drops the mark once the file is renamed or deleted; a name never marked is ignored.
void ForgetTemporaryFile(const std::string& name);
