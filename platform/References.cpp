// References.cpp: what the 80 bytes of an FSRef hold and how they lead back to their object: the
// folders this process holds open, the names it has met, and the checks that a reference's object
// is still the one it was made for.
#include "platform/internal/PosixFiles.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/DiskBackend.h"

namespace {

// The marker tells a reference of this process from zeros and from stray bytes.
struct ReferenceBytes {
  UInt32 m_nMarker;
  UInt32 m_nFolder;
  UInt32 m_nName;
  UInt32 m_nSelf;
  UInt64 m_nDevice;
  UInt64 m_nInode;
  SInt64 m_nBirthSeconds;
  UInt32 m_nBirthNanoseconds;
  UInt32 m_bHasBirthTime;
};
static_assert(sizeof(ReferenceBytes) <= sizeof(FSRef), "a reference must fit in an FSRef");

const UInt32 kReferenceMarker = MakeFourCharCode("KsRf");

// References carry indices rather than names, which would not fit in 80 bytes. Each name is stored
// once; entries are never removed, as references may be copied anywhere and live as long as the
// process.
class NameTable {
 public:
  UInt32 Intern(const std::string& name) {
    auto found = m_mapIndices.find(name);
    if (found != m_mapIndices.end()) return found->second;
    m_vecNames.push_back(name);
    const UInt32 index = static_cast<UInt32>(m_vecNames.size() - 1);
    m_mapIndices.emplace(name, index);
    return index;
  }
  const std::string* Find(UInt32 index) const {
    return index < m_vecNames.size() ? &m_vecNames[index] : nullptr;
  }

 private:
  std::vector<std::string> m_vecNames;
  std::unordered_map<std::string, UInt32> m_mapIndices;
};

NameTable& Names() {
  static NameTable* table = new NameTable;  // never destroyed: references outlive statics
  return *table;
}

// The folders held open, one descriptor each however often they are met. A deleted folder is let
// go once many are held, and its index may serve another folder later: a reference checks the
// identity of what it reaches, so an old one fails there rather than reach that other.
class HeldFolders {
 public:
  struct Entry {
    int m_nDescriptor;  // O_PATH; -1 once let go
    ObjectIdentity m_identity;
    UInt32 m_nFoundIn;  // where it was found, kNoFolder for a path: a start for Locate
    std::string m_strFoundAs;
  };

  // Takes `fd` over: its folder's index, the one it already had when it is held.
  OSErr Hold(int fd, const ObjectIdentity& identity, UInt32 foundIn, const std::string& foundAs,
             UInt32& index) {
    // A held descriptor pins its folder's inode, so no other folder can take that identity while
    // it is held: the folder just opened is the held one, and alive.
    auto found = m_mapByIdentity.find(identity);
    if (found != m_mapByIdentity.end()) {
      close(fd);
      index = found->second;
      return noErr;
    }
    if (HeldCount() >= kMostHeld) LetGoOfDeleted();
    if (HeldCount() >= kMostHeld) {
      close(fd);
      return tmfoErr;
    }
    if (m_vecFree.empty()) {
      m_vecEntries.push_back({fd, identity, foundIn, foundAs});
      index = static_cast<UInt32>(m_vecEntries.size() - 1);
    } else {
      index = m_vecFree.back();
      m_vecFree.pop_back();
      m_vecEntries[index] = {fd, identity, foundIn, foundAs};
    }
    m_mapByIdentity[identity] = index;
    return noErr;
  }

  std::size_t Size() const { return m_vecEntries.size(); }

  const Entry* Find(UInt32 index) const {
    return index < m_vecEntries.size() && m_vecEntries[index].m_nDescriptor >= 0
               ? &m_vecEntries[index]
               : nullptr;
  }

 private:
  // Far below the descriptor limit: a run holds a handful, a long test a few hundred at most.
  static const std::size_t kMostHeld = 512;

  std::size_t HeldCount() const { return m_vecEntries.size() - m_vecFree.size(); }

  bool IsAlive(UInt32 index) const {
    struct stat status;
    const int fd = m_vecEntries[index].m_nDescriptor;
    return fd >= 0 && fstat(fd, &status) == 0 && status.st_nlink > 0;
  }
  void LetGo(UInt32 index) {
    Entry& entry = m_vecEntries[index];
    if (entry.m_nDescriptor < 0) return;
    close(entry.m_nDescriptor);
    entry.m_nDescriptor = -1;
    entry.m_strFoundAs.clear();
    m_mapByIdentity.erase(entry.m_identity);
    m_vecFree.push_back(index);
  }
  void LetGoOfDeleted() {
    for (UInt32 index = 0; index < m_vecEntries.size(); ++index)
      if (m_vecEntries[index].m_nDescriptor >= 0 && !IsAlive(index)) LetGo(index);
  }

