// DiskBackend.h: the seam under every File Manager call that touches the disk. Looking objects up,
// opening, making, removing, renaming and linking them, asking whether a folder may be changed,
// reading and writing forks, reserving their space and flushing files, folders and whole file
// systems go through the active DiskBackend: POSIX itself, unless a test puts
// its own in place with ScopedDiskBackend to make one of these calls fail, to hold a write half
// done, or to change the disk between two calls, where the real disk cannot be made to. The
// backend sees file descriptors and names; the calls above it see references and forks.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/ScopedBackend.h"

class DiskBackend {
 public:
  virtual ~DiskBackend() = default;

  // Each returns 0 or the errno value of the failure. Read and Write move at most `count` bytes
  // once, as read(2) and write(2) do, and put the number moved in `moved`.
  virtual int Read(int fd, void* buffer, std::size_t count, std::size_t& moved);
  virtual int Write(int fd, const void* buffer, std::size_t count, std::size_t& moved);
  // Allocates `length` bytes from `offset` without changing the file's size; EOPNOTSUPP where the
  // file system cannot reserve space.
  virtual int Reserve(int fd, std::int64_t offset, std::int64_t length);
  // Makes what was written to the file, or the names in the folder, durable (fsync).
  virtual int Flush(int fd);
  // Makes everything written to the file system that holds `fd` durable (syncfs).
  virtual int FlushFileSystem(int fd);

  // The calls on names. `folder` is a folder's descriptor, or AT_FDCWD with a path for `name`.
  // openat(2) into `fd`.
  virtual int Open(int folder, const char* name, int flags, mode_t mode, int& fd);
  // statx(2) of `name`, or of `folder` itself for an empty name; `flags` as statx takes them.
  virtual int Look(int folder, const char* name, int flags, struct statx& status);
  virtual int MakeFolder(int folder, const char* name, mode_t mode);
  // Whether this process may make and remove names in the folder `name` (faccessat(2)).
  virtual int MayChange(int folder, const char* name);
  // Removes the file, link or (with `isFolder`) empty folder `name`.
  virtual int Remove(int folder, const char* name, bool isFolder);
  // Renames in one step: over an object there when `replace`, else EEXIST.
  virtual int Rename(int fromFolder, const char* fromName, int toFolder, const char* toName,
                     bool replace);
  // Gives the file `fromName` a second name `toName` (linkat(2)); EEXIST when that is taken.
  virtual int Link(int fromFolder, const char* fromName, int toFolder, const char* toName);
  // The text of the symbolic link `name`, or of the kernel's link for `folder` with an empty name.
  virtual int ReadLink(int folder, const char* name, std::string& target);
};

// The backend of this process: one installed by a ScopedDiskBackend if any, else POSIX.
DiskBackend& ActiveDiskBackend();

// Makes a backend the active one for its own lifetime, then restores the previous one.
using ScopedDiskBackend = ScopedBackend<DiskBackend>;
