// AppleEvents.h: Apple event descriptors, the handler table and the application event loop. The
// system hands documents to the application on its command line: `kestrail FILE...` becomes one
// open-documents event whose direct object lists the files, as file URLs, in order.
// Descriptors that a call fills in are the caller's to AEDisposeDesc.
#pragma once

#include "platform/MacTypes.h"

typedef FourCharCode DescType;
typedef FourCharCode AEKeyword;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;

typedef struct OpaqueAEDataStorageType* AEDataStorage;

// A typed value: bytes, a list of descriptors, or an Apple event with its parameters.
struct AEDesc {
  DescType descriptorType;
  AEDataStorage dataHandle;  // null for a null descriptor
};
typedef AEDesc AEDescList;
typedef AEDesc AEAddressDesc;
typedef AEDesc AppleEvent;

typedef OSErr (*AEEventHandlerProcPtr)(const AppleEvent* theAppleEvent, AppleEvent* reply,
                                       long handlerRefcon);
typedef AEEventHandlerProcPtr AEEventHandlerUPP;

enum : AEEventClass { kCoreEventClass = MakeFourCharCode("aevt") };
enum : AEEventID { kAEOpenDocuments = MakeFourCharCode("odoc") };
enum : AEKeyword { keyDirectObject = MakeFourCharCode("----") };

enum : DescType {
  typeAEList = MakeFourCharCode("list"),
  typeAppleEvent = MakeFourCharCode("aevt"),
  typeFSRef = MakeFourCharCode("fsrf"),
  typeFileURL = MakeFourCharCode("furl"),  // the bytes of a file:// URL
  typeNull = MakeFourCharCode("null"),
};

enum : AEReturnID { kAutoGenerateReturnID = -1 };
enum : AETransactionID { kAnyTransactionID = 0 };

inline constexpr OSErr errAECoercionFail = -1700;     // the data cannot be had in that type
inline constexpr OSErr errAEDescNotFound = -1701;     // no parameter of that keyword
inline constexpr OSErr errAEWrongDataType = -1703;    // a list was expected
inline constexpr OSErr errAEEventNotHandled = -1708;  // no handler for the event
inline constexpr OSErr errAEIllegalIndex = -1719;     // no item of that index

// Makes `desc` a null descriptor, owning nothing.
void AEInitializeDesc(AEDesc* desc);

// Frees what `desc` owns and leaves it a null descriptor.
OSErr AEDisposeDesc(AEDesc* desc);

// An empty list. `factoringPtr` must be null and `isRecord` false.
OSErr AECreateList(const void* factoringPtr, Size factoredSize, Boolean isRecord,
                   AEDescList* resultList);

// Puts a copy of `dataSize` bytes as an item of type `typeCode` at `index` (1-based) of the list,
// replacing the item there; index 0 or count + 1 appends.
OSErr AEPutPtr(AEDescList* theAEDescList, long index, DescType typeCode, const void* dataPtr,
               Size dataSize);

// An Apple event without parameters. `target` may be null: every event goes to this process.
OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID,
                         const AEAddressDesc* target, AEReturnID returnID,
                         AETransactionID transactionID, AppleEvent* result);

// Puts a copy of `theAEDesc` into the event as the parameter `theAEKeyword`.
OSErr AEPutParamDesc(AppleEvent* theAppleEvent, AEKeyword theAEKeyword, const AEDesc* theAEDesc);

// A copy of the parameter `theAEKeyword`, which must have type `desiredType`: errAEDescNotFound
// when there is none, errAECoercionFail when it has another type.
OSErr AEGetParamDesc(const AppleEvent* theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                     AEDesc* result);

// errAEWrongDataType when the descriptor is not a list.
OSErr AECountItems(const AEDescList* theAEDescList, long* theCount);

// Copies item `index` (1-based) as `desiredType` into `dataPtr`, at most `maximumSize` bytes;
// `actualSize` receives its whole size. A typeFileURL item is had as a typeFSRef when it names an
// existing object; otherwise errAECoercionFail, and one line on standard error says why. Other
// items only as their own type. `theAEKeyword`, `typeCode` and `actualSize` may be null.
OSErr AEGetNthPtr(const AEDescList* theAEDescList, long index, DescType desiredType,
                  AEKeyword* theAEKeyword, DescType* typeCode, void* dataPtr, Size maximumSize,
                  Size* actualSize);

// Handlers, one for each event class and ID; a new one replaces the old. `isSysHandler` is
// ignored: the process has only its own handlers. paramErr for a null handler.
OSErr AEInstallEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                            AEEventHandlerUPP handler, long handlerRefcon, Boolean isSysHandler);

// Reads the command line through the application's reader (SetCommandLineReader in
// EventLoop.h), which may end the process with the status it returns. Otherwise delivers the
// files' open-documents event to its handler and returns once that has been handled: after
// QuitApplicationEventLoop, or when the handler returns without quitting, since the command line
// brings no further events.
void RunApplicationEventLoop();

// Asks the running loop to return once the current handler is done.
void QuitApplicationEventLoop();
