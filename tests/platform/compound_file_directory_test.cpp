// The directory: its order, its balance, and the names in it.
#if !defined(_WIN32)

#include <clocale>
#include <cwctype>

#include "platform/portable/compound_name.h"
#include "platform/storage.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

using platform::CompareNames;
using platform::FoldUnit;
using platform::IsGoodName;
using platform::Name;

class CompoundDirectory : public StorageTest {};

Name NameOf(const std::u16string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size())};
}

int Compare(const std::u16string& a, const std::u16string& b) {
  return CompareNames(NameOf(a), NameOf(b));
}

TEST(CompoundName, ShorterName_ComesFirst) {
  EXPECT_LT(Compare(u"zz", u"aaa"), 0);
  EXPECT_GT(Compare(u"aaa", u"zz"), 0);
}

TEST(CompoundName, NamesOfOneLength_CompareByUpperCase) {
  EXPECT_EQ(Compare(u"workbook", u"WorkBook"), 0);
  EXPECT_LT(Compare(u"a", u"B"), 0);
  EXPECT_GT(Compare(u"_", u"a"), 0);  // '_' stands behind 'A', though in front of 'a'
  EXPECT_LT(Compare(u"\u0005Summary", u"ASummary"), 0);
}

TEST(CompoundName, LettersBeyondAscii_FoldToo) {
  EXPECT_EQ(Compare(u"\u00E4\u00F6\u00FF\u0101\u017E", u"\u00C4\u00D6\u0178\u0100\u017D"), 0);
  EXPECT_EQ(Compare(u"\u03B1\u03C9\u03AC\u03C2", u"\u0391\u03A9\u0386\u03A3"), 0);
  EXPECT_EQ(Compare(u"\u0431\u044F\u0451\u0491", u"\u0411\u042F\u0401\u0490"), 0);
  EXPECT_NE(Compare(u"\u00DF", u"S"), 0);
  EXPECT_NE(Compare(u"\u00F7", u"\u00D7"), 0);
}

// The system's own tables are the second source for ours. They are younger: what they added later must not
// fold here, so that only letters that have been letters from the start are compared.
TEST(CompoundName, Fold_AgreesWithTheSystemsTables) {
  if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
    GTEST_SKIP() << "NOT TESTED: no locale C.UTF-8 on this machine";
  const struct {
    const char* label;
    uint16_t first, last;
  } kBlocks[] = {{"ASCII and Latin-1", 0x00, 0xFF},    {"Latin Extended-A", 0x100, 0x17F},
                 {"Latin Extended-B", 0x1C4, 0x1EF},   {"Greek", 0x386, 0x3CE},
                 {"Cyrillic", 0x400, 0x4BF},           {"Armenian", 0x531, 0x586},
                 {"Latin Additional", 0x1E00, 0x1E95}, {"Vietnamese", 0x1EA0, 0x1EF9},
                 {"Greek Extended", 0x1F00, 0x1FFC},   {"Roman numerals", 0x2160, 0x217F},
                 {"circled letters", 0x24B6, 0x24E9},  {"full width", 0xFF21, 0xFF5A},
                 {"the end", 0xFF80, 0xFFFF}};
  for (const auto& block : kBlocks) {
    for (uint32_t unit = block.first; unit <= block.last; ++unit) {
      EXPECT_EQ(FoldUnit(static_cast<uint16_t>(unit)), std::towupper(unit))
          << block.label << " " << std::hex << unit;
    }
  }
  for (uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const uint16_t folded = FoldUnit(static_cast<uint16_t>(unit));
    if (folded != unit) {
      EXPECT_EQ(folded, std::towupper(unit)) << std::hex << unit;
    }
  }
  std::setlocale(LC_CTYPE, "C");
}

TEST(CompoundName, Fold_OfAFoldedUnit_IsItself) {
  for (uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const uint16_t folded = FoldUnit(static_cast<uint16_t>(unit));
    EXPECT_EQ(FoldUnit(folded), folded) << std::hex << unit;
  }
}

TEST(CompoundName, GoodNames_Are1To31UnitsWithoutTheFourForbidden) {
  EXPECT_TRUE(IsGoodName(NameOf(std::u16string(1, u'a'))));
  EXPECT_TRUE(IsGoodName(NameOf(std::u16string(31, u'a'))));
  EXPECT_TRUE(IsGoodName(NameOf(u"\u0005SummaryInformation")));
  EXPECT_FALSE(IsGoodName(NameOf(u"")));
  EXPECT_FALSE(IsGoodName(NameOf(std::u16string(32, u'a'))));
  EXPECT_FALSE(IsGoodName(NameOf(std::u16string(u"a\0b", 3))));
  for (const char16_t* bad : {u"a/b", u"a\\b", u"a:b", u"a!b"}) EXPECT_FALSE(IsGoodName(NameOf(bad)));
}

