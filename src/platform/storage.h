// Compound files as the library uses them: open or create a file; create, open and destroy a stream in it; read, write, measure and
// commit a stream; commit and release a file. On Windows these are the system's storage calls; everywhere else portable/storage
// and portable/stream serve them. Names and paths are wide and zero-terminated; results are the system's HRESULTs (negative: failed).
//
// Invariants: (1) stream names compare without regard to case. (2) An open file is locked against every other opener until it is
// released or the process ends. (3) Off Windows nothing reaches the path before StorageCommit, which puts the whole new file in place
// in one step; a file one of whose writes failed is not put in place at all.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

#if defined(_WIN32)
#include <objidl.h>
#endif

namespace tolvenar::platform {

#if defined(_WIN32)
using Storage = IStorage;
using Stream = IStream;
#else
struct Storage;
struct Stream;
#endif

// Modes. kModeExclusive opens for reading and writing and shuts everyone else out; kModeReplace adds that a create replaces what is
// there, instead of failing.
constexpr uint32_t kModeExclusive = 0x12;
constexpr uint32_t kModeReplace = 0x1012;

#if !defined(_WIN32)
constexpr HRESULT kStgFileNotFound = static_cast<HRESULT>(0x80030002u);
constexpr HRESULT kStgPathNotFound = static_cast<HRESULT>(0x80030003u);
constexpr HRESULT kStgAccessDenied = static_cast<HRESULT>(0x80030005u);
constexpr HRESULT kStgInsufficientMemory = static_cast<HRESULT>(0x80030008u);
constexpr HRESULT kStgInvalidPointer = static_cast<HRESULT>(0x80030009u);
constexpr HRESULT kStgWriteFault = static_cast<HRESULT>(0x8003001Du);
constexpr HRESULT kStgReadFault = static_cast<HRESULT>(0x8003001Eu);
constexpr HRESULT kStgShareViolation = static_cast<HRESULT>(0x80030020u);
constexpr HRESULT kStgLockViolation = static_cast<HRESULT>(0x80030021u);
constexpr HRESULT kStgFileAlreadyExists = static_cast<HRESULT>(0x80030050u);
constexpr HRESULT kStgMediumFull = static_cast<HRESULT>(0x80030070u);
constexpr HRESULT kStgInvalidName = static_cast<HRESULT>(0x800300FCu);
constexpr HRESULT kStgDocFileCorrupt = static_cast<HRESULT>(0x80030109u);
constexpr HRESULT kStgReverted = static_cast<HRESULT>(0x80030102u);
#endif

// Makes a new compound file at `path`. Fails when something is there already, unless `mode` is kModeReplace.
// On success *out is the open file, to be released with StorageRelease; on failure *out is null.
HRESULT StorageCreate(const OLECHAR* path, uint32_t mode, Storage** out);

// Opens the compound file at `path`. A file that is open elsewhere, read-only or no whole compound file is refused.
HRESULT StorageOpen(const OLECHAR* path, uint32_t mode, Storage** out);

// Opens the stream `name` of the root storage, positioned at its start. Its contents are not looked at: those of a
// damaged stream fail when they are read, and it can be measured, destroyed and replaced all the same.
HRESULT StorageOpenStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out);

// Makes an empty stream `name` in the root storage. An existing one makes it fail, unless `mode` is kModeReplace.
HRESULT StorageCreateStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out);

// Removes the stream or storage `name` from the root storage.
HRESULT StorageDestroyElement(Storage* storage, const OLECHAR* name);

// Puts all changes in place, durably and in one step.
HRESULT StorageCommit(Storage* storage, uint32_t flags);

// Releases the file. What was not committed is lost, and the path is as it was.
void StorageRelease(Storage* storage);

// Reads up to `count` bytes from the stream's position, which moves on; *moved tells how many there were.
HRESULT StreamRead(Stream* stream, void* bytes, uint32_t count, uint32_t* moved);

// Writes `count` bytes at the stream's position, which moves on; *moved tells how many went in. The room on disk that the commit will
// need is reserved here, so that a full disk is told by this call.
HRESULT StreamWrite(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved);

// The same, but the bytes may be taken from where they are as late as the file is committed: the caller keeps them as they are until then, or
// until the file is released. Spares a copy of a whole workbook where the stream was empty.
HRESULT StreamWriteLent(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved);

// Stores the stream's size in bytes in *size.
HRESULT StreamSize(Stream* stream, uint64_t* size);

HRESULT StreamCommit(Stream* stream, uint32_t flags);
void StreamRelease(Stream* stream);

}  // namespace tolvenar::platform
