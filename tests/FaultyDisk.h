// FaultyDisk.h: a disk that fails one chosen call, for the faults a real disk will not produce on
// demand (a read error, a full disk in mid-write, a failed flush or rename), and that runs a
// test's hook before each write, to act while a file is half written.
#pragma once

#include <cerrno>
#include <functional>

#include "platform/DiskBackend.h"

enum class DiskCall { kRead, kWrite, kReserve, kFlush, kRename, kCount };

class FaultyDisk : public DiskBackend {
 public:
  // Fails the `nth` call (counted from 1) of `call` with `error`.
  FaultyDisk(DiskCall call, int nth, int error = EIO)
      : m_call(call), m_nNth(nth), m_nError(error) {}
  FaultyDisk() : FaultyDisk(DiskCall::kCount, 0) {}  // fails nothing

  // Whether the call chosen to fail was made.
  bool Failed() const { return m_bFailed; }

  std::function<void()> m_beforeWrite;
  std::size_t m_nBytesRead = 0;

  int Read(int fd, void* buffer, std::size_t count, std::size_t& moved) override {
    if (Fails(DiskCall::kRead)) return m_nError;
    const int error = DiskBackend::Read(fd, buffer, count, moved);
    m_nBytesRead += moved;
    return error;
  }
  int Write(int fd, const void* buffer, std::size_t count, std::size_t& moved) override {
    if (m_beforeWrite) m_beforeWrite();
    return Fails(DiskCall::kWrite) ? m_nError : DiskBackend::Write(fd, buffer, count, moved);
  }
  int Reserve(int fd, std::int64_t offset, std::int64_t length) override {
    return Fails(DiskCall::kReserve) ? m_nError : DiskBackend::Reserve(fd, offset, length);
  }
  int Flush(int fd) override { return Fails(DiskCall::kFlush) ? m_nError : DiskBackend::Flush(fd); }
  int Rename(const char* from, const char* to, bool replace) override {
    return Fails(DiskCall::kRename) ? m_nError : DiskBackend::Rename(from, to, replace);
  }

 private:
  bool Fails(DiskCall call) {
    if (call != m_call || ++m_nCalls != m_nNth) return false;
    m_bFailed = true;
    return true;
  }

  DiskCall m_call;
  int m_nNth, m_nError, m_nCalls = 0;
  bool m_bFailed = false;
};
