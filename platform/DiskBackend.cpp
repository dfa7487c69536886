// DiskBackend.cpp: the POSIX calls under the File Manager.
#include "platform/DiskBackend.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "platform/internal/PosixFiles.h"  // DescriptorPath

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

int DiskBackend::FlushFileSystem(int fd) { return syncfs(fd) == 0 ? 0 : errno; }

int DiskBackend::Open(int folder, const char* name, int flags, mode_t mode, int& fd) {
  do {
    fd = openat(folder, name, flags, mode);
  } while (fd < 0 && errno == EINTR);
  return fd >= 0 ? 0 : errno;
}

int DiskBackend::Look(int folder, const char* name, int flags, struct statx& status) {
  const int emptyPath = name[0] == '\0' ? AT_EMPTY_PATH : 0;
  return statx(folder, name, flags | emptyPath, STATX_BASIC_STATS | STATX_BTIME, &status) == 0
             ? 0
             : errno;
}

int DiskBackend::MakeFolder(int folder, const char* name, mode_t mode) {
  return mkdirat(folder, name, mode) == 0 ? 0 : errno;
}

int DiskBackend::MayChange(int folder, const char* name) {
  return faccessat(folder, name, W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

int DiskBackend::Remove(int folder, const char* name, bool isFolder) {
  return unlinkat(folder, name, isFolder ? AT_REMOVEDIR : 0) == 0 ? 0 : errno;
}

int DiskBackend::Rename(int fromFolder, const char* fromName, int toFolder, const char* toName,
                        bool replace) {
  if (replace) return renameat(fromFolder, fromName, toFolder, toName) == 0 ? 0 : errno;
  if (renameat2(fromFolder, fromName, toFolder, toName, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL) return errno;
  // File systems that cannot promise not to replace: a hard link fails on a taken name, and the
  // old name then goes. Where links are not allowed either, check first, with a small window in
  // which another process could slip a file in.
  if (linkat(fromFolder, fromName, toFolder, toName, 0) == 0)
    return unlinkat(fromFolder, fromName, 0) == 0 ? 0 : errno;
  if (errno == EEXIST) return EEXIST;
  struct stat existing;
  if (fstatat(toFolder, toName, &existing, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
  return renameat(fromFolder, fromName, toFolder, toName) == 0 ? 0 : errno;
}

int DiskBackend::Link(int fromFolder, const char* fromName, int toFolder, const char* toName) {
  return linkat(fromFolder, fromName, toFolder, toName, 0) == 0 ? 0 : errno;
}

int DiskBackend::ReadLink(int folder, const char* name, std::string& target) {
  // The kernel's links for descriptors name paths of any length; grow until the text fits.
  const std::string own = name[0] == '\0' ? DescriptorPath(folder) : std::string();
  std::vector<char> buffer(256);
  for (;;) {
    const ssize_t length = own.empty() ? readlinkat(folder, name, buffer.data(), buffer.size())
                                       : readlink(own.c_str(), buffer.data(), buffer.size());
    if (length < 0) return errno;
    if (static_cast<std::size_t>(length) < buffer.size()) {
      target.assign(buffer.data(), static_cast<std::size_t>(length));
      return 0;
    }
    buffer.resize(buffer.size() * 2);
  }
}

DiskBackend& ActiveDiskBackend() {
  static DiskBackend posix;
  DiskBackend* installed = ScopedDiskBackend::Installed();
  return installed != nullptr ? *installed : posix;
}
