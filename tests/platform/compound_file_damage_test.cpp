// Damaged files: an error or the whole truth, and never a crash, a hang or a changed file.
#if !defined(_WIN32)

#include <algorithm>
#include <chrono>

#include "platform/storage.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

class CompoundDamage : public StorageTest {
 protected:
  // Thousands of files: in memory, where there is such a place.
  CompoundDamage() : StorageTest("/dev/shm") {}

  // What reading `name` from these bytes gives: the first failure, or S_OK and the stream.
  HRESULT Read(const Bytes& file, const std::string& name, Bytes* bytes = nullptr) {
    Bytes own;
    WriteFile(Path("file"), file);
    OpenFile open;
    const HRESULT result = open.Open(Path("file"));
    return result == S_OK ? open.Get(name, bytes != nullptr ? bytes : &own) : result;
  }

  // The damage must be told on reading the stream, and a change must be refused without touching the file.
  void ExpectDamaged(const Bytes& file, const std::string& name, const char* label) {
    EXPECT_EQ(Read(file, name), platform::kStgDocFileCorrupt) << label;
    EXPECT_EQ(Save(Path("file"), "addition", Pattern(100)), platform::kStgDocFileCorrupt) << label;
    EXPECT_TRUE(ReadFile(Path("file")) == file) << label;
    EXPECT_EQ(Listing().size(), 1u) << label;
  }

  // A file with two streams in sectors, two in mini sectors, and a storage.
  static CompoundBuilder Small() {
    CompoundBuilder builder;
    builder.AddStream("Workbook", Pattern(5000, 1));
    builder.AddStream("mini", Pattern(300, 2));
    const uint32_t storage = builder.AddStorage("storage");
    builder.AddStream("other", Pattern(200, 3), storage);
    return builder;
  }

  static constexpr uint32_t kWorkbook = 1;
  static constexpr uint32_t kMini = 2;
  static constexpr uint32_t kStorage = 3;
  static constexpr uint32_t kOther = 4;
  static constexpr size_t kLeft = 68, kRight = 72, kChild = 76, kStart = 116, kSize = 120;
};

TEST_F(CompoundDamage, SmallFile_IsReadUndamaged) {
  Bytes bytes;
  EXPECT_EQ(Read(Small().Build().bytes, "Workbook", &bytes), S_OK);
  EXPECT_TRUE(bytes == Pattern(5000, 1));
  EXPECT_EQ(Read(Small().Build().bytes, "mini", &bytes), S_OK);
  EXPECT_TRUE(bytes == Pattern(300, 2));
}

// Both layouts: the builder's, with the tables behind the contents, and the library's own, with the contents
// last.
TEST_F(CompoundDamage, CutOffAnywhere_GivesAnErrorOrTheWholeStream) {
  const Bytes own = ReadFile(Make("own", {{"Workbook", Pattern(4097, 1)}, {"mini", Pattern(300, 2)}}));
  std::filesystem::remove(Path("own"));
  for (const Bytes& whole : {Small().Build().bytes, own}) {
    int read = 0;
    const Bytes expected = whole == own ? Pattern(4097, 1) : Pattern(5000, 1);
    for (size_t size = 0; size < whole.size(); ++size) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      Bytes bytes;
      if (Read(cut, "Workbook", &bytes) == S_OK) {
        ++read;
        ASSERT_TRUE(bytes == expected) << size;
      }
      if (Read(cut, "mini", &bytes) == S_OK) {
        ASSERT_TRUE(bytes == Pattern(300, 2)) << size;
      }
    }
    // Of the last sector of the library's own file one byte counts, the stream's last; of that of the
    // builder's file 15 entries of the table count. All cuts behind that leave the stream whole.
    EXPECT_EQ(read, whole == own ? 512 - 1 : 512 - 15 * 4);
  }
}