  std::vector<Entry> m_vecEntries;
  std::vector<UInt32> m_vecFree;  // indices of folders let go
  std::map<ObjectIdentity, UInt32> m_mapByIdentity;
};

HeldFolders& Held() {
  static HeldFolders* folders = new HeldFolders;  // never destroyed: references outlive statics
  return *folders;
}

void Describe(const struct statx& status, ObjectOnDisk& object) {
  object.m_identity.m_nDevice = makedev(status.stx_dev_major, status.stx_dev_minor);
  object.m_identity.m_nInode = status.stx_ino;
  object.m_identity.m_bHasBirthTime = (status.stx_mask & STATX_BTIME) != 0;
  object.m_identity.m_nBirthSeconds =
      object.m_identity.m_bHasBirthTime ? status.stx_btime.tv_sec : 0;
  object.m_identity.m_nBirthNanoseconds =
      object.m_identity.m_bHasBirthTime ? status.stx_btime.tv_nsec : 0;
  object.m_bIsDirectory = S_ISDIR(status.stx_mode);
  object.m_bIsRegularFile = S_ISREG(status.stx_mode);
  object.m_bIsLink = S_ISLNK(status.stx_mode);
  object.m_nOwner = status.stx_uid;
  object.m_nLinkCount = status.stx_nlink;
  object.m_nSize = status.stx_size;
  object.m_nAllocated = status.stx_blocks * 512;
  object.m_nModifiedSeconds = status.stx_mtime.tv_sec;
  object.m_nModifiedNanoseconds = status.stx_mtime.tv_nsec;
}

// Holds the folder `fd` that `object` describes, found as `name` in `folder`.
OSErr HoldDescribed(int fd, UInt32 folder, const std::string& name, ObjectOnDisk& object) {
  object.m_nFolder = folder;
  object.m_strName = name;
  return Held().Hold(fd, object.m_identity, folder, name, object.m_nSelf);
}

// Looked at directly rather than through the disk backend: a fixed fact of the system, which a
// test's failing backend must not change for the rest of the process.
const ObjectIdentity& RootIdentity() {
  static const ObjectIdentity root = [] {
    ObjectOnDisk object;
    struct statx status;
    if (statx(AT_FDCWD, "/", 0, STATX_BASIC_STATS | STATX_BTIME, &status) == 0)
      Describe(status, object);
    return object.m_identity;
  }();
  return root;
}

// Finds the object `identity`, which the kernel calls `path`, by its place: its folder, held, and
// its name there. fnfErr when something else is there by now.
OSErr FindPlace(const std::string& path, const ObjectIdentity& identity, UInt32& folder,
                std::string& name) {
  if (path.empty() || path[0] != '/') return fnfErr;  // no path in this process's view
  std::string folderPath;
  SplitPath(path, folderPath, name);
  int fd;
  const int error = ActiveDiskBackend().Open(AT_FDCWD, folderPath.c_str(),
                                             O_PATH | O_DIRECTORY | O_CLOEXEC, 0, fd);
  if (error != 0) return MacErrorFromErrno(error);
  ObjectOnDisk parent;
  const OSErr err = FindOpened(fd, parent);
  if (err != noErr) return err;
  folder = parent.m_nSelf;
  ObjectOnDisk there;
  return LookAt(folder, name, there) == 0 && there.m_identity == identity ? noErr : fnfErr;
}

}  // namespace

void SplitPath(const std::string& path, std::string& folder, std::string& name) {
  const std::size_t slash = path.rfind('/');
  folder = slash == 0 ? std::string(1, '/') : path.substr(0, slash);
  name = path.substr(slash + 1);
}

int HeldDescriptor(UInt32 folder) {
  const HeldFolders::Entry* entry = Held().Find(folder);
  return entry != nullptr ? entry->m_nDescriptor : -1;
}

int HeldDescriptorOnDevice(UInt64 device) {
  for (UInt32 index = 0; index < Held().Size(); ++index) {
    const HeldFolders::Entry* entry = Held().Find(index);
    if (entry != nullptr && entry->m_identity.m_nDevice == device) return entry->m_nDescriptor;
  }
  return -1;
}

