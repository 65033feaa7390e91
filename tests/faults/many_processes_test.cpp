// Processes that save into one file: it is always one of their workbooks whole, for those who read it meanwhile too, and who comes while
// another has it is told so.
#if !defined(_WIN32)

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <set>
#include <vector>

#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "support/workbook_file.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {
namespace {

constexpr int kBooksEach = 4;

// How a process ends.
enum Verdict { kGood, kUnknownResult, kNeverSaved, kMixedBytes, kNeverRead };

// The book of a number: as long as none of another, and filled with bytes of its own. Some fit where small streams lie, some don't.
Bytes BookOf(int number) {
  const Bytes filling(static_cast<size_t>(100 + 700 * number), static_cast<uint8_t>(number + 1));
  return StreamBuilder()
      .Bof(6)
      .Sheet("Data")
      .Eof()
      .Bof(6, kWorksheet)
      .Dimensions(0, 1, 0, 1)
      .Record(0x0042, filling)
      .Eof()
      .Stream();
}

int16_t SaveBook(const std::string& path, int number) {
  uint32_t size = 0;
  uint32_t table = 0;
  uint32_t buffer = StreamBuilder().Raw(BookOf(number)).Load(&size);
  ::XLLocateSheets(buffer, &table, size);
  const int16_t result = ::XLSaveFile(path.c_str(), &buffer, &table, &size);
  MEMORYFREEALL();
  return result;
}

// Whoever has been refused in all its rounds goes on: the others come to an end, and leave it the file.
constexpr int kMostRounds = 100000;

// Saves one of its books after the other.
int Write(const std::string& path, int writer, int rounds) {
  int saved = 0;
  for (int round = 0; round < rounds || (saved == 0 && round < kMostRounds); ++round) {
    const int16_t result = SaveBook(path, writer * kBooksEach + round % kBooksEach);
    if (result == 0) ++saved;
    // 101: another has it; 111: another is about to make it.
    if (result != 0 && result != 101 && result != 111) return kUnknownResult;
  }
  return saved != 0 ? kGood : kNeverSaved;
}

// Opens the file again and again, and reads its bytes past the library. Both see nothing but whole books.
int Read(const std::string& path, const std::set<Bytes>& books, const std::set<Bytes>& files, int rounds) {
  int seen = 0;
  for (int round = 0; round < rounds || (seen == 0 && round < kMostRounds); ++round) {
    Ground ground;
    const int16_t result = ::XLOpenFile(path.c_str(), &ground.buffer, &ground.size);
    if (result != 0 && result != 101) return kUnknownResult;
    if (result == 0 && books.count(BlockContents(ground.buffer, ground.size - kBufEndSize)) == 0)
      return kMixedBytes;
    if (result == 0) ++seen;
    const Bytes file = FileBytes(path);
    if (!file.empty() && files.count(file) == 0) return kMixedBytes;
  }
  return seen != 0 ? kGood : kNeverRead;
}

class ManyProcesses : public ::testing::TestWithParam<int> {
 protected:
  // Runs the body in a process of its own.
  void Start(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    ASSERT_GT(child, 0);
    children_.push_back(child);
  }

  void ExpectAllGood() {
    for (const pid_t child : children_) {
      int status = 0;
      EXPECT_EQ(waitpid(child, &status, 0), child);
      EXPECT_TRUE(WIFEXITED(status));
      EXPECT_EQ(WEXITSTATUS(status), kGood);
    }
  }

  std::vector<pid_t> children_;
  Ground ground_;
};

TEST_P(ManyProcesses, SavingIntoOneFile_NeverMixTheirBytes) {
  constexpr int kRounds = 150;
  std::set<Bytes> books;
  std::set<Bytes> files;
  for (int number = 0; number < GetParam() * kBooksEach; ++number) {
    const std::string sample = ground_.Path() + ".sample" + std::to_string(number);
    ASSERT_EQ(SaveBook(sample, number), 0);
    books.insert(BookOf(number));
    files.insert(FileBytes(sample));
  }
  const size_t samples = ground_.folder.Count();
  for (int writer = 0; writer < GetParam(); ++writer) {
    Start([&, writer] { return Write(ground_.Path(), writer, kRounds); });
  }
  for (int reader = 0; reader < 2; ++reader)
    Start([&] { return Read(ground_.Path(), books, files, 4 * kRounds); });
  ExpectAllGood();
  EXPECT_EQ(files.count(FileBytes(ground_.Path())), 1u);
  EXPECT_EQ(ground_.folder.Count(), samples + 1) << "something is left beside the file";
}

// Enters references until it has so many.
int EnterReferences(const std::string& path, int wanted) {
  for (int entered = 0; entered < wanted;) {
    const int32_t result = ::XLCreateReference(path.c_str());
    if (result > 0) ++entered;
    if (result <= 0 && result != -3) return kUnknownResult;
  }
  return kGood;
}

TEST_P(ManyProcesses, EnteringReferencesIntoOneFile_LoseNone) {
  constexpr int kEach = 40;
  const Bytes empty = {0xFF, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};
  ASSERT_TRUE(WriteWorkbook(ground_.Path(), "Contents", empty));
  for (int i = 0; i < GetParam(); ++i) Start([&] { return EnterReferences(ground_.Path(), kEach); });
  ExpectAllGood();
  const uint32_t all = static_cast<uint32_t>(kEach * GetParam());
  Bytes listed = Bytes{0xFF, 0x10, 4, 0} + U32(all);
  for (uint32_t id = 1; id <= all; ++id) {
    listed = listed + Bytes{0xFD, 0x10, 4, 0} + U32(id);
    std::string name = std::to_string(id);
    name.resize(8, ' ');
    EXPECT_EQ(ReadStream(ground_.Path(), name).value_or(Bytes()).size(), 32u) << name;
  }
  listed = listed + Bytes{0xFE, 0x10, 4, 0, 0, 0, 0, 0};
  EXPECT_EQ(ReadStream(ground_.Path(), "Contents"), listed);
  EXPECT_EQ(ground_.folder.Count(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Count, ManyProcesses, ::testing::Values(2, 5));

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