// False for a byte that another stands for: contents are anyone's, and so is the middle of an unused list.
bool StandsForItself(const Bytes& file, size_t at) {
  const bool contents = at >= 512 && at < 512 + 12 * 512;
  if (contents) return at % 50 == 0;
  if (at < 8 || at + 8 >= file.size() || at % 8 == 0) return true;
  return !std::all_of(file.begin() + static_cast<std::ptrdiff_t>(at) - 8,
                      file.begin() + static_cast<std::ptrdiff_t>(at) + 8,
                      [&](uint8_t byte) { return byte == file[at]; });
}

class CompoundByteDamage : public CompoundDamage, public ::testing::WithParamInterface<int> {};

// Whatever is still opened can be saved, and is a sound file afterwards.
TEST_P(CompoundByteDamage, AnyByteOverwritten_GivesAnErrorOrASoundFileAfterASave) {
  const Bytes whole = Small().Build().bytes;
  int saved = 0;
  for (size_t at = 0; at < whole.size(); ++at) {
    if (!StandsForItself(whole, at)) continue;
    Bytes damaged = whole;
    damaged[at] = static_cast<uint8_t>(GetParam());
    WriteFile(Path("file"), damaged);
    if (Save(Path("file"), "addition", Pattern(4096)) == S_OK) {
      ++saved;
      CheckCompound(ReadFile(Path("file")));
      if (::testing::Test::HasFailure()) FAIL() << "byte " << at;
    } else {
      ASSERT_TRUE(ReadFile(Path("file")) == damaged) << at;
    }
  }
  EXPECT_GT(saved, 300);
}

INSTANTIATE_TEST_SUITE_P(Values, CompoundByteDamage, ::testing::Values(0x00, 0x7F, 0x80, 0xFF));

TEST_F(CompoundDamage, NoCompoundFile_IsToldAsSuch) {
  EXPECT_EQ(Read({}, "Workbook"), platform::kStgFileAlreadyExists);
  EXPECT_EQ(Read(Pattern(5000), "Workbook"), platform::kStgFileAlreadyExists);
  const char text[] = "Some text, and no workbook at all.";
  EXPECT_EQ(Read(Bytes(text, text + sizeof text), "Workbook"), platform::kStgFileAlreadyExists);
}

TEST_F(CompoundDamage, StreamChain_ThatGoesRound_IsDamage) {
  const CompoundImage image = Small().Build();
  const auto& chain = image.chains.at(kWorkbook);
  const struct {
    const char* label;
    size_t from, to;
  } kLoops[] = {{"names itself", 0, 0}, {"ring of two", 1, 0}, {"ring of all but one", chain.size() - 2, 0}};
  for (const auto& loop : kLoops) {
    CompoundImage damaged = image;
    damaged.PutU32(image.TableAt(chain[loop.from]), chain[loop.to]);
    ExpectDamaged(damaged.bytes, "Workbook", loop.label);
  }
}

TEST_F(CompoundDamage, StreamChain_ThatGoesRoundBehindItsLastByte_IsRead) {
  CompoundImage image = Small().Build();
  const auto& chain = image.chains.at(kWorkbook);
  image.PutU32(image.TableAt(chain.back()), chain.front());
  Bytes bytes;
  EXPECT_EQ(Read(image.bytes, "Workbook", &bytes), S_OK);
  EXPECT_TRUE(bytes == Pattern(5000, 1));
  image.PutU32(image.EntryAt(kWorkbook) + kSize, 5121);  // one byte more than the ring's sectors hold
  ExpectDamaged(image.bytes, "Workbook", "ring at full length");
}

TEST_F(CompoundDamage, MiniChain_ThatGoesRound_IsDamage) {
  const CompoundImage image = Small().Build();
  const auto& chain = image.chains.at(kMini);
  const struct {
    const char* label;
    size_t from, to;
  } kLoops[] = {{"names itself", 0, 0}, {"ring of two", 1, 0}, {"ring of all but one", chain.size() - 2, 0}};
  for (const auto& loop : kLoops) {
    CompoundImage damaged = image;
    damaged.PutU32(image.MiniTableAt(chain[loop.from]), chain[loop.to]);
    ExpectDamaged(damaged.bytes, "mini", loop.label);
  }
  CompoundImage damaged = image;
  damaged.PutU32(image.MiniTableAt(chain.back()), chain.front());
  damaged.PutU32(image.EntryAt(kMini) + kSize, 321);
  ExpectDamaged(damaged.bytes, "mini", "ring at full length");
}

