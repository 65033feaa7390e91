// The wrapped functions, under the names that the linker gives them: __wrap_X is what the library calls for X, __real_X is X.
#include "faults/fault_seam.h"

#include <algorithm>
#include <iterator>

#include "platform/heap.h"
#include "platform/storage.h"

namespace tolvenar::testing {
namespace {

constexpr int kNone = -1;
constexpr int kFired = -2;

// By kind.
int calls_left[] = {kNone, kNone, kNone, kNone};
constexpr HRESULT kFault = static_cast<HRESULT>(0x80031234u);

// True for the one call that is to fail.
bool Fails(Fault::Kind kind) {
  int& left = calls_left[kind];
  if (left < 0 || left-- != 0) return false;
  left = kFired;
  return true;
}

// Slots taken from the system. No container: nothing here may ask for memory, as that can be what is made to fail.
struct Slot {
  uint8_t* base;
  uint32_t capacity;
};
Slot slots[200];

Slot* SlotAt(const uint8_t* base) {
  return std::find_if(std::begin(slots), std::end(slots) - 1,
                      [&](const Slot& slot) { return slot.base == base; });
}

}  // namespace

Fault::Fault(Kind kind, int k) : kind_(kind) {
  calls_left[kind] = k;
}

Fault::~Fault() {
  calls_left[kind_] = kNone;
}

bool Fault::fired() const {
  return calls_left[kind_] == kFired;
}

int TakenSlots() {
  return static_cast<int>(std::count_if(std::begin(slots), std::end(slots),
                                        [](const Slot& slot) { return slot.base != nullptr; }));
}

}  // namespace tolvenar::testing

using tolvenar::testing::Fails;
using tolvenar::testing::Fault;
using tolvenar::testing::kFault;
using tolvenar::testing::SlotAt;

extern "C" {

uint32_t __real__ZN8tolvenar11MEMORYALLOCEi(int32_t size);
uint32_t __wrap__ZN8tolvenar11MEMORYALLOCEi(int32_t size);
uint32_t __wrap__ZN8tolvenar11MEMORYALLOCEi(int32_t size) {
  return Fails(Fault::kPool) ? 0 : __real__ZN8tolvenar11MEMORYALLOCEi(size);
}

uint32_t __real__ZN8tolvenar13MEMORYREALLOCEji(uint32_t handle, int32_t size);
uint32_t __wrap__ZN8tolvenar13MEMORYREALLOCEji(uint32_t handle, int32_t size);
uint32_t __wrap__ZN8tolvenar13MEMORYREALLOCEji(uint32_t handle, int32_t size) {
  return Fails(Fault::kPool) ? 0 : __real__ZN8tolvenar13MEMORYREALLOCEji(handle, size);
}

uint8_t* __real__ZN8tolvenar8platform8TakeSlotEj(uint32_t capacity);
uint8_t* __wrap__ZN8tolvenar8platform8TakeSlotEj(uint32_t capacity);
uint8_t* __wrap__ZN8tolvenar8platform8TakeSlotEj(uint32_t capacity) {
  if (Fails(Fault::kHeap)) return nullptr;
  uint8_t* base = __real__ZN8tolvenar8platform8TakeSlotEj(capacity);
  if (base != nullptr) *SlotAt(nullptr) = {base, capacity};
  return base;
}

void __real__ZN8tolvenar8platform8GiveSlotEPhj(uint8_t* base, uint32_t capacity);
void __wrap__ZN8tolvenar8platform8GiveSlotEPhj(uint8_t* base, uint32_t capacity);
void __wrap__ZN8tolvenar8platform8GiveSlotEPhj(uint8_t* base, uint32_t capacity) {
  *SlotAt(base) = {};
  __real__ZN8tolvenar8platform8GiveSlotEPhj(base, capacity);
}

#if defined(_WIN32)
#define TOLVENAR_COMMIT(prefix) prefix##_ZN8tolvenar8platform13StorageCommitEP8IStoragej
#define TOLVENAR_CREATE(prefix) prefix##_ZN8tolvenar8platform19StorageCreateStreamEP8IStoragePKwjPP7IStream
#else
#define TOLVENAR_COMMIT(prefix) prefix##_ZN8tolvenar8platform13StorageCommitEPNS0_7StorageEj
#define TOLVENAR_CREATE(prefix) \
  prefix##_ZN8tolvenar8platform19StorageCreateStreamEPNS0_7StorageEPKDsjPPNS0_6StreamE
#endif

using tolvenar::platform::Storage;
using tolvenar::platform::Stream;

HRESULT TOLVENAR_COMMIT(__real_)(Storage* storage, uint32_t flags);
HRESULT TOLVENAR_COMMIT(__wrap_)(Storage* storage, uint32_t flags);
HRESULT TOLVENAR_COMMIT(__wrap_)(Storage* storage, uint32_t flags) {
  return Fails(Fault::kCommit) ? kFault : TOLVENAR_COMMIT(__real_)(storage, flags);
}

HRESULT TOLVENAR_CREATE(__real_)(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out);
HRESULT TOLVENAR_CREATE(__wrap_)(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out);
HRESULT TOLVENAR_CREATE(__wrap_)(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out) {
  if (!Fails(Fault::kCreateStream)) return TOLVENAR_CREATE(__real_)(storage, name, mode, out);
  *out = nullptr;
  return kFault;
}

}  // extern "C"

namespace tolvenar::testing {

void GiveLostSlots() {
  for (const Slot& slot : slots) {
    if (slot.base != nullptr) __wrap__ZN8tolvenar8platform8GiveSlotEPhj(slot.base, slot.capacity);
  }
}

}  // namespace tolvenar::testing
