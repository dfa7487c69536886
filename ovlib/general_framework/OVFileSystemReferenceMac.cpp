#include "ovlib/general_framework/OVFileSystemReferenceMac.h"

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ovlib/base_ui_framework/mac/MacUtil.h"

namespace {

const char kSource[] = "ovlib/general_framework/OVFileSystemReferenceMac";

// The kind of object for IsFile and IsFolder. A reference that names nothing is this program's
// fault and is reported under the asking operation's name and line; an object that another
// process removed meanwhile is not, and the answer is simply false.
bool ReadKind(const FSRef* ref, const char* operation, unsigned int line, Boolean& isDirectory) {
  const OSErr err = FSGetFinderInfo(ref, nullptr, nullptr, &isDirectory);
  if (err == nsvErr) OV_AssertFailed(kSource, line, operation);
  return err == noErr;
}

// The catalog information of every file the library makes: type 'TEXT', creator four spaces.
FSCatalogInfo TextFileInfo() {
  FSCatalogInfo catalogInfo;
  std::memset(&catalogInfo, 0, sizeof catalogInfo);
  FileInfo finderInfo = {};
  finderInfo.fileType = MakeFourCharCode("TEXT");
  finderInfo.fileCreator = MakeFourCharCode("    ");
  std::memcpy(catalogInfo.finderInfo, &finderInfo, sizeof finderInfo);
  return catalogInfo;
}

// Writes the data fork of `file` with `fill`, if any, and with `flush` makes it durable.
OSErr Fill(const FSRef* file, const std::function<OSErr(SInt16 fork)>& fill, bool flush) {
  HFSUniStr255 dataForkName;
  SInt16 fork;
  OSErr err = FSGetDataForkName(&dataForkName);
  if (err == noErr)
    err = FSOpenFork(file, dataForkName.length, dataForkName.unicode, fsWrPerm, &fork);
  if (err != noErr) return err;
  if (fill) err = fill(fork);
  if (err == noErr && flush) err = FSFlushFork(fork);
  const OSErr closeErr = FSCloseFork(fork);
  return err != noErr ? err : closeErr;
}

// Numbered names go up to "Name 9999.xml"; a folder holding all of them takes no more.
const int kLastNumber = 9999;

// `name` with ` number` before its extension: "Soft Edges 2.xml"; a name whose only dot starts it
// (".xml") has no extension.
std::vector<UniChar> NumberedName(UniCharCount nameLength, const UniChar* name, int number) {
  std::vector<UniChar> numbered(name, name + nameLength);
  std::size_t dot = nameLength;
  for (std::size_t i = nameLength; i-- > 1;) {
    if (name[i] == '.') {
      dot = i;
      break;
    }
  }
  std::vector<UniChar> suffix{' '};
  for (char digit : std::to_string(number)) suffix.push_back(static_cast<UniChar>(digit));
  numbered.insert(numbered.begin() + static_cast<std::ptrdiff_t>(dot), suffix.begin(),
                  suffix.end());
  return numbered;
}

// Gives the finished file `temporary` the first free numbered name after `name` in `folder`.
OSErr TakeNumberedName(UniCharCount nameLength, const UniChar* name, const FSRef* temporary,
                       FSRef* newFile) {
  for (int number = 2; number <= kLastNumber; ++number) {
    const std::vector<UniChar> numbered = NumberedName(nameLength, name, number);
    const OSErr err = FSRenameUnicode(temporary, numbered.size(), numbered.data(),
                                      kTextEncodingUnicodeDefault, newFile);
    if (err != dupFNErr) return err;
  }
  return dupFNErr;
}

// Gives the finished file `temporary` the name `name` in `folder`: while the name is free, or
// with `replace` in place of the object that holds it. Another process may take or free the name
// between the look and the step that acts on it; that step then fails, and the next try looks
// again.
OSErr TakeName(const FSRef* folder, UniCharCount nameLength, const UniChar* name, Boolean replace,
               bool trashReplaced, const FSRef* temporary, FSRef* newFile) {
  OSErr err = noErr;
  for (int attempt = 0; attempt < 3; ++attempt) {
    err = FSRenameUnicode(temporary, nameLength, name, kTextEncodingUnicodeDefault, newFile);
    if (err != dupFNErr || !replace) return err;
    FSRef existing, trashed;
    err = FSMakeFSRefUnicode(folder, nameLength, name, kTextEncodingUnicodeDefault, &existing);
    if (err == fnfErr) continue;
    if (err != noErr) return err;
    // In the Trash before it leaves its place: never neither.
    if (trashReplaced) {
      err = FSMoveObjectToTrashSync(&existing, &trashed, kFSFileOperationLeaveSourceInPlace);
      if (err == fnfErr) continue;
      if (err != noErr) return err;
    }
    err = FSReplaceObject(&existing, temporary, nullptr, nullptr, nullptr,
                          kFSReplaceObjectReplaceMetadata, newFile);
    // Still at its place: not in the Trash too.
    if (err != noErr && trashReplaced) FSDeleteObject(&trashed);
    if (err != fnfErr) return err;
  }
  return err;
}

// Gives the finished file `temporary` its name as the options asked: the first free numbered
// one, or `name` itself.
OSErr TakeNameAsAsked(const FSRef* folder, UniCharCount nameLength, const UniChar* name,
                      Boolean replace, bool numbered, bool trashReplaced, const FSRef* temporary,
                      FSRef* newFile) {
  return numbered ? TakeNumberedName(nameLength, name, temporary, newFile)
                  : TakeName(folder, nameLength, name, replace, trashReplaced, temporary, newFile);
}

}  // namespace