int LookAtHeld(UInt32 self, ObjectOnDisk& object) {
  const HeldFolders::Entry* entry = Held().Find(self);
  if (entry == nullptr) return ENOENT;
  const int error = LookAtDescriptor(entry->m_nDescriptor, object);
  if (error != 0) return error;
  // Removed, though still open here: gone for everyone else.
  if (object.m_nLinkCount == 0) return ENOENT;
  object.m_nSelf = self;
  object.m_nFolder = entry->m_nFoundIn;
  object.m_strName = entry->m_strFoundAs;
  return 0;
}

int LookAtDescriptor(int fd, ObjectOnDisk& object) {
  struct statx status;
  const int error = ActiveDiskBackend().Look(fd, "", 0, status);
  if (error == 0) Describe(status, object);
  return error;
}

int LookAt(UInt32 folder, const std::string& name, ObjectOnDisk& object) {
  const int fd = HeldDescriptor(folder);
  if (fd < 0) return ENOENT;
  struct statx status;
  const int error = ActiveDiskBackend().Look(fd, name.c_str(), AT_SYMLINK_NOFOLLOW, status);
  if (error != 0) return error;
  Describe(status, object);
  object.m_nFolder = folder;
  object.m_strName = name;
  object.m_nSelf = kNoFolder;
  return 0;
}

int Find(UInt32 folder, const std::string& name, ObjectOnDisk& object) {
  const int folderFd = HeldDescriptor(folder);
  if (folderFd < 0) return ENOENT;
  // Opened first and looked at through the descriptor: a folder held is the very one looked at.
  int fd;
  DiskBackend& disk = ActiveDiskBackend();
  int error = disk.Open(folderFd, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC, 0, fd);
  if (error != 0) return error;
  error = LookAtDescriptor(fd, object);
  if (error != 0) {
    close(fd);
    return error;
  }
  object.m_nFolder = folder;
  object.m_strName = name;
  object.m_nSelf = kNoFolder;
  if (!object.m_bIsDirectory) {
    close(fd);
    return 0;
  }
  const OSErr err = HoldDescribed(fd, folder, name, object);
  return err == noErr ? 0 : err == tmfoErr ? EMFILE : EIO;
}

OSErr FindOpened(int fd, ObjectOnDisk& object) {
  int error = LookAtDescriptor(fd, object);
  if (error != 0) {
    close(fd);
    return MacErrorFromErrno(error);
  }
  if (object.m_bIsDirectory) return HoldDescribed(fd, kNoFolder, std::string(), object);
  // Anything else lives by its name in a held folder: the one the kernel says holds it.
  std::string path;
  error = ActiveDiskBackend().ReadLink(fd, "", path);
  close(fd);
  if (error != 0) return MacErrorFromErrno(error);
  const OSErr err = FindPlace(path, object.m_identity, object.m_nFolder, object.m_strName);
  object.m_nSelf = kNoFolder;
  return err;
}

void MakeReference(const ObjectOnDisk& object, FSRef* ref) {
  const ObjectIdentity& identity = object.m_identity;
  ReferenceBytes bytes = {kReferenceMarker,
                          object.m_nFolder,
                          Names().Intern(object.m_strName),
                          object.m_nSelf,
                          identity.m_nDevice,
                          identity.m_nInode,
                          identity.m_nBirthSeconds,
                          identity.m_nBirthNanoseconds,
                          identity.m_bHasBirthTime};
  std::memset(ref, 0, sizeof *ref);
  std::memcpy(ref->hidden, &bytes, sizeof bytes);
}

OSErr ResolveReference(const FSRef* ref, ObjectOnDisk& object) {
  if (ref == nullptr) return paramErr;
  ReferenceBytes bytes;
  std::memcpy(&bytes, ref->hidden, sizeof bytes);
  const std::string* name =
      bytes.m_nMarker == kReferenceMarker ? Names().Find(bytes.m_nName) : nullptr;
  if (name == nullptr) return nsvErr;
  const ObjectIdentity identity = {bytes.m_nDevice, bytes.m_nInode, bytes.m_nBirthSeconds,
                                   bytes.m_nBirthNanoseconds, bytes.m_bHasBirthTime != 0};
  // A folder answers through its own handle, wherever it has gone; anything else by its name in
  // the folder that held it.
  const int error = bytes.m_nSelf != kNoFolder ? LookAtHeld(bytes.m_nSelf, object)
                                               : LookAt(bytes.m_nFolder, *name, object);
  // Whatever stands in the way (the object or its folder gone), the object the reference was
  // made for is not there.
  if (error == ENOENT || error == ENOTDIR) return fnfErr;
  if (error != 0) return MacErrorFromErrno(error);
  if (!(object.m_identity == identity)) return fnfErr;
  if (bytes.m_nSelf != kNoFolder) {
    object.m_nFolder = bytes.m_nFolder;
    object.m_strName = *name;
  }
  return noErr;
}

