// ProcessMemory.h: what the kernel says of this process's memory, for the benchmarks that
// measure a peak in a process of its own.
#pragma once

namespace Bench {

// A kilobyte figure of /proc/self/status, such as "VmRSS:" (resident now) or "VmHWM:" (the
// high-water mark, which getrusage reports as ru_maxrss); 0 when it cannot be read.
long StatusKilobytes(const char* field);

}  // namespace Bench
