// OVFileSystemReferenceMac.h: OVFileSystemReference, the library's value handle for an existing
// file or folder, and the File Manager extension routines it is built on. Statuses are 0 or -1
// for the class, the platform's OSErr for the routines; misuse (a program fault, never a disk that
// another process changed) is reported through OV_AssertFailed and the operation then goes on and
// fails or answers as the platform lets it.
#pragma once

#include <functional>
#include <vector>

#include "platform/Files.h"
#include "xmlparser/TString.h"

// One state of a file's data: its length and the moment it was last written.
struct OVFileVersion {
  UInt64 m_nLength = 0;
  UTCDateTime m_modified = {};
};

class OVFileBatch;

// How a new file takes its name, beyond whether it may take the place of an object of that name.
struct OVNewFileOptions {
  // Under the first free name of "Name 2.xml", "Name 3.xml", ... (the number goes before the
  // extension), taken only while it is free: such a file never replaces anything.
  bool m_bNumberedName = false;
  // An object replaced goes to the user's Trash, where it already is when the new file takes
  // the name: the name holds one of them whole at every moment, and the old one is at its place
  // or in the Trash. A replace whose object cannot go there fails, leaving it as it was.
  bool m_bTrashReplaced = false;
  // Made whole now and named when the batch names its files; null: named at once.
  OVFileBatch* m_pBatch = nullptr;
};

class OVFileSystemReference {
 public:
  // Names nothing: all 80 bytes zero.
  OVFileSystemReference();
  // Copies the bytes of a platform reference.
  explicit OVFileSystemReference(const FSRef& ref);
  ~OVFileSystemReference();

  // Wherever a platform reference is expected; the platform may also write one straight in.
  operator FSRef*() { return &m_fsRef; }
  operator const FSRef*() const { return &m_fsRef; }

  // Deletes the file or empty folder.
  int Delete() const;
  // True when the platform can read catalog information for the reference.
  bool Exists() const;
  // The folder holding this object; for the root folder, success with a parent naming nothing.
  int MakeParentReference(OVFileSystemReference& parent) const;
  // Both report a reference that names nothing and then answer false; for an object that is gone
  // they answer false.
  bool IsFile() const;
  bool IsFolder() const;
  // Whether this reference is wrongly used as a folder's: it names nothing, or an existing object
  // that is not a folder. A folder removed by someone else meanwhile is not misuse.
  bool IsMisusedAsFolder() const;
  // Whether this folder holds an object `name`: 0 with the answer in `exists`, also when there
  // is none; -1 (and false) when the lookup itself fails, as for a bad name.
  int SubobjectExists(const TString& name, bool& exists) const;
  // Creates the folder `name` inside this folder.
  int CreateDirectory(const TString& name, OVFileSystemReference& newFolder) const;
  // Renames this file where it is; afterwards this reference names the renamed file.
  int Rename(const TString& newName);
  // Puts the existing object `name` inside this folder into `child`; -1 when there is none.
  int MakeSubobjectReference(const TString& name, OVFileSystemReference& child) const;
  // The object's own name.
  int GetName(TString& name) const;
  // The object's absolute path as it is now, for showing it: a held folder may have moved.
  int GetPath(TString& path) const;
  // The present state of this file's data.
  int GetVersion(OVFileVersion& version) const;
  // Whether this file's data is still in the state `version`: nothing was written to it since.
  bool HasVersion(const OVFileVersion& version) const;
  // Copies this file's data into a new file of the same name in `destinationFolder`, typed
  // 'TEXT' with creator four spaces, and puts it in `newFile`. The copy is made whole under a
  // temporary name and then takes the name in one step: with `overwrite` it takes the place of an
  // object of that name, without it the name must still be free then. A copy that fails leaves
  // the folder as it was, an object of that name included. With `sourceVersion`, the copy also
  // fails unless this file is still in that state once its data is copied. `options` may ask for
  // a numbered name, or for the copy to take its name with a batch (newFile is then left as it is).
  int Copy(const OVFileSystemReference& destinationFolder, OVFileSystemReference& newFile,
           bool overwrite, const OVFileVersion* sourceVersion = nullptr,
           const OVNewFileOptions& options = {}) const;

