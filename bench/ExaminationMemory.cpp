// The memory of examining a settings file just under the largest size examined, for files of
// many shapes: the settings forms, old-style packages in both encodings, and what a hostile or
// broken file may hold. Each examination (SettingsUtils::LocateFolderForSetting, and for a
// package also its install, UnpackageOldSettingsFile) runs in a process of its own, which reports
// its peak resident memory beyond what it held before reading, as a multiple of the file's size,
// with what the examination found, so that two builds can be compared shape by shape. The peak is
// the kernel's high-water mark of the process (VmHWM, which getrusage reports as ru_maxrss), set
// back to the resident memory of the moment just before the examination.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "bench/Inputs.h"
#include "bench/ProcessMemory.h"
#include "ovlib/general_framework/OVFileSystemReferenceMac.h"
#include "ovlib/ps_filter_framework/SettingsUtils.h"
#include "platform/Memory.h"
#include "xmlparser/Xml.h"

namespace {

namespace fs = std::filesystem;

// Just under the largest file examined.
const std::size_t kFileBytes = (64u << 20) - 1024;
const double kTarget = 6.0;

// The start tags of a setting, left open for more attributes or its end, and of a package.
const std::string kSettingTag = "<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"x\"";
const std::string kPackageTag =
    "<oldstyle_setting filter=\"Tessellane\" name=\"Old\" set=\"Mendora\">";

// `head`, then `unit` repeated while the result stays within `bytes` less the size of `tail`,
// then `tail`; padded with spaces before the tail to exactly `bytes` where `pad` allows it.
std::string Fill(const std::string& head, const std::string& unit, const std::string& tail,
                 std::size_t bytes = kFileBytes, bool pad = true) {
  std::string text = head;
  text.reserve(bytes);
  while (text.size() + unit.size() + tail.size() <= bytes) text += unit;
  if (pad) text.append(bytes - text.size() - tail.size(), ' ');
  return text + tail;
}

// Each code unit of `text`, little-endian after a byte-order mark, as the packager writes.
std::string Utf16(const std::string& text) {
  std::string file = "\xFF\xFE";
  file.reserve(2 * text.size() + 2);
  for (char c : text) file += {c, '\0'};
  return file;
}

struct Shape {
  const char* name;
  std::function<std::string()> make;
  bool install;  // a package: its install is measured too
};

const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> shapes = {
      // The forms a setting takes, at their largest.
      {"settings-document", [] { return Bench::SettingsDocument(kFileBytes - 1024); }, false},
      {"settings-utf16", [] { return Utf16(Bench::SettingsDocument(kFileBytes / 2 - 1024)); },
       false},
      {"huge-attribute", [] { return Fill(kSettingTag + " note=\"", "x", "\"/>"); }, false},
      {"huge-name",
       [] {
         return Fill("<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"", "x", "\"/>",
                     kFileBytes, false);
       },
       false},
      {"name-of-references",
       [] {
         return Fill("<setting set=\"Daubery\" filter=\"InkPuddle\" name=\"", "&amp;", "\"/>",
                     kFileBytes, false);
       },
       false},
      // A set's name is routed: it names a folder.
      {"huge-set",
       [] {
         return Fill("<setting filter=\"InkPuddle\" name=\"x\" set=\"", "x", "\"/>", kFileBytes,
                     false);
       },
       false},
      {"text-huge-set",
       [] {
         return Fill("[{\"filter\": \"InkPuddle\", \"set\": \"", "x", "\"}]", kFileBytes, false);
       },
       false},
      {"package-utf8",
       [] {
         return Fill(kPackageTag + "<![CDATA[", "Tessellane 1.2 tile=3 grout=0.25\r",
                     "]]></oldstyle_setting>");
       },
       true},
      {"package-utf16",
       [] {
         return Utf16(Fill(kPackageTag + "<![CDATA[", "Tessellane 1.2 tile=3 grout=0.25\r",
                           "]]></oldstyle_setting>", kFileBytes / 2 - 1));
       },
       true},
      {"text-setting",
       [] {
         return Fill("[{\"set\": \"Daubery\", \"filter\": \"InkPuddle\"},\n",
                     "{\"param\": \"k0\", \"value\": 0.5},\n", "{}]");
       },
       false},
      // Much markup for its size.
      {"tiny-elements", [] { return Fill(kSettingTag + ">", "<a/>", "</setting>"); }, false},
      {"markup-mix",
       [] {
         return Fill(kSettingTag + ">", "<p k=\"1\" v=\"&lt;\"/><!--c--><?t d?>x&amp;",
                     "</setting>");
       },
       false},
      {"root-attributes",
       [] {
         std::string text = kSettingTag;
         for (std::size_t n = 0; text.size() < kFileBytes - 40; ++n)
           text += " a" + std::to_string(n) + "=\"\"";
         return text + "/>";
       },
       false},
      {"deep-nesting",
       [] {
         const std::size_t depth = (kFileBytes - kSettingTag.size() - 20) / 7;
         std::string text = kSettingTag + ">";
         for (std::size_t i = 0; i < depth; ++i) text += "<a>";
         for (std::size_t i = 0; i < depth; ++i) text += "</a>";
         return text + "</setting>";
       },
       false},
      {"dtd",
       [] {
         const std::size_t depth = kFileBytes / 4;
         std::string text = "<!DOCTYPE setting [<!ELEMENT setting " + std::string(depth, '(') +
                            "a" + std::string(depth, ')') + "><!ENTITY e \"";
         return Fill(text, "&amp;", "\">]>" + kSettingTag + "/>");
       },
       false},
      {"long-root-name", [] { return Fill("<", "n", "/>", kFileBytes, false); }, false},
      // Not XML after all, or not at all.
      {"malformed-at-end", [] { return Fill(kSettingTag + ">", "<a/>", "</setting"); }, false},
      {"lt-garbage",
       [] {
         std::string text = "<";
         std::minstd_rand random(7);
         while (text.size() < kFileBytes) text += static_cast<char>(' ' + random() % 95);
         return text;
       },
       false},
  };
  return shapes;
}

