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
