// StmFFile and StmFItem: an open compound file and an open stream in it. The whole library reaches files
// through these two.
//
//   StmFFile     FIELD                                     StmFItem     FIELD
//   tag          8 bytes, "StmFFile", no terminator        tag          8 bytes, "StmFItem", no terminator
//   reserved     8 bytes, zero                             reserved     8 bytes, zero
//   storage      the open file, or null                    owner        the StmFFile whose list holds it
//   itemCount    number of open items                      stream       the open stream, or null
//   firstItem    the ends of the list of open items        requested    bytes of the last read or write
//   lastItem                                               transferred  bytes that it really moved
//   pendingName  released by the destructor; unused        spare        8 bytes, zero
//                                                          previous     its neighbours in the list
//                                                          next
//
// Invariants: (1) A file is open while `storage` is set, an item while `stream` is. (2) An open item is in
// its owner's list, and the file closes its items before itself, from the head of the list on. (3) Items and
// wide names come from the general allocator: files take none of the pool's nine blocks.
//
// Both are plain values without virtual functions. All results are 32-bit: 0, a code below, or the failure
// value of a platform call, which is negative.
#pragma once

#include <cstdint>

#include "platform/storage.h"
#include "tolvenar/automation.h"

namespace tolvenar {

constexpr int32_t StmResult(uint32_t code) {
  return static_cast<int32_t>(code);
}

constexpr int32_t kStmDone = 0;
// No memory for a name or an object; also every failure to create a file.
constexpr int32_t kStmNoMemory = StmResult(0x80000002);
// OpenStream's own code for a name without memory: a positive one, on purpose.
constexpr int32_t kStmOpenStreamNoName = 2;
// The StmFFile already has an open storage.
constexpr int32_t kStmAlreadyOpen = StmResult(0x80000F01);
// No open storage or stream; also every failure to open a file.
constexpr int32_t kStmNotOpen = StmResult(0x80000F02);
// Null pointer argument.
constexpr int32_t kStmNullArgument = StmResult(0x80000F03);
// The item's owner is missing or closed.
constexpr int32_t kStmOwnerClosed = StmResult(0x80000F04);
// A read of 0 bytes.
constexpr int32_t kStmEmptyRead = StmResult(0x80000F05);
// The list of items is inconsistent, or items stayed open at close.
constexpr int32_t kStmBadList = StmResult(0x80000F06);
// Wrong tag, or the object isn't readable.
constexpr int32_t kStmBadTag = StmResult(0x80000F07);
// The stream is larger than 32 bits can hold.
constexpr int32_t kStmTooLarge = StmResult(0x80000F0A);
// Bits that Close sets in the result of an item that it could not close.
constexpr int32_t kStmItemStaysOpen = StmResult(0x80000F80);

constexpr uint32_t kStmTagSize = 8;
constexpr uint32_t kStmReservedSize = 8;

struct StmFItem;

struct StmFFile {
  char tag[kStmTagSize];
  uint8_t reserved[kStmReservedSize];
  platform::Storage* storage;
  uint16_t itemCount;
  StmFItem* firstItem;
  StmFItem* lastItem;
  BSTR pendingName;

  StmFFile();
  // Releases pendingName and closes the file when it is still open. When that fails the storage is let go
  // without a commit.
  ~StmFFile();
  StmFFile(const StmFFile&) = delete;
  StmFFile& operator=(const StmFFile&) = delete;

  // True when the object is readable and carries its tag.
  bool IsValid() const;

  // Makes a new compound file at `path`; fails when something is there, unless `replace`. The object is reset
  // first. Result: 0; kStmBadTag; kStmAlreadyOpen, the open storage stays open; kStmNoMemory for the name and
  // for any platform failure.
  int32_t Create(const char* path, bool replace);

  // Opens the compound file at `path`, read-write and exclusively. The object is reset first.
  // Result: 0; kStmBadTag; kStmAlreadyOpen; kStmNoMemory for the name; kStmNotOpen for any platform failure.
  int32_t Open(const char* path);

  // Opens the stream `name` into *item and links the item at the end of the list. With *item null an item is
  // made, the caller's to delete; otherwise the caller's own is reset and used. Result: 0; kStmBadTag of the
  // file or the item; kStmNotOpen; kStmNoMemory for the item; kStmOpenStreamNoName for the name; the
  // platform's failure; kStmBadList. When the name or the platform fails an item made by the call is deleted
  // and *item is null.
  int32_t OpenStream(const char* name, StmFItem** item);

