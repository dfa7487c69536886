// Forks.cpp: opening, sizing, reading and writing data forks over file descriptors.
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <vector>

#include "platform/DiskBackend.h"
#include "platform/internal/PosixFiles.h"

namespace {

// Fork numbers are indices into this table plus one, so that a number never handed out (or one
// already closed) cannot reach a descriptor the process uses for something else.
std::vector<int>& OpenForks() {
  static auto* forks = new std::vector<int>;
  return *forks;
}

int DescriptorOf(SInt16 forkRefNum) {
  const std::vector<int>& forks = OpenForks();
  if (forkRefNum < 1 || static_cast<std::size_t>(forkRefNum) > forks.size()) return -1;
  return forks[forkRefNum - 1];
}

// The offset that a File Manager position mode and offset name in the open file `fd`.
OSErr PositionOf(int fd, UInt16 positionMode, SInt64 offset, SInt64& position) {
  switch (positionMode & ~noCacheMask) {
    case fsFromStart:
      position = offset;
      break;
    case fsFromLEOF: {
      struct stat status;
      if (fstat(fd, &status) != 0) return MacErrorFromErrno(errno);
      position = status.st_size + offset;
      break;
    }
    case fsAtMark:
    case fsFromMark: {
      const off_t mark = lseek(fd, 0, SEEK_CUR);
      if (mark < 0) return MacErrorFromErrno(errno);
      position = mark + ((positionMode & ~noCacheMask) == fsFromMark ? offset : 0);
      break;
    }
    default:
      return paramErr;
  }
  return position < 0 ? posErr : noErr;
}

// Moves the fork's mark as a File Manager position mode says.
OSErr Seek(int fd, UInt16 positionMode, SInt64 offset) {
  int whence;
  switch (positionMode & ~noCacheMask) {
    case fsAtMark:
      return noErr;
    case fsFromStart:
      whence = SEEK_SET;
      break;
    case fsFromLEOF:
      whence = SEEK_END;
      break;
    case fsFromMark:
      whence = SEEK_CUR;
      break;
    default:
      return paramErr;
  }
  if (lseek(fd, offset, whence) >= 0) return noErr;
  return errno == EINVAL ? posErr : MacErrorFromErrno(errno);
}

// Reads or writes with `step` (a DiskBackend member) until `count` bytes are done; a step that
// moves nothing ends the transfer with `stalled` (the end of the fork, for reads).
template <typename Bytes, typename Step>
OSErr Transfer(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset, ByteCount count,
               Bytes* buffer, ByteCount* actualCount, OSErr stalled, Step step) {
  if (actualCount != nullptr) *actualCount = 0;
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  if (buffer == nullptr && count > 0) return paramErr;
  OSErr err = Seek(fd, positionMode, positionOffset);
  if (err != noErr) return err;
  ByteCount done = 0;
  DiskBackend& disk = ActiveDiskBackend();
  while (done < count) {
    std::size_t moved = 0;
    const int error = (disk.*step)(fd, buffer + done, count - done, moved);
    if (error == EINTR) continue;
    if (error != 0 || moved == 0) {
      err = error != 0 ? MacErrorFromErrno(error) : stalled;
      break;
    }
    done += static_cast<ByteCount>(moved);
  }
  if (actualCount != nullptr) *actualCount = done;
  return err;
}

}  // namespace

OSErr FSGetDataForkName(HFSUniStr255* dataForkName) {
  if (dataForkName == nullptr) return paramErr;
  dataForkName->length = 0;
  return noErr;
}

