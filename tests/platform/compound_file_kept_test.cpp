// What a change doesn't touch comes through a commit as it was.
#if !defined(_WIN32)

#include <filesystem>
#include <tuple>

#include "platform/storage.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

// The members of a file as the strict checker sees them after a first commit, or by the builder's own word.
class CompoundKept : public StorageTest, public ::testing::WithParamInterface<uint32_t> {
 protected:
  // A file of the wanted version with nested storages, streams on both sides of the cutoff, and stamps on
  // everything.
  CompoundImage Build() {
    CompoundBuilder builder(GetParam());
    builder.AddStream("Workbook", Pattern(9000, 1));
    const uint32_t outer = builder.AddStorage("outer");
    const uint32_t inner = builder.AddStorage("inner", outer);
    builder.AddStream("small", Pattern(77, 2), inner);
    builder.AddStream("large", Pattern(70000, 3), inner);
    builder.AddStream("empty", {}, outer);
    builder.AddStorage("hollow", outer);
    builder.AddStream(
        "\x05"
        "Summary",
        Pattern(4095, 4));
    for (uint32_t entry = 0; entry <= 8; ++entry) builder.Stamp(entry, static_cast<uint8_t>(10 + entry));
    return builder.Build();
  }

  static void ExpectKept(const std::map<std::string, CheckedEntry>& entries) {
    const std::tuple<const char*, uint8_t, size_t, uint32_t, uint8_t> kKept[] = {
        {"/", 5, 0, 0, 10},
        {"/outer", 1, 0, 0, 12},
        {"/outer/inner", 1, 0, 0, 13},
        {"/outer/inner/small", 2, 77, 2, 14},
        {"/outer/inner/large", 2, 70000, 3, 15},
        {"/outer/empty", 2, 0, 1, 16},
        {"/outer/hollow", 1, 0, 0, 17},
        {"/\x05"
         "Summary",
         2, 4095, 4, 18}};
    for (const auto& [path, type, size, seed, stamp] : kKept) {
      ASSERT_EQ(entries.count(path), 1u) << path;
      const CheckedEntry& entry = entries.at(path);
      EXPECT_EQ(entry.type, type) << path;
      EXPECT_TRUE(entry.contents == Pattern(size, seed)) << path;
      for (size_t i = 0; i < 36; ++i) EXPECT_EQ(entry.own[i], static_cast<uint8_t>(stamp + 80 + i)) << path;
    }
  }
};

TEST_P(CompoundKept, Replace_KeepsAllOthersWithIdsBitsAndTimes) {
  WriteFile(Path("file"), Build().bytes);
  EXPECT_EQ(StreamOf(Path("file"), "workbook"), Pattern(9000, 1));
  EXPECT_EQ(Save(Path("file"), "Workbook", Pattern(30000, 9)), S_OK);
  auto entries = CheckCompound(ReadFile(Path("file")));
  EXPECT_EQ(entries.size(), 9u);
  EXPECT_TRUE(entries["/Workbook"].contents == Pattern(30000, 9));
  EXPECT_EQ(entries["/Workbook"].own, Bytes(36, 0));
  ExpectKept(entries);
}