  // The same with a new stream; fails when the name exists, unless `replace`. Any platform result that isn't
  // negative is a success, and a name without memory is kStmNoMemory.
  int32_t CreateStream(const char* name, StmFItem** item, bool replace);

  // Removes the stream `name`, after opening it for a test. Result: 0; kStmBadTag; kStmNotOpen; kStmNoMemory
  // for the name; the failure of the test: the stream counts as absent; the result of the removal.
  int32_t DeleteStream(const char* name);

  // Closes all items, commits the file and releases it.
  // Result: 0; kStmBadTag; kStmNotOpen; kStmBadList, also when items were left over; the result of an item
  // that can't be closed with the bits kStmItemStaysOpen, and the file stays open; the platform's failure
  // value when the commit fails. That last one is told, and everything has been released nevertheless:
  // nothing of the changes is in the file then, and a caller that heard 0 would hold a file for saved that
  // isn't.
  int32_t Close();

  // Releases the file and its items without a commit, so that the file on disk stays as it was when it was
  // opened. For a caller that has removed or replaced a stream and could not finish the new one: a Close, or
  // the destructor, would put a file in place that lacks it.
  void Abandon();

  // Links an item at the end of the list and becomes its owner. Result: 0; kStmBadList when only one end is
  // set; kStmNullArgument.
  int32_t AddItem(StmFItem* item);

  // Unlinks an item, whose own links stay as they are. Result: 0; kStmBadList when the list is empty;
  // kStmNullArgument.
  int32_t RemoveItem(StmFItem* item);
};

struct StmFItem {
  char tag[kStmTagSize];
  uint8_t reserved[kStmReservedSize];
  StmFFile* owner;
  platform::Stream* stream;
  uint32_t requested;
  uint32_t transferred;
  uint8_t spare[kStmReservedSize];
  StmFItem* previous;
  StmFItem* next;

  StmFItem();
  // Closes the item when it is still open.
  ~StmFItem();
  StmFItem(const StmFItem&) = delete;
  StmFItem& operator=(const StmFItem&) = delete;

  bool IsValid() const;

  // True when the item has an owner and the owner's storage is open.
  bool IsOwnerOpen() const;

  // Back to a closed item without owner, tag included.
  void Reset();

  // Reads up to `count` bytes from the stream's position; *moved (unless null) receives how many there were.
  // Result: 0, also for a short read; kStmBadTag; kStmNotOpen; kStmOwnerClosed; kStmNullArgument for a null
  // buffer; kStmEmptyRead for a count of 0; the platform's failure. On failure *moved is untouched.
  int32_t Read(void* buffer, uint32_t count, uint32_t* moved);

  // Writes `count` bytes at the stream's position; *moved (unless null) receives how many went in.
  // Result: 0, at once and with *moved untouched for a count of 0; kStmBadTag; kStmNotOpen; kStmOwnerClosed;
  // the platform's failure.
  int32_t Write(const void* buffer, uint32_t count, uint32_t* moved);

  // The same with bytes that the caller keeps as they are until the file is closed or abandoned: they may be
  // taken as late as that.
  int32_t WriteLent(const void* buffer, uint32_t count, uint32_t* moved);

  // The stream's size; 0 if it can't be had.
  uint32_t GetSize();

  // Stores the stream's size. Result: 0; kStmNullArgument; kStmNotOpen; the platform's failure; kStmTooLarge.
  // On failure *size is untouched. Tag and owner are not looked at, on purpose.
  int32_t QuerySize(uint32_t* size);

  // Commits and releases the stream and unlinks the item. Result: 0; kStmBadTag; kStmNotOpen;
  // kStmOwnerClosed; that of RemoveItem. The commit's own result is of no account: a stream's bytes reach the
  // disk with the commit of the file, whose result Close tells.
  int32_t Close();
};

// Holds the item that OpenStream or CreateStream made, and deletes it, closing it first. To be declared
// behind the file, so that it goes first.
struct StmFItemHolder {
  StmFItem* item = nullptr;

  StmFItemHolder() = default;
  ~StmFItemHolder() { delete item; }
  StmFItemHolder(const StmFItemHolder&) = delete;
  StmFItemHolder& operator=(const StmFItemHolder&) = delete;
};

}  // namespace tolvenar