OVFileSystemReference::OVFileSystemReference() { std::memset(&m_fsRef, 0, sizeof m_fsRef); }

OVFileSystemReference::OVFileSystemReference(const FSRef& ref) : m_fsRef(ref) {}

OVFileSystemReference::~OVFileSystemReference() {}

int OVFileSystemReference::Delete() const { return FSDeleteObject(&m_fsRef) == noErr ? 0 : -1; }

bool OVFileSystemReference::Exists() const { return FSRefValid(&m_fsRef); }

int OVFileSystemReference::MakeParentReference(OVFileSystemReference& parent) const {
  return FSGetParentRef(&m_fsRef, parent) == noErr ? 0 : -1;
}

bool OVFileSystemReference::IsMisusedAsFolder() const {
  Boolean isDirectory = false;
  const OSErr err = FSGetFinderInfo(&m_fsRef, nullptr, nullptr, &isDirectory);
  return err == nsvErr || (err == noErr && !isDirectory);
}

bool OVFileSystemReference::IsFile() const {
  Boolean isDirectory;
  return ReadKind(&m_fsRef, "IsFile", __LINE__, isDirectory) && !isDirectory;
}

bool OVFileSystemReference::IsFolder() const {
  Boolean isDirectory;
  return ReadKind(&m_fsRef, "IsFolder", __LINE__, isDirectory) && isDirectory;
}

int OVFileSystemReference::SubobjectExists(const TString& name, bool& exists) const {
  if (IsMisusedAsFolder()) OV_AssertFailed(kSource, __LINE__, "SubobjectExists");
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  FSRef child;
  const OSErr err =
      FSMakeFSRefUnicode(&m_fsRef, units.size(), units.data(), kTextEncodingUnicodeDefault, &child);
  exists = err == noErr;
  // A missing child is an answer, not a failure; only other errors become -1.
  return err == noErr || err == fnfErr ? 0 : -1;
}

int OVFileSystemReference::CreateDirectory(const TString& name,
                                           OVFileSystemReference& newFolder) const {
  if (IsMisusedAsFolder()) OV_AssertFailed(kSource, __LINE__, "CreateDirectory");
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  const OSErr err = FSCreateDirectoryUnicode(&m_fsRef, units.size(), units.data(), kFSCatInfoNone,
                                             nullptr, newFolder, nullptr, nullptr);
  return err == noErr ? 0 : -1;
}

