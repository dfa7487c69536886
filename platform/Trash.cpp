// Trash.cpp: moving objects to the user's Trash as the desktop keeps it: the home Trash for
// objects on the file system of the user's data folder, a Trash at the top of any other file
// system, each with a record of where its objects came from, so that a file manager's Restore puts
// them back.
//
// Written over the calls of the disk seam rather than left to GIO, whose trashing moves an object
// away at once: a setting about to be replaced must stay at its place, whole, until its
// replacement takes the name, and be in the Trash already by then. GIO still decides, through the
// desktop module, which file systems have no Trash of their own, as it does for the desktop.
#include "platform/Files.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/DiskBackend.h"
#include "platform/desktop/Desktop.h"
#include "platform/internal/PosixFiles.h"
#include "platform/internal/Unicode.h"

namespace {

// A Trash found or made for one file system: its two folders, and where the paths it records
// start ("" for the home Trash, whose records hold absolute paths).
struct TrashFolders {
  std::string m_strFiles, m_strInfo, m_strTop;
};

// The records of objects put in the Trash by this process, by the held "files" folder and the
// name there: deleting such an object deletes its record too.
std::map<std::pair<UInt32, std::string>, std::string>& Records() {
  static auto* records = new std::map<std::pair<UInt32, std::string>, std::string>;
  return *records;
}

bool LookAtPath(const std::string& path, struct statx& status) {
  return ActiveDiskBackend().Look(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, status) == 0;
}

UInt64 DeviceOf(const struct statx& status) {
  return makedev(status.stx_dev_major, status.stx_dev_minor);
}

// Whether `path` is a folder of this user's that is no link, or, when it is missing, could be made
// (with `make`, it is made, 0700). `made` collects the folders made, to be removed again if the
// Trash cannot be finished.
bool HasOwnFolder(const std::string& path, bool make, std::vector<std::string>& made) {
  struct statx status;
  if (!LookAtPath(path, status)) {
    std::string parent, name;
    SplitPath(path, parent, name);
    if (!make) return ActiveDiskBackend().MayChange(AT_FDCWD, parent.c_str()) == 0;
    if (ActiveDiskBackend().MakeFolder(AT_FDCWD, path.c_str(), 0700) != 0) return false;
    made.push_back(path);
    if (!LookAtPath(path, status)) return false;
  }
  return S_ISDIR(status.stx_mode) && status.stx_uid == geteuid();
}

// The Trash `folder`, found, or made with `make`; whatever was made goes again when it cannot be
// finished, so that a full disk leaves no half-made Trash behind.
bool HasTrash(const std::string& folder, const std::string& top, bool make, TrashFolders& trash) {
  trash = {folder + "/files", folder + "/info", top};
  std::vector<std::string> made;
  if (HasOwnFolder(folder, make, made) && (!make || (HasOwnFolder(trash.m_strFiles, true, made) &&
                                                     HasOwnFolder(trash.m_strInfo, true, made))))
    return true;
  for (auto it = made.rbegin(); it != made.rend(); ++it)
    ActiveDiskBackend().Remove(AT_FDCWD, it->c_str(), true);
  return false;
}

// The top folder of the file system `device` that holds `path`: its highest folder on it. False
// when a folder on the way cannot be looked at: a Trash made lower down would be no one's.
bool FindTopFolder(const std::string& path, UInt64 device, std::string& top) {
  std::string parent, name;
  SplitPath(path, top, name);
  while (top != "/") {
    SplitPath(top, parent, name);
    struct statx status;
    if (!LookAtPath(parent, status)) return false;
    if (DeviceOf(status) != device) break;
    top = parent;
  }
  return true;
}

// Whether the file system mounted at `top` is one of the system's own (a tmpfs, a kernel's file
// system), where the desktop keeps no Trash and a file manager would show none: what was put
// there could not be restored. Without the desktop module, none is taken for one.
bool IsSystemInternal(const std::string& top) {
  Desktop* desktop = LoadedDesktop();
  return desktop != nullptr && desktop->IsSystemInternal(top);
}

// The Trash for an object at `path` on the file system `device`: the home Trash when the user's
// data folder lies there, else the file system's own: "/.Trash/UID" where the administrator made
// a shared ".Trash" (a sticky folder, no link), else "/.Trash-UID". With `make` the Trash is made
// where it is missing; without, only whether it could be. False when none can be had.
bool FindTrash(const std::string& path, UInt64 device, bool make, TrashFolders& trash) {
  std::string data, top;
  struct statx status;
  if (UserBaseFolder("XDG_DATA_HOME", ".local/share", data)) {
    // Where the data folder cannot be looked at, it is not known which Trash serves.
    if (!LookAtPath(data, status)) return false;
    if (DeviceOf(status) == device) return HasTrash(data + "/Trash", "", make, trash);
  }
  if (!FindTopFolder(path, device, top) || IsSystemInternal(top)) return false;
  const std::string base = top == "/" ? std::string() : top;
  const std::string uid = std::to_string(geteuid());
  if (LookAtPath(base + "/.Trash", status) && S_ISDIR(status.stx_mode) &&
      (status.stx_mode & S_ISVTX) != 0 && HasTrash(base + "/.Trash/" + uid, top, make, trash))
    return true;
  return HasTrash(base + "/.Trash-" + uid, top, make, trash);
}

// `path` as a record's Path: relative to the top folder of a file system's own Trash, and escaped
// as in a URL.
std::string RecordedPath(const std::string& path, const std::string& top) {
  return PercentEscaped(top.empty() ? path : path.substr(top == "/" ? 1 : top.size() + 1), true);
}

// Writes the whole of `text` to `fd` and makes it durable.
int WriteDurably(int fd, const std::string& text) {
  DiskBackend& disk = ActiveDiskBackend();
  for (std::size_t done = 0; done < text.size();) {
    std::size_t moved = 0;
    const int error = disk.Write(fd, text.data() + done, text.size() - done, moved);
    if (error != 0) return error;
    if (moved == 0) return EIO;
    done += moved;
  }
  return disk.Flush(fd);
}

// Names the record `name`.trashinfo, made here and never over another, with the object's place
// and the moment; `name` is the object's own, then "name.2", "name.3", ... while one is taken.
int WriteRecord(const TrashFolders& trash, const std::string& own, const std::string& path,
                std::string& name) {
  DiskBackend& disk = ActiveDiskBackend();
  char moment[32];
  const std::time_t now = std::time(nullptr);
  std::tm local;
  localtime_r(&now, &local);
  std::strftime(moment, sizeof moment, "%Y-%m-%dT%H:%M:%S", &local);
  const std::string record = "[Trash Info]\nPath=" + RecordedPath(path, trash.m_strTop) +
                             "\nDeletionDate=" + moment + "\n";
  for (int number = 1; number < 10000; ++number) {
    name = number == 1 ? own : own + "." + std::to_string(number);
    struct statx status;
    if (LookAtPath(trash.m_strFiles + "/" + name, status)) continue;
    const std::string recordPath = trash.m_strInfo + "/" + name + ".trashinfo";
    int fd;
    int error = disk.Open(AT_FDCWD, recordPath.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600, fd);
    if (error == EEXIST) continue;
    if (error != 0) return error;
    error = WriteDurably(fd, record);
    close(fd);
    if (error != 0) disk.Remove(AT_FDCWD, recordPath.c_str(), false);
    return error;
  }
  return EEXIST;
}

// The object `ref` names, its path, and the Trash for it, found or, with `make`, made: noErr,
// noTrashErr, or the error of a reference that names nothing movable.
OSErr FindTrashFor(const FSRef* ref, bool make, ObjectOnDisk& object, std::string& path,
                   TrashFolders& trash) {
  OSErr err = ResolveReference(ref, object);
  if (err == noErr) err = Locate(object);
  if (err == noErr && (IsRoot(object) || object.m_nFolder == kNoFolder)) err = paramErr;
  if (err == noErr) err = CurrentPath(object, path);
  if (err != noErr) return err;
  return FindTrash(path, object.m_identity.m_nDevice, make, trash) ? noErr : noTrashErr;
}

}  // namespace