OVFileSystemReference Ref(const std::string& path) {
  OVFileSystemReference ref;
  FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), ref, nullptr);
  return ref;
}

// A name as found: short ones whole, long ones by their start and length.
std::string Summary(const TString& text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size() && i < 12; ++i)
    shown += text[i] >= 32 && text[i] < 127 ? static_cast<char>(text[i]) : '?';
  return text.size() <= 12 ? shown : shown + "...(" + std::to_string(text.size()) + ")";
}

// In the child: examines (or installs) `path` and prints the status, the peak in kilobytes and
// what was found.
int Run(const std::string& mode, const std::string& path, const std::string& folder) {
  OVFileSystemReference file = Ref(path), destination = Ref(folder);
  std::ofstream("/proc/self/clear_refs") << "5";  // the high-water mark starts again from here
  const long before = Bench::StatusKilobytes("VmRSS:");
  int status;
  std::string found;
  if (mode == "--examine") {
    TString settingName, setName, filterName;
    bool isOldStyle = false, needsGlimmerboxFolder = false;
    status = SettingsUtils::LocateFolderForSetting(file, destination, settingName, setName,
                                                   filterName, isOldStyle, needsGlimmerboxFolder);
    found = Summary(setName) + " " + Summary(filterName) + " " + Summary(settingName) +
            (isOldStyle ? " old-style" : "");
  } else {
    OVFileSystemReference unpacked;
    status = SettingsUtils::UnpackageOldSettingsFile(file, destination, unpacked, true);
    TString name;
    if (status == 0 && unpacked.GetName(name) == 0) found = Summary(name);
  }
  const long peak = Bench::StatusKilobytes("VmHWM:");
  std::printf("%d %ld %s\n", status, peak - before, found.c_str());
  return 0;
}

struct Result {
  bool ok = false;
  int status = 0;
  double multiple = 0;
  std::string found;
};

// Runs this program on `file` in a process of its own, in a home of its own.
Result RunChild(const fs::path& self, const fs::path& work, const char* mode,
                const fs::path& file) {
  const fs::path home = work / "home", out = work / "out";
  fs::remove_all(home);
  for (const char* folder : {"data", "config", "installed"}) fs::create_directories(home / folder);
  const std::string command =
      "HOME='" + home.string() + "' XDG_DATA_HOME='" + (home / "data").string() +
      "' XDG_CONFIG_HOME='" + (home / "config").string() + "' KESTRAIL_UI=text LC_ALL=C '" +
      self.string() + "' " + mode + " '" + file.string() + "' '" + (home / "installed").string() +
      "' </dev/null >'" + out.string() + "' 2>&1";
  Result result;
  if (std::system(command.c_str()) != 0) return result;
  std::ifstream in(out);
  long kilobytes = 0;
  if (!(in >> result.status >> kilobytes)) return result;
  std::getline(in >> std::ws, result.found);
  result.ok = true;
  result.multiple = kilobytes * 1024.0 / static_cast<double>(fs::file_size(file));
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  // Documents take their memory as the programs' do.
  Xml::SetMemoryFunctions({AllocateMemoryBlock, FreeMemoryBlock, PrepareMemoryForWriting});
  if (argc == 4) return Run(argv[1], argv[2], argv[3]);
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const fs::path work =
      fs::temp_directory_path() / ("kestrail-memory-" + std::to_string(std::random_device()()));
  fs::create_directories(work);
  const fs::path file = work / "setting";

  std::printf("%-19s %-8s %8s %7s %10s   %s\n", "shape", "step", "MiB", "status", "peak/size",
              "found (set filter name)");
  bool met = true;
  for (const Shape& shape : Shapes()) {
    std::ofstream(file, std::ios::binary) << shape.make();
    for (const char* mode : {"--examine", "--install"}) {
      if (std::string(mode) == "--install" && !shape.install) continue;
      const Result r = RunChild(self, work, mode, file);
      const double mib = static_cast<double>(fs::file_size(file)) / (1 << 20);
      if (!r.ok) {
        std::printf("%-19s %-8s %8.2f %7s\n", shape.name, mode + 2, mib, "failed");
        met = false;
        continue;
      }
      met = met && r.multiple <= kTarget;
      std::printf("%-19s %-8s %8.2f %7d %9.2fx%s  %s\n", shape.name, mode + 2, mib, r.status,
                  r.multiple, r.multiple <= kTarget ? " " : "!", r.found.c_str());
    }
  }
  fs::remove_all(work);
  std::printf("\ntarget:\n  %s peak <= %.0fx the file's size on every shape and step\n",
              met ? "MET " : "MISS", kTarget);
  return 0;
}
