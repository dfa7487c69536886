// Folders.cpp: the Folder Manager: the user's data folders under the desktop's base directory.
#include "platform/Files.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include "platform/DiskBackend.h"
#include "platform/internal/PosixFiles.h"  // CopyPathOut, MacErrorFromErrno, UserBaseFolder

namespace {

// mkdir -p: makes each missing folder of `path`. 0 or an errno value.
int MakeFolders(const std::string& path) {
  for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string prefix = path.substr(0, slash);
    // The desktop's rules make the user's base directories private to the user.
    const int error = ActiveDiskBackend().MakeFolder(AT_FDCWD, prefix.c_str(), 0700);
    if (error != 0 && error != EEXIST) return error;
    if (slash == std::string::npos) return 0;
  }
}

// The folder of `folderType` for the current user, by path.
OSErr FolderPath(FSVolumeRefNum vRefNum, OSType folderType, std::string& path) {
  if (vRefNum != kOnSystemDisk && vRefNum != kOnAppropriateDisk && vRefNum != kUserDomain)
    return nsvErr;
  if (!UserBaseFolder("XDG_DATA_HOME", ".local/share", path)) return fnfErr;
  if (folderType == kFrameworksFolderType)
    path += "/Frameworks";
  else if (folderType != kApplicationSupportFolderType)
    return fnfErr;
  return noErr;
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
  std::string path;
  const OSErr err = FolderPath(vRefNum, folderType, path);
  if (err != noErr) return err;
  Boolean isDirectory = false;
  OSErr found = FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), foundRef, &isDirectory);
  // Made only when it is not there: each setting of a pack looks for it.
  if (createFolder && found == fnfErr) {
    const int error = MakeFolders(path);
    if (error != 0) return MacErrorFromErrno(error);
    found = FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), foundRef, &isDirectory);
  }
  return found == noErr && !isDirectory ? dirNFErr : found;
}

OSErr FSFindFolderPath(FSVolumeRefNum vRefNum, OSType folderType, UInt8* path, UInt32 maxPathSize) {
  std::string text;
  const OSErr err = FolderPath(vRefNum, folderType, text);
  return err != noErr ? err : CopyPathOut(text, path, maxPathSize);
}