OSStatus FSMoveObjectToTrashSync(const FSRef* source, FSRef* target, OptionBits options) {
  ObjectOnDisk object;
  std::string path;
  TrashFolders trash;
  const OSErr err = FindTrashFor(source, true, object, path, trash);
  if (err != noErr) return err;
  std::string name;
  int error = WriteRecord(trash, object.m_strName, path, name);
  if (error != 0) return MacErrorFromErrno(error);
  DiskBackend& disk = ActiveDiskBackend();
  const std::string files = trash.m_strFiles + "/" + name;
  const std::string record = trash.m_strInfo + "/" + name + ".trashinfo";
  const int folder = HeldDescriptor(object.m_nFolder);
  error = (options & kFSFileOperationLeaveSourceInPlace) != 0
              ? disk.Link(folder, object.m_strName.c_str(), AT_FDCWD, files.c_str())
              : disk.Rename(folder, object.m_strName.c_str(), AT_FDCWD, files.c_str(), false);
  // The record and the object in the Trash are durable before anything else changes.
  if (error == 0) error = FlushFolderAt(AT_FDCWD, trash.m_strFiles.c_str(), false);
  if (error == 0) error = FlushFolderAt(AT_FDCWD, trash.m_strInfo.c_str(), false);
  if (error != 0) {
    disk.Remove(AT_FDCWD, files.c_str(), false);
    disk.Remove(AT_FDCWD, record.c_str(), false);
    return error == EXDEV || error == EPERM ? noTrashErr : MacErrorFromErrno(error);
  }
  if ((options & kFSFileOperationLeaveSourceInPlace) == 0) FlushFolder(object.m_nFolder);
  // The object in the Trash, reached through its held "files" folder like any other.
  FSRef filesFolder;
  ObjectOnDisk held, trashed;
  if (FSPathMakeRef(reinterpret_cast<const UInt8*>(trash.m_strFiles.c_str()), &filesFolder,
                    nullptr) == noErr &&
      ResolveReference(&filesFolder, held) == noErr && LookAt(held.m_nSelf, name, trashed) == 0) {
    Records()[{held.m_nSelf, name}] = record;
    if (target != nullptr) MakeReference(trashed, target);
  }
  return noErr;
}

Boolean FSCanMoveObjectToTrash(const FSRef* ref) {
  ObjectOnDisk object;
  std::string path;
  TrashFolders trash;
  return FindTrashFor(ref, false, object, path, trash) == noErr;
}

void ForgetTrashRecord(UInt32 folder, const std::string& name) {
  const auto found = Records().find({folder, name});
  if (found == Records().end()) return;
  ActiveDiskBackend().Remove(AT_FDCWD, found->second.c_str(), false);
  Records().erase(found);
}