 private:
  FSRef m_fsRef;
};

// New files that take their names together, so that many files cost two flushes in all rather
// than two each: the data of every file is made durable in one step before the first takes its
// name, and each folder once after the last has. Each file still appears whole or not at all, and
// until it is named a signal that ends the process removes it, as any temporary file.
class OVFileBatch {
 public:
  // How one file of the batch ended, in the order the files were added.
  struct Named {
    // noErr; otherwise the file is gone: dupFNErr when another process took its name meanwhile
    OSErr m_nStatus;
    OVFileSystemReference m_file;
  };

  OVFileBatch() = default;
  OVFileBatch(const OVFileBatch&) = delete;
  OVFileBatch& operator=(const OVFileBatch&) = delete;
  // Deletes the files that were never named.
  ~OVFileBatch();

  // Whether a file waits to take the name `name`, in any folder.
  bool Awaits(const TString& name) const;
  // Names every waiting file and empties the batch.
  std::vector<Named> NameAll();

 private:
  friend OSErr FSCreateTextFileUnicode(const FSRef*, UniCharCount, const UniChar*, Boolean, FSRef*,
                                       const std::function<OSErr(SInt16)>&,
                                       const OVNewFileOptions&);
  struct Waiting {
    FSRef m_folder;
    std::vector<UniChar> m_name;
    bool m_bReplace;
    bool m_bNumberedName;
    bool m_bTrashReplaced;
    FSRef m_temporary;
  };
  std::vector<Waiting> m_vecWaiting;
};

// The Finder information of a file or a folder, in the platform's layouts.
union FinderInfo {
  FileInfo file;
  FolderInfo folder;
};

union ExtendedFinderInfo {
  ExtendedFileInfo file;
  ExtendedFolderInfo folder;
};

// True when catalog information can be read for the reference.
Boolean FSRefValid(const FSRef* ref);

// Reads in one catalog call whichever of the three out-arguments are not null; nothing is
// written on failure.
OSErr FSGetFinderInfo(const FSRef* ref, FinderInfo* info, ExtendedFinderInfo* extendedInfo,
                      Boolean* isDirectory);

// The folder holding `ref`; for the root folder, noErr with 80 zero bytes. paramErr for a null
// `parentRef`.
OSErr FSGetParentRef(const FSRef* ref, FSRef* parentRef);

// Copies the whole of one open fork into another from their starts, reserving the space first; the
// destination then ends where the copied data ends. The buffer is used in multiples of 4096 bytes
// when it holds at least that many. paramErr for no buffer.
OSErr FSCopyFork(SInt16 srcRefNum, SInt16 dstRefNum, void* copyBufferPtr, ByteCount copyBufferSize);

// Moves `ref` into `destDirectory` under `name` and puts the moved object in `newRef` (which
// must not be null). dirNFErr when the destination is no folder, diffVolErr when it is on another
// file system, dupFNErr when the name is taken there. Within one folder this is a rename.
// Neither program calls it, and no test proves it: whoever first calls it gives it a test.
OSErr FSMoveRenameObjectUnicode(const FSRef* ref, const FSRef* destDirectory,
                                UniCharCount nameLength, const UniChar* name,
                                TextEncoding textEncodingHint, FSRef* newRef);

// Creates the file `name` in `folder` typed 'TEXT' with creator four spaces, the marks of every
// file the library makes, and puts it in `newFile` (which may be null). The file is made whole
// under a temporary name first: `fill`, when given, writes its data fork, which is then flushed,
// and only then does the file take its name, in one step, so that no reader ever finds it half
// written. With `replace` it takes the place of an object of that name; without, the name must be
// free (dupFNErr), also when another process takes it meanwhile. On any failure the temporary
// file goes and an object of that name stays as it was. With a numbered name in `options`, the
// first free one is taken and `replace` does not matter; with a batch, the file is written but
// neither flushed nor named, and `newFile` is left for the batch to name.
OSErr FSCreateTextFileUnicode(const FSRef* folder, UniCharCount nameLength, const UniChar* name,
                              Boolean replace, FSRef* newFile,
                              const std::function<OSErr(SInt16 fork)>& fill = nullptr,
                              const OVNewFileOptions& options = {});
