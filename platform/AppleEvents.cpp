// AppleEvents.cpp: descriptors: plain data, lists of items and Apple events with parameters, and
// the one coercion the application needs, from a file URL to a file reference.
#include "platform/AppleEvents.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "platform/Terminal.h"
#include "platform/internal/CFObject.h"

struct OpaqueAEDataStorageType {
  struct Item {
    DescType m_nType;
    std::vector<UInt8> m_bytes;
  };

  OpaqueAEDataStorageType() = default;
  OpaqueAEDataStorageType(const OpaqueAEDataStorageType& other);
  OpaqueAEDataStorageType& operator=(const OpaqueAEDataStorageType&) = delete;
  ~OpaqueAEDataStorageType();

  std::vector<Item> m_vecItems;  // a list's items
  AEEventClass m_nEventClass = 0;
  AEEventID m_nEventID = 0;
  std::map<AEKeyword, AEDesc> m_mapParameters;  // an Apple event's, each owned
};

namespace {

AEDesc Duplicate(const AEDesc& desc) {
  AEDesc copy{desc.descriptorType, nullptr};
  if (desc.dataHandle != nullptr) copy.dataHandle = new OpaqueAEDataStorageType(*desc.dataHandle);
  return copy;
}

bool IsList(const AEDesc* desc) {
  return desc != nullptr && desc->descriptorType == typeAEList && desc->dataHandle != nullptr;
}

bool IsAppleEvent(const AEDesc* desc) {
  return desc != nullptr && desc->descriptorType == typeAppleEvent && desc->dataHandle != nullptr;
}

// The file reference for a typeFileURL item. The user named the file and nothing else will tell
// why it cannot be installed, so the reason goes out here, where it is known.
OSErr CoerceFileURLToFSRef(const std::vector<UInt8>& bytes, FSRef& ref) {
  const std::string url(bytes.begin(), bytes.end());
  std::string path;
  if (!FileURLPath(url, path)) {
    EventLoopErrorStream() << ProgramName() << ": " << TerminalText(url) << ": not a file URL\n";
    return errAECoercionFail;
  }
  if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr) == noErr)
    return noErr;
  // FSPathMakeRef fails only where realpath or lstat did, so errno still tells why.
  EventLoopErrorStream() << ProgramName() << ": " << TerminalText(path) << ": "
                         << std::strerror(errno) << '\n';
  return errAECoercionFail;
}

}  // namespace

OpaqueAEDataStorageType::OpaqueAEDataStorageType(const OpaqueAEDataStorageType& other)
    : m_vecItems(other.m_vecItems),
      m_nEventClass(other.m_nEventClass),
      m_nEventID(other.m_nEventID) {
  for (const auto& [keyword, desc] : other.m_mapParameters)
    m_mapParameters.emplace(keyword, Duplicate(desc));
}

OpaqueAEDataStorageType::~OpaqueAEDataStorageType() {
  for (auto& parameter : m_mapParameters) AEDisposeDesc(&parameter.second);
}

void AEInitializeDesc(AEDesc* desc) {
  if (desc != nullptr) *desc = AEDesc{typeNull, nullptr};
}

OSErr AEDisposeDesc(AEDesc* desc) {
  if (desc == nullptr) return paramErr;
  delete desc->dataHandle;
  AEInitializeDesc(desc);
  return noErr;
}

OSErr AECreateList(const void* factoringPtr, Size, Boolean isRecord, AEDescList* resultList) {
  if (factoringPtr != nullptr || isRecord || resultList == nullptr) return paramErr;
  *resultList = AEDesc{typeAEList, new OpaqueAEDataStorageType};
  return noErr;
}

OSErr AEPutPtr(AEDescList* theAEDescList, long index, DescType typeCode, const void* dataPtr,
               Size dataSize) {
  if (!IsList(theAEDescList) || dataSize < 0 || (dataSize > 0 && dataPtr == nullptr))
    return paramErr;
  std::vector<OpaqueAEDataStorageType::Item>& items = theAEDescList->dataHandle->m_vecItems;
  if (index < 0 || index > static_cast<long>(items.size()) + 1) return errAEIllegalIndex;
  const UInt8* bytes = static_cast<const UInt8*>(dataPtr);
  OpaqueAEDataStorageType::Item item{typeCode, std::vector<UInt8>(bytes, bytes + dataSize)};
  if (index == 0 || index == static_cast<long>(items.size()) + 1)
    items.push_back(std::move(item));
  else
    items[index - 1] = std::move(item);
  return noErr;
}

OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc*,
                         AEReturnID, AETransactionID, AppleEvent* result) {
  if (result == nullptr) return paramErr;
  OpaqueAEDataStorageType* event = new OpaqueAEDataStorageType;
  event->m_nEventClass = theAEEventClass;
  event->m_nEventID = theAEEventID;
  *result = AEDesc{typeAppleEvent, event};
  return noErr;
}

