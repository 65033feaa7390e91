// Copies that run on behind a host's text.
#include "platform/host_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace tolvenar::platform {
namespace {

std::string Copy(const void* from, uint32_t known, uint32_t count) {
  std::string to(count, '?');
  CopyHostBytes(reinterpret_cast<uint8_t*>(to.data()), from, known, count);
  return to;
}

TEST(HostText, PromisedBytesAreCopied) {
  const char text[] = "ab\0cdef";
  EXPECT_EQ(Copy(text, 3, 6), std::string("ab\0cde", 6));
}

TEST(HostText, FewerThanKnown) {
  EXPECT_EQ(Copy("abc", 4, 2), "ab");
  EXPECT_EQ(Copy("abc", 4, 0), "");
}

TEST(HostText, ManyPages) {
  const std::vector<char> bytes(100000, 'x');
  EXPECT_EQ(Copy(bytes.data(), 1, 100000), std::string(100000, 'x'));
}

#if defined(_WIN32)
size_t PageSize() {
  return 4096;
}
void* TakePages(size_t size) {
  return VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
}
bool SetReadable(void* start, size_t size, bool readable) {
  DWORD old = 0;
  return VirtualProtect(start, size, readable ? PAGE_READWRITE : PAGE_NOACCESS, &old) != 0;
}
void GivePages(void* start, size_t /*size*/) {
  VirtualFree(start, 0, MEM_RELEASE);
}
#else
size_t PageSize() {
  return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}
void* TakePages(size_t size) {
  void* got = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return got == MAP_FAILED ? nullptr : got;
}
bool SetReadable(void* start, size_t size, bool readable) {
  return mprotect(start, size, readable ? PROT_READ | PROT_WRITE : PROT_NONE) == 0;
}
void GivePages(void* start, size_t size) {
  munmap(start, size);
}
#endif

// Two pages of which the second can't be read.
class GuardedPages : public ::testing::Test {
 protected:
  void SetUp() override {
    base = static_cast<char*>(TakePages(2 * page));
    ASSERT_NE(base, nullptr);
    ASSERT_TRUE(SetReadable(base + page, page, false));
  }
  void TearDown() override { GivePages(base, 2 * page); }

  const size_t page = PageSize();
  char* base = nullptr;
};

TEST_F(GuardedPages, BytesBehindThePageThatCantBeRead_AreZeros) {
  base[page - 3] = 'a';
  base[page - 2] = 'b';
  EXPECT_EQ(Copy(base + page - 3, 3, 5), std::string("ab\0\0\0", 5));
  EXPECT_EQ(Copy(base + page - 3, 2, 5), std::string("ab\0\0\0", 5));
}

TEST_F(GuardedPages, SecondPageReadableAgain) {
  ASSERT_TRUE(SetReadable(base + page, page, true));
  base[page - 2] = 'a';
  base[page] = 'c';
  EXPECT_EQ(Copy(base + page - 2, 2, 4), std::string("a\0c\0", 4));
}

#if !defined(_WIN32)
TEST_F(GuardedPages, LooksLeaveNoDescriptorOpen) {
  const int before = dup(STDERR_FILENO);
  close(before);
  EXPECT_EQ(Copy(base + page - 1, 1, 2), std::string(2, '\0'));
  const int after = dup(STDERR_FILENO);
  close(after);
  EXPECT_EQ(before, after);
}
#endif

}  // namespace
}  // namespace tolvenar::platform
