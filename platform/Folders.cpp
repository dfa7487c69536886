// Folders.cpp: the Folder Manager: the user's data folders under the desktop's base directory.
#include "platform/Files.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "platform/internal/PosixFiles.h"  // MacErrorFromErrno, UserBaseFolder

namespace {

// mkdir -p: makes each missing folder of `path`. 0 or an errno value.
int MakeFolders(const std::string& path) {
  for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string prefix = path.substr(0, slash);
    // The desktop's rules make the user's base directories private to the user.
    if (mkdir(prefix.c_str(), 0700) != 0 && errno != EEXIST) return errno;
    if (slash == std::string::npos) return 0;
  }
}

}  // namespace

bool UserBaseFolder(const char* variable, const char* underHome, std::string& path) {
  const char* value = std::getenv(variable);
  if (value != nullptr && value[0] == '/') {
    path = value;
    return true;
  }
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') return false;
  path = std::string(home) + "/" + underHome;
  return true;
}

OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder,
                   FSRef* foundRef) {
  if (foundRef == nullptr) return paramErr;
  if (vRefNum != kOnSystemDisk && vRefNum != kOnAppropriateDisk && vRefNum != kUserDomain)
    return nsvErr;
  std::string path;
  if (!UserBaseFolder("XDG_DATA_HOME", ".local/share", path)) return fnfErr;
  if (folderType == kFrameworksFolderType)
    path += "/Frameworks";
  else if (folderType != kApplicationSupportFolderType)
    return fnfErr;
  if (createFolder) {
    const int error = MakeFolders(path);
    if (error != 0) return MacErrorFromErrno(error);
  }
  Boolean isDirectory = false;
  const OSErr err =
      FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), foundRef, &isDirectory);
  return err == noErr && !isDirectory ? dirNFErr : err;
}
