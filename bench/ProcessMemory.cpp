#include "bench/ProcessMemory.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace Bench {

long StatusKilobytes(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(field, 0) == 0) return std::atol(line.c_str() + std::string(field).size());
  }
  return 0;
}

}  // namespace Bench
