// FinderInfo.cpp: the Finder information of files and folders, kept where the file system keeps
// extended attributes: one 32-byte attribute, every field big-endian, as the real system writes it.
#include "platform/internal/FinderInfo.h"

#include <sys/xattr.h>

#include <cerrno>
#include <cstring>

namespace {

// Finder information lives in one 32-byte extended attribute: the 16 bytes of FileInfo or
// FolderInfo, then the 16 of their extended forms, every field big-endian. The widths say how to
// turn each of the four layouts into host byte order and back.
const char kFinderInfoAttribute[] = "user.com.apple.FinderInfo";
const int kFileInfoWidths[] = {4, 4, 2, 2, 2, 2, 0};
const int kFolderInfoWidths[] = {2, 2, 2, 2, 2, 2, 2, 2, 0};
const int kExtendedFileInfoWidths[] = {2, 2, 2, 2, 2, 2, 4, 0};
const int kExtendedFolderInfoWidths[] = {2, 2, 4, 2, 2, 4, 0};

// Reads 16 bytes of big-endian fields, `widths` wide, into host order.
void BigEndianToHost(const int* widths, const UInt8* from, UInt8* to) {
  for (; *widths != 0; from += *widths, to += *widths, ++widths) {
    if (*widths == 2) {
      const UInt16 value = static_cast<UInt16>((from[0] << 8) | from[1]);
      std::memcpy(to, &value, 2);
    } else {
      const UInt32 value = (static_cast<UInt32>(from[0]) << 24) |
                           (static_cast<UInt32>(from[1]) << 16) |
                           (static_cast<UInt32>(from[2]) << 8) | from[3];
      std::memcpy(to, &value, 4);
    }
  }
}

// Writes 16 bytes of host-order fields, `widths` wide, in big-endian order.
void HostToBigEndian(const int* widths, const UInt8* from, UInt8* to) {
  for (; *widths != 0; from += *widths, to += *widths, ++widths) {
    UInt32 value = 0;
    if (*widths == 2) {
      UInt16 field;
      std::memcpy(&field, from, 2);
      value = field;
    } else {
      std::memcpy(&value, from, 4);
    }
    for (int i = 0; i < *widths; ++i) to[i] = static_cast<UInt8>(value >> (8 * (*widths - 1 - i)));
  }
}

}  // namespace

void ReadFinderInfo(const ObjectOnDisk& object, FSCatalogInfo& info) {
  std::memset(info.finderInfo, 0, sizeof info.finderInfo);
  std::memset(info.extFinderInfo, 0, sizeof info.extFinderInfo);
  UInt8 raw[32];
  // Reached through the folder's handle: a held folder itself, anything else by its name in its
  // folder, never following a link there. A missing attribute, or a file system (or link)
  // without them, reads as zeros.
  const ssize_t size =
      object.m_nSelf != kNoFolder
          ? getxattr(PathThroughHeld(object.m_nSelf).c_str(), kFinderInfoAttribute, raw, sizeof raw)
          : lgetxattr(PathThroughHeld(object.m_nFolder, object.m_strName).c_str(),
                      kFinderInfoAttribute, raw, sizeof raw);
  if (size != sizeof raw) return;
  const bool folder = object.m_bIsDirectory;
  BigEndianToHost(folder ? kFolderInfoWidths : kFileInfoWidths, raw, info.finderInfo);
  BigEndianToHost(folder ? kExtendedFolderInfoWidths : kExtendedFileInfoWidths, raw + 16,
                  info.extFinderInfo);
}

int WriteFinderInfo(const std::string& path, bool folder, FSCatalogInfoBitmap whichInfo,
                    const FSCatalogInfo& info) {
  UInt8 raw[32] = {};
  if (whichInfo & kFSCatInfoFinderInfo)
    HostToBigEndian(folder ? kFolderInfoWidths : kFileInfoWidths, info.finderInfo, raw);
  if (whichInfo & kFSCatInfoFinderXInfo)
    HostToBigEndian(folder ? kExtendedFolderInfoWidths : kExtendedFileInfoWidths,
                    info.extFinderInfo, raw + 16);
  if (setxattr(path.c_str(), kFinderInfoAttribute, raw, sizeof raw, 0) == 0) return 0;
  return errno == ENOTSUP || errno == EOPNOTSUPP ? 0 : errno;
}