TEST_F(CompoundDirectory, CreateStream_UnderABadName_IsRefused) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  EXPECT_EQ(file.Put("", {}), platform::kStgInvalidName);
  EXPECT_EQ(file.Put("a/b", {}), platform::kStgInvalidName);
  EXPECT_EQ(file.Put(std::string(32, 'n'), {}), platform::kStgInvalidName);
  EXPECT_EQ(file.Put(std::string(31, 'n'), {1}), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  file.Release();
  EXPECT_EQ(StreamOf(Path("file"), std::string(31, 'N')), Bytes({1}));
}

// Every count up to two full levels beyond a full tree, so that each shape of the lowest level comes up.
TEST_F(CompoundDirectory, TreeOfAnyCount_IsBalanced) {
  const std::string path = Make("file", {});
  for (uint32_t count = 1; count <= 70; ++count) {
    // Counting down, and with names of two lengths, so that the order of making is not the order of names.
    EXPECT_EQ(Save(path, "s" + std::to_string(count * 7919 % 1000), Pattern(count)), S_OK);
    EXPECT_EQ(CheckCompound(ReadFile(path)).size(), count + 1);
  }
}

TEST_F(CompoundDirectory, FiveHundredStreams_AreAllFound) {
  std::map<std::string, Bytes> streams;
  for (uint32_t i = 0; i < 500; ++i) streams[std::to_string(i * 7919)] = Pattern(i * 13, i);
  const std::string path = Make("file", streams);
  auto entries = CheckCompound(ReadFile(path));
  ASSERT_EQ(entries.size(), 501u);
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  for (const auto& [name, bytes] : streams) {
    Bytes back;
    EXPECT_EQ(file.Get(name, &back), S_OK);
    EXPECT_TRUE(back == bytes) << name;
    EXPECT_TRUE(entries["/" + name].contents == bytes) << name;
  }
}

TEST_F(CompoundDirectory, EveryOtherStreamDestroyed_LeavesABalancedTreeOfTheRest) {
  std::map<std::string, Bytes> streams;
  for (uint32_t i = 0; i < 200; ++i) streams["n" + std::to_string(i)] = Pattern(i * 50, i);
  const std::string path = Make("file", streams);
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  for (uint32_t i = 0; i < 200; i += 2) EXPECT_EQ(file.Destroy("n" + std::to_string(i)), S_OK);
  EXPECT_EQ(file.Put("fresh", Pattern(10)), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  auto entries = CheckCompound(ReadFile(path));
  ASSERT_EQ(entries.size(), 102u);
  for (uint32_t i = 1; i < 200; i += 2) {
    EXPECT_TRUE(entries["/n" + std::to_string(i)].contents == Pattern(i * 50, i)) << i;
  }
}

TEST_F(CompoundDirectory, MembersInNoOrder_AreFoundAllTheSame) {
  CompoundBuilder builder;
  for (const char* name : {"zebra", "Ant", "mule", "a", "Workbook"}) builder.AddStream(name, Pattern(100, 7));
  WriteFile(Path("file"), builder.Build().bytes);
  for (const char* name : {"ZEBRA", "ANT", "MULE", "A", "WORKBOOK"})
    EXPECT_EQ(StreamOf(Path("file"), name).size(), 100u);
}

TEST_F(CompoundDirectory, NewFile_IsThisByteForByte) {
  const Bytes file = ReadFile(Make("file", {{"S", {0xAA}}}));
  ASSERT_EQ(file.size(), 5u * 512);  // header, sector table, directory, mini sector table, mini stream
  Bytes directory(file.begin() + 1024, file.begin() + 1536);
  Bytes expected(512, 0);
  const char root[] = "Root Entry";
  for (size_t i = 0; i < 10; ++i) expected[2 * i] = static_cast<uint8_t>(root[i]);
  const std::map<size_t, Bytes> fields = {
      {64, {22, 0, 5, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0}},
      {116, {3, 0, 0, 0, 64}},
      {128, {'S'}},
      {192, {4, 0, 2, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
      {248, {1}},
      {256 + 68, Bytes(12, 0xFF)},
      {384 + 68, Bytes(12, 0xFF)}};
  for (const auto& [at, bytes] : fields)
    std::copy(bytes.begin(), bytes.end(), expected.begin() + static_cast<long>(at));
  EXPECT_EQ(directory, expected);
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