// A file whose directory and mini tables have three sectors each.
CompoundImage ManyMembers() {
  CompoundBuilder builder;
  for (int i = 0; i < 11; ++i) builder.AddStream("n" + std::to_string(i), Pattern(2000));
  return builder.Build();
}

TEST_F(CompoundDamage, DirectoryChain_ThatGoesRound_IsDamage) {
  const CompoundImage image = ManyMembers();
  ASSERT_EQ(image.directory.size(), 3u);
  for (size_t from = 0; from < 3; ++from) {
    CompoundImage damaged = image;
    damaged.PutU32(image.TableAt(image.directory[from]), image.directory[0]);
    ExpectDamaged(damaged.bytes, "n0", "ring");
  }
}

TEST_F(CompoundDamage, ChainOfTheMiniTable_ThatGoesRound_IsDamage) {
  const CompoundImage image = ManyMembers();
  ASSERT_EQ(image.mini_table.size(), 3u);
  for (size_t from = 0; from < 3; ++from) {
    CompoundImage damaged = image;
    damaged.PutU32(image.TableAt(image.mini_table[from]), image.mini_table[0]);
    ExpectDamaged(damaged.bytes, "n0", "ring");
  }
}

TEST_F(CompoundDamage, ChainOfTheMiniStream_ThatGoesRound_IsDamage) {
  CompoundImage image = ManyMembers();
  const auto& chain = image.chains.at(0);
  image.PutU32(image.TableAt(chain[1]), chain[0]);
  ExpectDamaged(image.bytes, "n0", "ring of two");
}

TEST_F(CompoundDamage, LongList_ThatGoesRound_IsDamage) {
  CompoundBuilder builder;
  builder.AddStream("Workbook", Bytes(30u << 20));
  const CompoundImage image = builder.Build();
  ASSERT_EQ(image.long_list.size(), 3u);
  for (size_t from = 0; from < 3; ++from) {
    CompoundImage damaged = image;
    damaged.PutU32(image.SectorAt(image.long_list[from]) + 508, image.long_list[0]);
    EXPECT_EQ(Read(damaged.bytes, "Workbook"), platform::kStgDocFileCorrupt) << "ring of " << from + 1;
  }
}

TEST_F(CompoundDamage, SameTableSectorListedTwice_IsDamage) {
  CompoundBuilder builder;
  builder.AddStream("Workbook", Pattern(100000));
  CompoundImage image = builder.Build();
  image.PutU32(76 + 4, image.table[0]);
  ExpectDamaged(image.bytes, "Workbook", "twice");
}

TEST_F(CompoundDamage, Siblings_ThatAreNoTree_AreDamage) {
  const CompoundImage image = Small().Build();
  const struct {
    const char* label;
    uint32_t entry;
    size_t link;
    uint32_t to;
  } kLinks[] = {{"left of itself", kWorkbook, kLeft, kWorkbook},
                {"right of itself", kWorkbook, kRight, kWorkbook},
                {"ring of two", kMini, kLeft, kWorkbook},
                {"shared", kMini, kLeft, kStorage},
                {"ring of all", kStorage, kRight, kWorkbook},
                {"child of itself", kStorage, kChild, kStorage},
                {"child above", kStorage, kChild, kWorkbook},
                {"root as sibling", kMini, kLeft, 0},
                {"root as member", kStorage, kChild, 0},
                {"member shared by two storages", kStorage, kRight, kOther},
                {"out of range", kMini, kLeft, 8},
                {"far out of range", kMini, kRight, 0xFFFFFFFE},
                {"unused entry", kMini, kLeft, 7}};
  for (const auto& link : kLinks) {
    CompoundImage damaged = image;
    damaged.PutU32(image.EntryAt(link.entry) + link.link, link.to);
    ExpectDamaged(damaged.bytes, "Workbook", link.label);
  }
}

