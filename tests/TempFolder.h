// TempFolder.h: a fresh folder for one test, removed with everything in it when the test ends,
// failed or not, with its files read and written whole; and UTF-16 names for File Manager calls.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/MacTypes.h"

class TempFolder {
 public:
  // Throws when the folder cannot be made, which fails the test that wanted it.
  TempFolder() {
    std::string pattern = testing::TempDir() + "kestrail-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
    m_path = std::filesystem::canonical(pattern).string();
  }
  ~TempFolder() { std::filesystem::remove_all(m_path); }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return m_path; }
  std::string Path(const std::string& name) const { return m_path + "/" + name; }
  const UInt8* PosixPath() const { return reinterpret_cast<const UInt8*>(m_path.c_str()); }

  void Write(const std::string& name, const std::string& contents) const {
    std::ofstream(Path(name), std::ios::binary) << contents;
  }
  std::string Contents(const std::string& name) const {
    std::ifstream in(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  // The names in the folder `name`.
  std::set<std::string> Names(const std::string& name) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Path(name)))
      names.insert(entry.path().filename());
    return names;
  }

 private:
  std::string m_path;
};

inline std::vector<UniChar> Units(const std::u16string& text) {
  return std::vector<UniChar>(text.begin(), text.end());
}
