// FaultyDisk.h: a disk that fails one chosen call, for the faults a real disk will not produce on
// demand (a read error, a full disk in mid-write, a failed flush or rename), and that runs a
// test's hook before each call, to act while a file is half written or to change the disk between
// two calls.
#pragma once

#include <cerrno>
#include <functional>

#include "platform/DiskBackend.h"

enum class DiskCall {
  kRead,
  kWrite,
  kReserve,
  kFlush,
  kFlushFileSystem,
  kOpen,
  kLook,
  kMakeFolder,
  kMayChange,
  kRemove,
  kRename,
  kLink,
  kReadLink,
  kCount
};

class FaultyDisk : public DiskBackend {
 public:
  // Fails the `nth` call (counted from 1) of `call` with `error`.
  FaultyDisk(DiskCall call, int nth, int error = EIO)
      : m_call(call), m_nNth(nth), m_nError(error) {}
  FaultyDisk() : FaultyDisk(DiskCall::kCount, 0) {}  // fails nothing

  // Whether the call chosen to fail was made.
  bool Failed() const { return m_bFailed; }

  std::function<void(DiskCall)> m_beforeCall;
  std::size_t m_nBytesRead = 0;

  int Read(int fd, void* buffer, std::size_t count, std::size_t& moved) override {
    if (Fails(DiskCall::kRead)) return m_nError;
    const int error = DiskBackend::Read(fd, buffer, count, moved);
    m_nBytesRead += moved;
    return error;
  }
  int Write(int fd, const void* buffer, std::size_t count, std::size_t& moved) override {
    return Fails(DiskCall::kWrite) ? m_nError : DiskBackend::Write(fd, buffer, count, moved);
  }
  int Reserve(int fd, std::int64_t offset, std::int64_t length) override {
    return Fails(DiskCall::kReserve) ? m_nError : DiskBackend::Reserve(fd, offset, length);
  }
  int Flush(int fd) override { return Fails(DiskCall::kFlush) ? m_nError : DiskBackend::Flush(fd); }
  int FlushFileSystem(int fd) override {
    return Fails(DiskCall::kFlushFileSystem) ? m_nError : DiskBackend::FlushFileSystem(fd);
  }
  int Open(int folder, const char* name, int flags, mode_t mode, int& fd) override {
    return Fails(DiskCall::kOpen) ? m_nError : DiskBackend::Open(folder, name, flags, mode, fd);
  }
  int Look(int folder, const char* name, int flags, struct statx& status) override {
    return Fails(DiskCall::kLook) ? m_nError : DiskBackend::Look(folder, name, flags, status);
  }
  int MakeFolder(int folder, const char* name, mode_t mode) override {
    return Fails(DiskCall::kMakeFolder) ? m_nError : DiskBackend::MakeFolder(folder, name, mode);
  }
  int MayChange(int folder, const char* name) override {
    return Fails(DiskCall::kMayChange) ? m_nError : DiskBackend::MayChange(folder, name);
  }
  int Remove(int folder, const char* name, bool isFolder) override {
    return Fails(DiskCall::kRemove) ? m_nError : DiskBackend::Remove(folder, name, isFolder);
  }
  int Rename(int fromFolder, const char* fromName, int toFolder, const char* toName,
             bool replace) override {
    return Fails(DiskCall::kRename)
               ? m_nError
               : DiskBackend::Rename(fromFolder, fromName, toFolder, toName, replace);
  }
  int Link(int fromFolder, const char* fromName, int toFolder, const char* toName) override {
    return Fails(DiskCall::kLink) ? m_nError
                                  : DiskBackend::Link(fromFolder, fromName, toFolder, toName);
  }
  int ReadLink(int folder, const char* name, std::string& target) override {
    return Fails(DiskCall::kReadLink) ? m_nError : DiskBackend::ReadLink(folder, name, target);
  }

 private:
  bool Fails(DiskCall call) {
    if (m_beforeCall) m_beforeCall(call);
    if (call != m_call || ++m_nCalls != m_nNth) return false;
    m_bFailed = true;
    return true;
  }

  DiskCall m_call;
  int m_nNth, m_nError, m_nCalls = 0;
  bool m_bFailed = false;
};