TEST_F(CompoundDamage, EntryOfAnUnknownTypeOrWithAnImpossibleName_IsDamage) {
  constexpr size_t kNameSize = 64, kType = 66;
  const CompoundImage image = Small().Build();
  for (const uint8_t type : Bytes{0, 3, 5, 0x77}) {
    CompoundImage damaged = image;
    damaged.bytes[image.EntryAt(kMini) + kType] = type;
    ExpectDamaged(damaged.bytes, "Workbook", "type");
  }
  for (const uint32_t entry : {0u, kWorkbook}) {
    for (const uint8_t size : Bytes{0, 1, 3, 65, 66, 0xFE}) {
      CompoundImage damaged = image;
      damaged.bytes[image.EntryAt(entry) + kNameSize] = size;
      ExpectDamaged(damaged.bytes, "Workbook", "size of a name");
    }
  }
  CompoundImage nameless = image;
  nameless.bytes[image.EntryAt(kMini) + kNameSize] = 2;
  EXPECT_EQ(Read(nameless.bytes, "Workbook"), S_OK);
}

TEST_F(CompoundDamage, ListOfTheTableThatEndsBeforeItsCount_IsRead) {
  constexpr size_t kTableSectors = 44;
  CompoundImage image = Small().Build();
  image.PutU32(kTableSectors, 2);
  EXPECT_EQ(Read(image.bytes, "Workbook"), S_OK);
}

TEST_F(CompoundDamage, ChildOfAStream_IsNobodysBusiness) {
  CompoundImage image = Small().Build();
  image.PutU32(image.EntryAt(kWorkbook) + kChild, kWorkbook);
  EXPECT_EQ(Read(image.bytes, "Workbook"), S_OK);
}

TEST_F(CompoundDamage, HeaderOfAnotherFormat_IsDamage) {
  const CompoundImage image = Small().Build();
  const struct {
    const char* label;
    size_t at;
    uint8_t value;
  } kFields[] = {{"byte order", 28, 0xFF},
                 {"sectors of 256 bytes", 30, 8},
                 {"sectors of 1024 bytes", 30, 10},
                 {"mini sectors of 128 bytes", 32, 7},
                 {"cutoff", 57, 0x08},
                 {"no directory", 48, 0xFE}};
  for (const auto& field : kFields) {
    CompoundImage damaged = image;
    if (field.at == 48) damaged.PutU32(48, 0xFFFFFFFF);
    damaged.bytes[field.at] = field.value;
    ExpectDamaged(damaged.bytes, "Workbook", field.label);
  }
}

TEST_F(CompoundDamage, DirectoryChain_ThatEndsInAFreeSector_IsDamage) {
  CompoundImage image = Small().Build();
  image.PutU32(image.TableAt(image.directory.back()), 0xFFFFFFFF);
  ExpectDamaged(image.bytes, "Workbook", "free sector behind the directory");
}

TEST_F(CompoundDamage, TableSectorsBehindTheirCount_AreNotTaken) {
  CompoundBuilder builder;
  builder.AddStream("Workbook", Pattern(100000));
  CompoundImage image = builder.Build();
  ASSERT_EQ(image.table.size(), 2u);
  image.PutU32(44, 1);
  EXPECT_EQ(Read(image.bytes, "Workbook"), platform::kStgDocFileCorrupt);
}

TEST_F(CompoundDamage, MiniTableOfNoSectors_HasNone) {
  CompoundImage image = Small().Build();
  image.PutU32(64, 0);
  EXPECT_EQ(Read(image.bytes, "mini"), platform::kStgDocFileCorrupt);
  EXPECT_EQ(Read(image.bytes, "Workbook"), S_OK);
}

