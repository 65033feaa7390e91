// AllocationFault: the program's own operator new. A test program gets it by using AllocationFault, and no
// other does.
#include "support/allocation_faults.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kNone = -1;
constexpr int kFired = -2;

int requests_left = kNone;
bool throwing_count = false;
bool for_good = false;
std::size_t largest_request = 0;

void* Take(std::size_t size) {
  if (size > largest_request) largest_request = size;
  return std::malloc(size != 0 ? size : 1);
}

void* TakeOrFail(std::size_t size) {
  if (requests_left == kFired && for_good) return nullptr;
  if (requests_left >= 0 && requests_left-- == 0) {
    requests_left = kFired;
    return nullptr;
  }
  return Take(size);
}

void* TakeOrThrow(std::size_t size) {
  if (void* taken = throwing_count ? TakeOrFail(size) : Take(size)) return taken;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
  return TakeOrThrow(size);
}
void* operator new[](std::size_t size) {
  return TakeOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return TakeOrFail(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return TakeOrFail(size);
}
void operator delete(void* taken) noexcept {
  std::free(taken);
}
void operator delete[](void* taken) noexcept {
  std::free(taken);
}
void operator delete(void* taken, std::size_t) noexcept {
  std::free(taken);
}
void operator delete[](void* taken, std::size_t) noexcept {
  std::free(taken);
}
void operator delete(void* taken, const std::nothrow_t&) noexcept {
  std::free(taken);
}
void operator delete[](void* taken, const std::nothrow_t&) noexcept {
  std::free(taken);
}

namespace tolvenar::testing {

AllocationFault::AllocationFault(int k, Requests requests, Lasting lasting) {
  throwing_count = requests == Requests::kAll;
  for_good = lasting == Lasting::kForGood;
  requests_left = k;
}

AllocationFault::~AllocationFault() {
  requests_left = kNone;
  throwing_count = false;
  for_good = false;
}

bool AllocationFault::fired() const {
  return requests_left == kFired;
}

std::size_t LargestRequest() {
  return largest_request;
}

void ForgetRequests() {
  largest_request = 0;
}

}  // namespace tolvenar::testing
