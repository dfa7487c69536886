// FinderInfo.h: the codec of Finder information, between the catalog information's host-order
// fields and the big-endian extended attribute "user.com.apple.FinderInfo" that holds them on
// disk. Only platform/ includes this header.
#pragma once

#include <string>

#include "platform/internal/PosixFiles.h"

// Reads the Finder information of `object` into `info`: zeros where it has none, or its file
// system keeps no extended attributes.
void ReadFinderInfo(const ObjectOnDisk& object, FSCatalogInfo& info);

// Writes the Finder information of the object that `path` leads to, a descriptor's path in
// /proc. 0 or an errno value. File systems without extended attributes still get the object.
int WriteFinderInfo(const std::string& path, bool folder, FSCatalogInfoBitmap whichInfo,
                    const FSCatalogInfo& info);