int OVFileSystemReference::Rename(const TString& newName) {
  Boolean isDirectory = false;
  if (FSGetFinderInfo(&m_fsRef, nullptr, nullptr, &isDirectory) == noErr && isDirectory)
    OV_AssertFailed(kSource, __LINE__, "Rename");
  FSRef parent;
  if (FSGetParentRef(&m_fsRef, &parent) != noErr) return -1;
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(newName);
  FSRef renamed;
  if (FSMoveRenameObjectUnicode(&m_fsRef, &parent, units.size(), units.data(),
                                kTextEncodingUnicodeDefault, &renamed) != noErr)
    return -1;
  m_fsRef = renamed;
  return 0;
}

int OVFileSystemReference::MakeSubobjectReference(const TString& name,
                                                  OVFileSystemReference& child) const {
  if (IsMisusedAsFolder()) OV_AssertFailed(kSource, __LINE__, "MakeSubobjectReference");
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  const OSErr err =
      FSMakeFSRefUnicode(&m_fsRef, units.size(), units.data(), kTextEncodingUnicodeDefault, child);
  return err == noErr ? 0 : -1;
}

int OVFileSystemReference::GetName(TString& name) const {
  HFSUniStr255 unicodeName;
  if (FSGetCatalogInfo(&m_fsRef, kFSCatInfoNone, nullptr, &unicodeName, nullptr, nullptr) != noErr)
    return -1;
  name = CreateTStringFromUniCharArray(unicodeName.unicode, unicodeName.length);
  return 0;
}

int OVFileSystemReference::GetPath(TString& path) const {
  const OSErr err = CreateTStringFromPathCall(
      [this](UInt8* bytes, UInt32 size) { return FSRefMakePath(&m_fsRef, bytes, size); }, path);
  return err == noErr && !path.empty() ? 0 : -1;
}

int OVFileSystemReference::GetVersion(OVFileVersion& version) const {
  FSCatalogInfo catalogInfo;
  if (FSGetCatalogInfo(&m_fsRef, kFSCatInfoContentMod | kFSCatInfoDataSizes, &catalogInfo, nullptr,
                       nullptr, nullptr) != noErr)
    return -1;
  version.m_nLength = catalogInfo.dataLogicalSize;
  version.m_modified = catalogInfo.contentModDate;
  return 0;
}

bool OVFileSystemReference::HasVersion(const OVFileVersion& version) const {
  OVFileVersion now;
  return GetVersion(now) == 0 && now.m_nLength == version.m_nLength &&
         now.m_modified.highSeconds == version.m_modified.highSeconds &&
         now.m_modified.lowSeconds == version.m_modified.lowSeconds &&
         now.m_modified.fraction == version.m_modified.fraction;
}

int OVFileSystemReference::Copy(const OVFileSystemReference& destinationFolder,
                                OVFileSystemReference& newFile, bool overwrite,
                                const OVFileVersion* sourceVersion,
                                const OVNewFileOptions& options) const {
  HFSUniStr255 dataForkName;
  if (FSGetDataForkName(&dataForkName) != noErr) return -1;
  TString name;
  if (GetName(name) != 0) return -1;
  // The source itself, reached again: its copy would take its place, and this reference would
  // name nothing.
  OVFileSystemReference existing;
  if (destinationFolder.MakeSubobjectReference(name, existing) == 0 &&
      FSCompareFSRefs(existing, *this) == noErr)
    return -1;
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  const OSErr err = FSCreateTextFileUnicode(
      destinationFolder, units.size(), units.data(), overwrite, newFile,
      [&](SInt16 destinationFork) {
        SInt16 sourceFork;
        OSErr copyErr =
            FSOpenFork(&m_fsRef, dataForkName.length, dataForkName.unicode, fsRdPerm, &sourceFork);
        if (copyErr != noErr) return copyErr;
        char buffer[4096];
        copyErr = FSCopyFork(sourceFork, destinationFork, buffer, sizeof buffer);
        FSCloseFork(sourceFork);
        // Data written to the source meanwhile may not be what the caller saw in it.
        if (copyErr == noErr && sourceVersion != nullptr && !HasVersion(*sourceVersion))
          copyErr = ioErr;
        return copyErr;
      },
      options);
  return err == noErr ? 0 : -1;
}

Boolean FSRefValid(const FSRef* ref) {
  return FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr;
}