TEST_F(CompoundDamage, MiniStreamThatStopsInItsLastMiniSector_IsReadToTheEndOfThat) {
  CompoundBuilder builder;
  builder.AddStream("mini", Pattern(300));
  CompoundImage image = builder.Build();
  image.PutU32(image.EntryAt(0) + kSize, 290);
  Bytes bytes;
  EXPECT_EQ(Read(image.bytes, "mini", &bytes), S_OK);
  EXPECT_TRUE(bytes == Pattern(300));
  image.PutU32(image.EntryAt(0) + kSize, 256);
  ExpectDamaged(image.bytes, "mini", "one mini sector less");
  image.PutU32(image.EntryAt(0) + kSize, 64);
  image.PutU32(image.EntryAt(1) + kStart, 3);
  ExpectDamaged(image.bytes, "mini", "beyond the mini stream, though inside the file");
}

TEST_F(CompoundDamage, UnreachableEntryOfUnknownType_IsNobodysBusiness) {
  CompoundImage image = Small().Build();
  image.bytes[image.EntryAt(6) + 66] = 0x77;
  EXPECT_EQ(Read(image.bytes, "Workbook"), S_OK);
  EXPECT_EQ(Save(Path("file"), "addition", Pattern(100)), S_OK);
  EXPECT_EQ(CheckCompound(ReadFile(Path("file"))).size(), 6u);
}

TEST_F(CompoundDamage, StreamField_OutOfRange_IsDamage) {
  const CompoundImage image = Small().Build();
  const struct {
    const char* label;
    const char* name;
    uint32_t entry;
    size_t field;
    uint32_t value;
  } kFields[] = {{"size beyond the file", "Workbook", kWorkbook, kSize, 0x10000},
                 {"size of 4 GiB", "Workbook", kWorkbook, kSize, 0xFFFFFFFF},
                 {"size beyond the chain", "Workbook", kWorkbook, kSize, 5121},
                 {"start beyond the file", "Workbook", kWorkbook, kStart, 0x1000},
                 {"start at a mark", "Workbook", kWorkbook, kStart, 0xFFFFFFFE},
                 {"mini start beyond the mini stream", "mini", kMini, kStart, 0x1000},
                 {"mini size beyond the chain", "mini", kMini, kSize, 321},
                 {"mini stream of no size", "mini", 0, kSize, 0},
                 {"mini stream of 4 GiB", "mini", 0, kSize, 0xFFFFFFFF},
                 {"mini stream beyond the file", "mini", 0, kStart, 0x1000}};
  for (const auto& field : kFields) {
    CompoundImage damaged = image;
    damaged.PutU32(image.EntryAt(field.entry) + field.field, field.value);
    ExpectDamaged(damaged.bytes, field.name, field.label);
  }
}

TEST_F(CompoundDamage, HighHalfOfASize_CountsInVersion4Alone) {
  CompoundImage image = Small().Build();
  image.PutU32(image.EntryAt(kWorkbook) + kSize + 4, 0xCCCCCCCC);
  EXPECT_EQ(Read(image.bytes, "Workbook"), S_OK);
  CompoundBuilder builder(4);
  builder.AddStream("Workbook", Pattern(5000));
  CompoundImage large = builder.Build();
  large.PutU32(large.EntryAt(kWorkbook) + kSize + 4, 1);
  ExpectDamaged(large.bytes, "Workbook", "4 GiB more");
}

TEST_F(CompoundDamage, DamagedStream_LeavesTheOthersReadableAndCanBeReplaced) {
  CompoundImage image = Small().Build();
  image.PutU32(image.TableAt(image.chains.at(kWorkbook)[0]), 0xFFFFFFFF);
  EXPECT_EQ(Read(image.bytes, "Workbook"), platform::kStgDocFileCorrupt);
  EXPECT_EQ(Read(image.bytes, "mini"), S_OK);
  EXPECT_EQ(Save(Path("file"), "mini", Pattern(10)), platform::kStgDocFileCorrupt);
  EXPECT_EQ(Save(Path("file"), "Workbook", Pattern(6000)), S_OK);
  EXPECT_EQ(CheckCompound(ReadFile(Path("file"))).size(), 5u);
}

