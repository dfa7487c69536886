// DiskBackend.h: the seam under the File Manager calls that move data and names. Reading and
// writing forks, reserving their space, flushing files and folders, and renaming go through the
// active DiskBackend: POSIX itself, unless a test puts its own in place with ScopedDiskBackend to
// make one of these calls fail, or to hold a write half done, where the real disk cannot be made
// to. The backend sees file descriptors and paths; the calls above it see references and forks.
#pragma once

#include <cstddef>
#include <cstdint>

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
  // Renames `from` to `to` in one step: over an object there when `replace`, else EEXIST.
  virtual int Rename(const char* from, const char* to, bool replace);
};

// The backend of this process: one installed by a ScopedDiskBackend if any, else POSIX.
DiskBackend& ActiveDiskBackend();

// Makes a backend the active one for its own lifetime, then restores the previous one.
using ScopedDiskBackend = ScopedBackend<DiskBackend>;