OSErr FSGetFinderInfo(const FSRef* ref, FinderInfo* info, ExtendedFinderInfo* extendedInfo,
                      Boolean* isDirectory) {
  FSCatalogInfoBitmap whichInfo = kFSCatInfoNone;
  if (info != nullptr) whichInfo |= kFSCatInfoFinderInfo;
  if (extendedInfo != nullptr) whichInfo |= kFSCatInfoFinderXInfo;
  if (isDirectory != nullptr) whichInfo |= kFSCatInfoNodeFlags;
  FSCatalogInfo catalogInfo;
  const OSErr err = FSGetCatalogInfo(ref, whichInfo, &catalogInfo, nullptr, nullptr, nullptr);
  if (err != noErr) return err;
  if (info != nullptr) std::memcpy(info, catalogInfo.finderInfo, sizeof *info);
  if (extendedInfo != nullptr)
    std::memcpy(extendedInfo, catalogInfo.extFinderInfo, sizeof *extendedInfo);
  if (isDirectory != nullptr) *isDirectory = (catalogInfo.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}

OSErr FSGetParentRef(const FSRef* ref, FSRef* parentRef) {
  if (parentRef == nullptr) return paramErr;
  FSCatalogInfo catalogInfo;
  const OSErr err =
      FSGetCatalogInfo(ref, kFSCatInfoNodeID, &catalogInfo, nullptr, nullptr, parentRef);
  if (err != noErr) return err;
  if (catalogInfo.nodeID == fsRtDirID) std::memset(parentRef, 0, sizeof *parentRef);
  return noErr;
}

OSErr FSCopyFork(SInt16 srcRefNum, SInt16 dstRefNum, void* copyBufferPtr,
                 ByteCount copyBufferSize) {
  if (copyBufferPtr == nullptr || copyBufferSize == 0) return paramErr;
  // Reserving the whole destination first means a full disk shows before any data is written.
  // Its length grows only with the data, so a copy cut short never passes for a whole one padded
  // with zeros.
  SInt64 forkSize;
  OSErr err = FSGetForkSize(srcRefNum, &forkSize);
  if (err == noErr)
    err = FSAllocateFork(dstRefNum, kFSAllocAllOrNothingMask, fsFromStart, 0,
                         static_cast<UInt64>(forkSize), nullptr);
  if (err == noErr) err = FSSetForkPosition(srcRefNum, fsFromStart, 0);
  if (err == noErr) err = FSSetForkPosition(dstRefNum, fsFromStart, 0);
  if (err != noErr) return err;
  if (copyBufferSize >= 4096 && copyBufferSize % 4096 != 0) copyBufferSize -= copyBufferSize % 4096;
  OSErr readErr, writeErr;
  do {
    ByteCount readCount = 0;
    readErr =
        FSReadFork(srcRefNum, fsAtMark | noCacheMask, 0, copyBufferSize, copyBufferPtr, &readCount);
    writeErr = FSWriteFork(dstRefNum, fsAtMark | noCacheMask, 0, readCount, copyBufferPtr, nullptr);
  } while (readErr == noErr && writeErr == noErr);
  if (writeErr != noErr) return writeErr;
  if (readErr != eofErr) return readErr;
  return FSSetForkSize(dstRefNum, fsAtMark, 0);
}

OSErr FSMoveRenameObjectUnicode(const FSRef* ref, const FSRef* destDirectory,
                                UniCharCount nameLength, const UniChar* name,
                                TextEncoding textEncodingHint, FSRef* newRef) {
  if (newRef == nullptr) return paramErr;
  FSCatalogInfo destinationInfo, info;
  OSErr err = FSGetCatalogInfo(destDirectory, kFSCatInfoNodeFlags | kFSCatInfoVolume,
                               &destinationInfo, nullptr, nullptr, nullptr);
  if (err != noErr) return err;
  if ((destinationInfo.nodeFlags & kFSNodeIsDirectoryMask) == 0) return dirNFErr;
  FSRef parent;
  err = FSGetCatalogInfo(ref, kFSCatInfoVolume, &info, nullptr, nullptr, &parent);
  if (err != noErr) return err;
  if (info.volume != destinationInfo.volume) return diffVolErr;
  if (FSCompareFSRefs(&parent, destDirectory) == noErr)
    return FSRenameUnicode(ref, nameLength, name, textEncodingHint, newRef);
  // Check the new name before anything moves, so that a taken name leaves the object in place.
  FSRef existing;
  err = FSMakeFSRefUnicode(destDirectory, nameLength, name, textEncodingHint, &existing);
  if (err == noErr) return dupFNErr;
  if (err != fnfErr) return err;
  FSRef moved;
  err = FSMoveObject(ref, destDirectory, &moved);
  if (err != noErr) return err;
  err = FSRenameUnicode(&moved, nameLength, name, textEncodingHint, newRef);
  if (err != noErr) FSMoveObject(&moved, &parent, nullptr);  // back where it was
  return err;
}

OSErr FSCreateTextFileUnicode(const FSRef* folder, UniCharCount nameLength, const UniChar* name,
                              Boolean replace, FSRef* newFile,
                              const std::function<OSErr(SInt16 fork)>& fill,
                              const OVNewFileOptions& options) {
  // A name that is taken, or cannot be one, is known before anything is written.
  FSRef existing;
  OSErr err = FSMakeFSRefUnicode(folder, nameLength, name, kTextEncodingUnicodeDefault, &existing);
  if (err == noErr && !replace && !options.m_bNumberedName) return dupFNErr;
  if (err != noErr && err != fnfErr) return err;
  const FSCatalogInfo catalogInfo = TextFileInfo();
  FSRef temporary;
  err = FSCreateTemporaryFile(folder, kFSCatInfoFinderInfo, &catalogInfo, &temporary);
  if (err != noErr) return err;
  err = Fill(&temporary, fill, options.m_pBatch == nullptr);
  if (err == noErr && options.m_pBatch != nullptr) {
    options.m_pBatch->m_vecWaiting.push_back(
        {*folder, std::vector<UniChar>(name, name + nameLength), replace != 0,
         options.m_bNumberedName, options.m_bTrashReplaced, temporary});
    return noErr;
  }
  if (err == noErr) {
    err = TakeNameAsAsked(folder, nameLength, name, replace, options.m_bNumberedName,
                          options.m_bTrashReplaced, &temporary, newFile);
  }
  if (err != noErr) FSDeleteObject(&temporary);
  return err;
}

OVFileBatch::~OVFileBatch() {
  for (const Waiting& waiting : m_vecWaiting) FSDeleteObject(&waiting.m_temporary);
}

bool OVFileBatch::Awaits(const TString& name) const {
  const std::vector<UniChar> units = CreateUniCharVectorFromTString(name);
  for (const Waiting& waiting : m_vecWaiting)
    if (waiting.m_name == units) return true;
  return false;
}

std::vector<OVFileBatch::Named> OVFileBatch::NameAll() {
  std::vector<Waiting> waiting;
  waiting.swap(m_vecWaiting);
  std::vector<Named> named(waiting.size(), Named{noErr, OVFileSystemReference()});
  // Every file's data is durable before any of them takes its name: after a crash, a name leads
  // to a whole file or there is no name.
  std::map<FSVolumeRefNum, OSErr> flushed;
  for (std::size_t i = 0; i < waiting.size(); ++i) {
    FSCatalogInfo info;
    named[i].m_nStatus = FSGetCatalogInfo(&waiting[i].m_temporary, kFSCatInfoVolume, &info, nullptr,
                                          nullptr, nullptr);
    if (named[i].m_nStatus != noErr) continue;
    auto found = flushed.find(info.volume);
    if (found == flushed.end())
      found = flushed.emplace(info.volume, FSFlushVolume(info.volume)).first;
    named[i].m_nStatus = found->second;
  }
  FSBeginDeferredFolderFlush();
  for (std::size_t i = 0; i < waiting.size(); ++i) {
    const Waiting& file = waiting[i];
    OSErr& err = named[i].m_nStatus;
    if (err == noErr) {
      err = TakeNameAsAsked(&file.m_folder, file.m_name.size(), file.m_name.data(), file.m_bReplace,
                            file.m_bNumberedName, file.m_bTrashReplaced, &file.m_temporary,
                            named[i].m_file);
    }
    if (err != noErr) FSDeleteObject(&file.m_temporary);
  }
  FSEndDeferredFolderFlush();
  return named;
}