TEST_F(CompoundDamage, DamagedStream_IsDamagedAtEveryReadingAndCanBeDestroyed) {
  CompoundImage image = Small().Build();
  image.PutU32(image.TableAt(image.chains.at(kWorkbook)[3]), 0xFFFFFFFF);
  WriteFile(Path("file"), image.bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  Bytes bytes;
  EXPECT_EQ(file.Get("Workbook", &bytes), platform::kStgDocFileCorrupt);
  EXPECT_EQ(file.Get("Workbook", &bytes), platform::kStgDocFileCorrupt);
  EXPECT_EQ(file.Destroy("Workbook"), S_OK);
  EXPECT_EQ(file.Put("Workbook", Pattern(6000)), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_EQ(CheckCompound(ReadFile(Path("file"))).size(), 5u);
}

TEST_F(CompoundDamage, StorageThatHasFailed_FailsEveryCallFromThenOn) {
  CompoundImage image = Small().Build();
  image.PutU32(image.TableAt(image.chains.at(kWorkbook)[0]), 0xFFFFFFFF);
  WriteFile(Path("file"), image.bytes);
  OpenFile file;
  ASSERT_EQ(file.Open(Path("file")), S_OK);
  platform::Stream* stream = nullptr;
  platform::Stream* other = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file.storage, u"mini", platform::kModeExclusive, &stream), S_OK);
  uint8_t byte = 0;
  uint64_t size = 0;
  const HRESULT results[] = {
      platform::StreamWrite(stream, &byte, 1, nullptr),
      platform::StreamRead(stream, &byte, 1, nullptr),
      platform::StreamSize(stream, &size),
      platform::StreamCommit(stream, 0),
      platform::StorageOpenStream(file.storage, u"Workbook", platform::kModeExclusive, &other),
      platform::StorageCreateStream(file.storage, u"new", platform::kModeExclusive, &other),
      platform::StorageDestroyElement(file.storage, u"Workbook"),
      file.Commit()};
  for (const HRESULT result : results) EXPECT_EQ(result, platform::kStgDocFileCorrupt);
  platform::StreamRelease(stream);
  EXPECT_TRUE(ReadFile(Path("file")) == image.bytes);
}

// Streams that claim the same sectors over and over would make the new file many times as large as the old.
TEST_F(CompoundDamage, StreamsThatShareTheWholeFile_AreNotCopied) {
  CompoundBuilder builder;
  builder.AddStream("Workbook", Pattern(50000));
  for (int i = 0; i < 20; ++i) builder.AddStream("n" + std::to_string(i), Pattern(4096));
  CompoundImage image = builder.Build();
  for (uint32_t entry = 2; entry < 22; ++entry) {
    image.PutU32(image.EntryAt(entry) + kStart, image.chains.at(kWorkbook)[0]);
    image.PutU32(image.EntryAt(entry) + kSize, 50000);
  }
  EXPECT_EQ(Read(image.bytes, "n19"), S_OK);
  EXPECT_EQ(Save(Path("file"), "addition", Pattern(100)), platform::kStgDocFileCorrupt);
  EXPECT_TRUE(ReadFile(Path("file")) == image.bytes);
}

// Depth is the file's choice: it must not be the stack's.
TEST_F(CompoundDamage, HundredThousandLevelsOfStorages_AreWalked) {
  CompoundBuilder builder;
  uint32_t parent = 0;
  for (int level = 0; level < 100000; ++level) parent = builder.AddStorage("d", parent);
  builder.AddStream("Workbook", Pattern(10));
  WriteFile(Path("file"), builder.Build().bytes);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Save(Path("file"), "Workbook", Pattern(20)), S_OK);
  EXPECT_EQ(StreamOf(Path("file"), "Workbook"), Pattern(20));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