OSErr AEPutParamDesc(AppleEvent* theAppleEvent, AEKeyword theAEKeyword, const AEDesc* theAEDesc) {
  if (!IsAppleEvent(theAppleEvent) || theAEDesc == nullptr) return paramErr;
  std::map<AEKeyword, AEDesc>& parameters = theAppleEvent->dataHandle->m_mapParameters;
  AEDesc copy = Duplicate(*theAEDesc);
  auto [found, added] = parameters.emplace(theAEKeyword, copy);
  if (!added) {
    AEDisposeDesc(&found->second);
    found->second = copy;
  }
  return noErr;
}

OSErr AEGetParamDesc(const AppleEvent* theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                     AEDesc* result) {
  if (!IsAppleEvent(theAppleEvent) || result == nullptr) return paramErr;
  const std::map<AEKeyword, AEDesc>& parameters = theAppleEvent->dataHandle->m_mapParameters;
  const auto found = parameters.find(theAEKeyword);
  if (found == parameters.end()) return errAEDescNotFound;
  if (found->second.descriptorType != desiredType) return errAECoercionFail;
  *result = Duplicate(found->second);
  return noErr;
}

OSErr AECountItems(const AEDescList* theAEDescList, long* theCount) {
  if (theCount == nullptr) return paramErr;
  if (!IsList(theAEDescList)) return errAEWrongDataType;
  *theCount = static_cast<long>(theAEDescList->dataHandle->m_vecItems.size());
  return noErr;
}

OSErr AEGetNthPtr(const AEDescList* theAEDescList, long index, DescType desiredType,
                  AEKeyword* theAEKeyword, DescType* typeCode, void* dataPtr, Size maximumSize,
                  Size* actualSize) {
  if (!IsList(theAEDescList)) return errAEWrongDataType;
  if (maximumSize < 0 || (maximumSize > 0 && dataPtr == nullptr)) return paramErr;
  const std::vector<OpaqueAEDataStorageType::Item>& items = theAEDescList->dataHandle->m_vecItems;
  if (index < 1 || index > static_cast<long>(items.size())) return errAEIllegalIndex;
  const OpaqueAEDataStorageType::Item& item = items[index - 1];
  std::vector<UInt8> bytes;
  if (item.m_nType == desiredType) {
    bytes = item.m_bytes;
  } else if (item.m_nType == typeFileURL && desiredType == typeFSRef) {
    FSRef ref;
    const OSErr err = CoerceFileURLToFSRef(item.m_bytes, ref);
    if (err != noErr) return err;
    bytes.assign(ref.hidden, ref.hidden + sizeof ref.hidden);
  } else {
    return errAECoercionFail;
  }
  const std::size_t copied = std::min<std::size_t>(bytes.size(), maximumSize);
  if (copied > 0) std::memcpy(dataPtr, bytes.data(), copied);
  if (theAEKeyword != nullptr) *theAEKeyword = MakeFourCharCode("****");  // items have no keyword
  if (typeCode != nullptr) *typeCode = desiredType;
  if (actualSize != nullptr) *actualSize = static_cast<Size>(bytes.size());
  return noErr;
}

OSErr MakeOpenDocumentsEvent(const std::vector<std::string>& paths, AppleEvent* event) {
  AEDescList list;
  OSErr err = AECreateList(nullptr, 0, false, &list);
  if (err != noErr) return err;
  std::string workingFolder;
  for (const std::string& path : paths) {
    const bool relative = !path.empty() && path[0] != '/';
    if (relative && workingFolder.empty()) {
      char* folder = getcwd(nullptr, 0);
      if (folder != nullptr) workingFolder = folder;
      std::free(folder);
    }
    // Without a working folder a relative path stays as it is, and fails as no file URL.
    const bool resolvable = relative && !workingFolder.empty();
    const std::string url = FileURLText(resolvable ? workingFolder + "/" + path : path);
    err = AEPutPtr(&list, 0, typeFileURL, url.data(), static_cast<Size>(url.size()));
    if (err != noErr) break;
  }
  if (err == noErr)
    err = AECreateAppleEvent(kCoreEventClass, kAEOpenDocuments, nullptr, kAutoGenerateReturnID,
                             kAnyTransactionID, event);
  if (err == noErr) err = AEPutParamDesc(event, keyDirectObject, &list);
  AEDisposeDesc(&list);
  return err;
}

OSErr GetEventClassAndID(const AppleEvent* event, AEEventClass& eventClass, AEEventID& eventID) {
  if (!IsAppleEvent(event)) return paramErr;
  eventClass = event->dataHandle->m_nEventClass;
  eventID = event->dataHandle->m_nEventID;
  return noErr;
}