OSErr ResolveFolder(const FSRef* ref, ObjectOnDisk& folder) {
  const OSErr err = ResolveReference(ref, folder);
  if (err == fnfErr || (err == noErr && folder.m_nSelf == kNoFolder)) return dirNFErr;
  return err;
}

bool IsRoot(const ObjectOnDisk& object) {
  return object.m_bIsDirectory && object.m_identity == RootIdentity();
}

OSErr Locate(ObjectOnDisk& object) {
  if (object.m_nSelf == kNoFolder) return noErr;  // found by its name in its folder
  if (IsRoot(object)) {
    object.m_nFolder = kNoFolder;
    object.m_strName.clear();
    return noErr;
  }
  ObjectOnDisk there;
  if (object.m_nFolder != kNoFolder && LookAt(object.m_nFolder, object.m_strName, there) == 0 &&
      there.m_identity == object.m_identity)
    return noErr;
  // Moved since it was found, or found by path: the kernel knows where it is now.
  std::string path;
  const OSErr err = CurrentPath(object, path);
  return err != noErr ? err
                      : FindPlace(path, object.m_identity, object.m_nFolder, object.m_strName);
}

OSErr CurrentPath(ObjectOnDisk& object, std::string& path) {
  const UInt32 folder = object.m_nSelf != kNoFolder ? object.m_nSelf : object.m_nFolder;
  const int fd = HeldDescriptor(folder);
  ObjectOnDisk held;
  if (fd < 0 || LookAtHeld(folder, held) != 0) return fnfErr;
  // Read last, so that the path is the one of the latest moment. A folder removed meanwhile still
  // has one, marked as deleted: no place to name.
  std::string folderPath;
  const int error = ActiveDiskBackend().ReadLink(fd, "", folderPath);
  if (error != 0) return MacErrorFromErrno(error);
  const std::string deleted = " (deleted)";
  if (folderPath.empty() || folderPath[0] != '/' ||
      (folderPath.size() > deleted.size() &&
       folderPath.compare(folderPath.size() - deleted.size(), deleted.size(), deleted) == 0 &&
       LookAtHeld(folder, held) != 0))
    return fnfErr;
  if (object.m_nSelf != kNoFolder)
    path = folderPath;
  else
    path = folderPath == "/" ? "/" + object.m_strName : folderPath + "/" + object.m_strName;
  return noErr;
}

std::string DescriptorPath(int fd, const std::string& name) {
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  return name.empty() ? path : path + "/" + name;
}

std::string PathThroughHeld(UInt32 folder, const std::string& name) {
  return DescriptorPath(HeldDescriptor(folder), name);
}

namespace {

// The folders whose flush waits for FSEndDeferredFolderFlush, while one is deferred.
std::set<UInt32>* s_pDeferredFlushes = nullptr;

}  // namespace

void FSBeginDeferredFolderFlush() {
  if (s_pDeferredFlushes == nullptr) s_pDeferredFlushes = new std::set<UInt32>;
}

void FSEndDeferredFolderFlush() {
  std::set<UInt32>* const folders = std::exchange(s_pDeferredFlushes, nullptr);
  if (folders == nullptr) return;
  for (UInt32 folder : *folders) FlushFolder(folder);
  delete folders;
}

int FlushFolderAt(int at, const char* name, bool wholeFileSystem) {
  DiskBackend& disk = ActiveDiskBackend();
  int fd;
  // Held folders are held without read access; flushing needs a descriptor opened for reading.
  int error = disk.Open(at, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0, fd);
  if (error != 0) return error;
  error = wholeFileSystem ? disk.FlushFileSystem(fd) : disk.Flush(fd);
  close(fd);
  return error;
}

void FlushFolder(UInt32 folder) {
  if (s_pDeferredFlushes != nullptr) {
    s_pDeferredFlushes->insert(folder);
    return;
  }
  FlushFolderAt(HeldDescriptor(folder), ".", false);
}