OSErr FSOpenFork(const FSRef* ref, UniCharCount forkNameLength, const UniChar*, SInt8 permissions,
                 SInt16* forkRefNum) {
  if (forkRefNum == nullptr) return paramErr;
  if (forkNameLength != 0) return errFSForkNotFound;
  int flags;
  switch (permissions) {
    case fsCurPerm:
    case fsRdPerm:
      flags = O_RDONLY;
      break;
    case fsWrPerm:
      flags = O_WRONLY;
      break;
    case fsRdWrPerm:
      flags = O_RDWR;
      break;
    default:
      return paramErr;
  }
  ObjectOnDisk object;
  const OSErr err = ResolveReference(ref, object);
  if (err != noErr) return err;
  // Only a regular file has data to give: a named pipe would wait for a writer, forever.
  if (!object.m_bIsRegularFile) return notAFileErr;
  // Not waiting either on what another process may put in its place meanwhile.
  int fd;
  const int error =
      ActiveDiskBackend().Open(HeldDescriptor(object.m_nFolder), object.m_strName.c_str(),
                               flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0, fd);
  if (error != 0) return MacErrorFromErrno(error);
  // The name may have been given to another object since the reference was checked.
  ObjectOnDisk opened;
  if (LookAtDescriptor(fd, opened) != 0 || !(opened.m_identity == object.m_identity) ||
      !opened.m_bIsRegularFile || fcntl(fd, F_SETFL, flags) != 0) {
    close(fd);
    return fnfErr;
  }
  std::vector<int>& forks = OpenForks();
  std::size_t slot = 0;
  while (slot < forks.size() && forks[slot] >= 0) ++slot;
  if (slot >= 0x7FFF) {
    close(fd);
    return tmfoErr;
  }
  if (slot == forks.size()) forks.push_back(-1);
  forks[slot] = fd;
  *forkRefNum = static_cast<SInt16>(slot + 1);
  return noErr;
}

OSErr FSCloseFork(SInt16 forkRefNum) {
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  OpenForks()[forkRefNum - 1] = -1;
  return close(fd) == 0 ? noErr : ioErr;
}

OSErr FSGetForkSize(SInt16 forkRefNum, SInt64* forkSize) {
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  if (forkSize == nullptr) return paramErr;
  struct stat status;
  if (fstat(fd, &status) != 0) return MacErrorFromErrno(errno);
  *forkSize = status.st_size;
  return noErr;
}

OSErr FSSetForkSize(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset) {
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  SInt64 size = 0;
  const OSErr err = PositionOf(fd, positionMode, positionOffset, size);
  if (err != noErr) return err;
  return ftruncate(fd, size) == 0 ? noErr : MacErrorFromErrno(errno);
}

OSErr FSAllocateFork(SInt16 forkRefNum, FSAllocationFlags, UInt16 positionMode,
                     SInt64 positionOffset, UInt64 requestCount, UInt64* actualCount) {
  if (actualCount != nullptr) *actualCount = 0;
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  SInt64 start = 0;
  const OSErr err = PositionOf(fd, positionMode, positionOffset, start);
  if (err != noErr) return err;
  if (requestCount > static_cast<UInt64>(INT64_MAX - start)) return dskFulErr;
  const int error = ActiveDiskBackend().Reserve(fd, start, static_cast<std::int64_t>(requestCount));
  // Without reservations the writes themselves tell whether the data fits.
  if (error == EOPNOTSUPP) return noErr;
  if (error != 0) return MacErrorFromErrno(error);
  if (actualCount != nullptr) *actualCount = requestCount;
  return noErr;
}

OSErr FSFlushFork(SInt16 forkRefNum) {
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  const int error = ActiveDiskBackend().Flush(fd);
  return error == 0 ? noErr : MacErrorFromErrno(error);
}

OSErr FSSetForkPosition(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset) {
  const int fd = DescriptorOf(forkRefNum);
  if (fd < 0) return rfNumErr;
  return Seek(fd, positionMode, positionOffset);
}

OSErr FSReadFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                 ByteCount requestCount, void* buffer, ByteCount* actualCount) {
  return Transfer(forkRefNum, positionMode, positionOffset, requestCount,
                  static_cast<char*>(buffer), actualCount, eofErr, &DiskBackend::Read);
}

OSErr FSWriteFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                  ByteCount requestCount, const void* buffer, ByteCount* actualCount) {
  return Transfer(forkRefNum, positionMode, positionOffset, requestCount,
                  static_cast<const char*>(buffer), actualCount, ioErr, &DiskBackend::Write);
}
