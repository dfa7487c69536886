// PosixFiles.h: how a file reference maps onto POSIX, shared by the File Manager sources of
// platform/: the identity an FSRef carries, the process-wide table of the paths it points into,
// and the one translation of errno into Mac status codes. Only platform/ includes this header.
#pragma once

#include <string>

#include "platform/Files.h"

// What a reference records of its object and what a look-up of the object finds on disk.
struct ObjectOnDisk {
  std::string m_strPath;  // absolute, no "." or ".." components, no links but maybe the last
  UInt64 m_nDevice = 0;
  UInt64 m_nInode = 0;
  SInt64 m_nBirthSeconds = 0;      // birth time, where the file system keeps one: it tells a new
  UInt32 m_nBirthNanoseconds = 0;  // object apart from a deleted one whose inode it reuses
  bool m_bHasBirthTime = false;
  bool m_bIsDirectory = false;
  bool m_bIsRegularFile = false;  // neither a folder nor a link, pipe, socket or device
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

// Reads what lies at `path` now, without following a link there; an errno value on failure.
int LookAtPath(const std::string& path, ObjectOnDisk& object);

// Writes a reference to `object` (as LookAtPath found it) into `ref`.
void MakeReference(const ObjectOnDisk& object, FSRef* ref);

// The object that `ref` names, checked against the disk: nsvErr for a reference that names
// nothing, fnfErr when its object is gone or replaced.
OSErr ResolveReference(const FSRef* ref, ObjectOnDisk& object);

// Temporary files (TemporaryFiles.cpp), the ones FSCreateTemporaryFile makes.

// Whether a name has the form of a temporary file's; no name of that form is given to users.
bool IsTemporaryName(const std::string& component);

// A fresh name of that form, unique to this process and call.
std::string NewTemporaryName();

// Removes the temporary files in `folder` that have not changed for ten minutes.
void RemoveStaleTemporaryFiles(const std::string& folder);

// Marks the temporary file `path` (made or about to be made) for removal if SIGHUP, SIGINT or
// SIGTERM ends the process; false when too many are marked already.
bool RememberTemporaryFile(const std::string& path);

// Drops the mark once the file is renamed or deleted; a path never marked is ignored.
void ForgetTemporaryFile(const std::string& path);