TEST_P(CompoundKept, Destroy_KeepsAllOthers) {
  WriteFile(Path("file"), Build().bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  EXPECT_EQ(file.Destroy("Workbook"), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  const auto entries = CheckCompound(ReadFile(Path("file")));
  EXPECT_EQ(entries.size(), 8u);
  ExpectKept(entries);
}

TEST_P(CompoundKept, SecondCommit_StillKeepsAllOthers) {
  WriteFile(Path("file"), Build().bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  for (uint32_t round = 0; round < 3; ++round) {
    EXPECT_EQ(file.Put("Workbook", Pattern(round * 4000, round)), S_OK);
    EXPECT_EQ(file.Commit(), S_OK);
  }
  ExpectKept(CheckCompound(ReadFile(Path("file"))));
}

TEST_P(CompoundKept, StreamWrittenInPlace_KeepsItsOwnStamp) {
  WriteFile(Path("file"), Build().bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  platform::Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file.storage, u"Workbook", platform::kModeExclusive, &stream), S_OK);
  EXPECT_EQ(platform::StreamWrite(stream, "!", 1, nullptr), S_OK);
  platform::StreamRelease(stream);
  EXPECT_EQ(file.Commit(), S_OK);
  auto entries = CheckCompound(ReadFile(Path("file")));
  EXPECT_EQ(entries["/Workbook"].own[0], 11 + 80);
  EXPECT_EQ(entries["/Workbook"].contents[0], '!');
  ExpectKept(entries);
}

TEST_P(CompoundKept, Version_StaysWhatItWas) {
  WriteFile(Path("file"), Build().bytes);
  EXPECT_EQ(Save(Path("file"), "Workbook", Pattern(100)), S_OK);
  EXPECT_EQ(ReadFile(Path("file"))[26], GetParam());
}

TEST_P(CompoundKept, DestroyedStorage_GoesWithAllThatIsInIt) {
  WriteFile(Path("file"), Build().bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  EXPECT_EQ(file.Destroy("OUTER"), S_OK);
  EXPECT_EQ(file.Put("new", Pattern(5)), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  const auto entries = CheckCompound(ReadFile(Path("file")));
  EXPECT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries.count("/outer"), 0u);
}

TEST_P(CompoundKept, StorageAsStream_CantBeOpened) {
  WriteFile(Path("file"), Build().bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  Bytes bytes;
  EXPECT_EQ(file.Get("outer", &bytes), platform::kStgFileNotFound);
  EXPECT_EQ(file.Get("small", &bytes),
            platform::kStgFileNotFound);  // a member of a member is none of the root
}

// The list of the sector table's sectors outgrows the header: beyond 109 of them, and beyond one sector of
// the long list (127 more).
TEST_P(CompoundKept, LongSectorTable_IsReadAndWritten) {
  const size_t megabytes = GetParam() == 4 ? 8 : 18;
  CompoundBuilder builder(GetParam());
  builder.AddStream("big", Pattern(megabytes << 20, 1));
  builder.AddStream("Workbook", Pattern(100, 2));
  const CompoundImage image = builder.Build();
  if (GetParam() == 3) {
    EXPECT_EQ(image.long_list.size(), 2u);
  }
  WriteFile(Path("file"), image.bytes);
  EXPECT_TRUE(StreamOf(Path("file"), "big") == Pattern(megabytes << 20, 1));
  EXPECT_EQ(Save(Path("file"), "Workbook", Pattern(20000, 3)), S_OK);
  auto entries = CheckCompound(ReadFile(Path("file")));
  EXPECT_TRUE(entries["/big"].contents == Pattern(megabytes << 20, 1));
  EXPECT_TRUE(entries["/Workbook"].contents == Pattern(20000, 3));
}

INSTANTIATE_TEST_SUITE_P(Versions, CompoundKept, ::testing::Values(3u, 4u));

class CompoundCorpus : public StorageTest {
 protected:
  void SetUp() override {
    StorageTest::SetUp();
    const char* folder = std::getenv("TOLVENAR_CORPUS");
    if (folder != nullptr) corpus_ = folder;
    if (!std::filesystem::is_directory(corpus_))
      GTEST_SKIP() << "NOT TESTED: no corpus of real workbooks here";
  }

  std::string Copy(const std::string& name) const {
    WriteFile(folder_ / name, ReadFile(corpus_ / name));
    return Path(name);
  }

  std::filesystem::path corpus_;
};

// Files that other programs made, with a stream added: first the library's own copy is checked, then a second
// change must leave everything in it alone. Files that can't be opened must be the ones known to be broken.
TEST_F(CompoundCorpus, RealWorkbook_TakesAChangeAndKeepsTheRest) {
  int opened = 0;
  for (const auto& entry : std::filesystem::directory_iterator(corpus_)) {
    if (entry.path().extension() != ".xls") continue;
    const std::string path = Copy(entry.path().filename().string());
    const Bytes before = ReadFile(path);
    if (Save(path, "first addition", Pattern(10)) != S_OK) {
      EXPECT_TRUE(ReadFile(path) == before) << path;
      continue;
    }
    ++opened;
    auto first = CheckCompound(ReadFile(path));
    EXPECT_EQ(Save(path, "another addition", Pattern(9000)), S_OK);
    auto second = CheckCompound(ReadFile(path));
    ASSERT_EQ(second.size(), first.size() + 1) << path;
    for (const auto& [name, had] : first) {
      EXPECT_EQ(second[name].own, had.own) << path << name;
      EXPECT_TRUE(second[name].contents == had.contents) << path << name;
    }
  }
  EXPECT_GE(opened, 56);
}

TEST_F(CompoundCorpus, ChainOneSectorTooLong_IsReadToItsSize) {
  const Bytes bytes = StreamOf(Copy("poi__45290.xls"), "Workbook");
  ASSERT_GT(bytes.size(), 4u);
  EXPECT_EQ(bytes[0], 0x09);
  EXPECT_EQ(bytes[1], 0x08);
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
