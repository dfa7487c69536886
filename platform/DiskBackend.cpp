// DiskBackend.cpp: the POSIX calls under the File Manager's reads, writes, flushes and renames.
#include "platform/DiskBackend.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

int DiskBackend::Read(int fd, void* buffer, std::size_t count, std::size_t& moved) {
  const ssize_t result = read(fd, buffer, count);
  moved = result > 0 ? static_cast<std::size_t>(result) : 0;
  return result < 0 ? errno : 0;
}

int DiskBackend::Write(int fd, const void* buffer, std::size_t count, std::size_t& moved) {
  const ssize_t result = write(fd, buffer, count);
  moved = result > 0 ? static_cast<std::size_t>(result) : 0;
  return result < 0 ? errno : 0;
}

int DiskBackend::Reserve(int fd, std::int64_t offset, std::int64_t length) {
  if (length <= 0) return 0;
  int result;
  do {
    result = fallocate(fd, FALLOC_FL_KEEP_SIZE, offset, length);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? 0 : errno;
}

int DiskBackend::Flush(int fd) { return fsync(fd) == 0 ? 0 : errno; }

int DiskBackend::Rename(const char* from, const char* to, bool replace) {
  if (replace) return rename(from, to) == 0 ? 0 : errno;
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL) return errno;
  // File systems that cannot promise not to replace: a hard link fails on a taken name, and the
  // old name then goes. Where links are not allowed either, check first, with a small window in
  // which another process could slip a file in.
  if (link(from, to) == 0) return unlink(from) == 0 ? 0 : errno;
  if (errno == EEXIST) return EEXIST;
  struct stat existing;
  if (lstat(to, &existing) == 0) return EEXIST;
  return rename(from, to) == 0 ? 0 : errno;
}

DiskBackend& ActiveDiskBackend() {
  static DiskBackend posix;
  DiskBackend* installed = ScopedDiskBackend::Installed();
  return installed != nullptr ? *installed : posix;
}
