// Streams of a compound file: what is written comes back, at every size where the format changes its mind.
#include <algorithm>

#include "platform/storage.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

using platform::Stream;

class CompoundStream : public StorageTest {
 protected:
  // A stream of a file open as `file_`; released by the test.
  Stream* NewStream(const char* name) {
    EXPECT_EQ(file_.Create(Path("file")), S_OK);
    Stream* stream = nullptr;
    EXPECT_EQ(platform::StorageCreateStream(file_.storage, Name(name), platform::kModeExclusive, &stream),
              S_OK);
    return stream;
  }

  const OLECHAR* Name(const char* name) {
    name_ = Widen(name);
    return reinterpret_cast<const OLECHAR*>(name_.c_str());
  }

  static uint64_t Size(Stream* stream) {
    uint64_t size = 99;
    EXPECT_EQ(platform::StreamSize(stream, &size), S_OK);
    return size;
  }

  OpenFile file_;
  std::u16string name_;
};

class CompoundStreamSize : public CompoundStream, public ::testing::WithParamInterface<size_t> {};

TEST_P(CompoundStreamSize, StreamOfThisSize_ComesBack) {
  const Bytes bytes = Pattern(GetParam());
  const std::string path = Make("file", {{"Workbook", bytes}});
  EXPECT_TRUE(StreamOf(path, "Workbook") == bytes);
}

TEST_P(CompoundStreamSize, StreamOfThisSizeBesideOthers_LeavesASoundFile) {
  const Bytes bytes = Pattern(GetParam());
  const std::string path =
      Make("file", {{"a", Pattern(100, 2)}, {"Workbook", bytes}, {"z", Pattern(5000, 3)}});
  auto entries = CheckCompound(ReadFile(path));
  EXPECT_EQ(entries.size(), 4u);
  EXPECT_TRUE(entries["/Workbook"].contents == bytes);
  EXPECT_TRUE(entries["/a"].contents == Pattern(100, 2));
  EXPECT_TRUE(entries["/z"].contents == Pattern(5000, 3));
}

// Around: a mini sector, a sector, the cutoff, 64 sectors, one sector of the table (127 sectors and itself),
// the header's list of them; 110 full sectors of the table, which the first sector of the long list makes 111.
INSTANTIATE_TEST_SUITE_P(Sizes, CompoundStreamSize,
                         ::testing::Values(0, 1, 63, 64, 65, 511, 512, 513, 4095, 4096, 4097, 64 * 512,
                                           64 * 512 + 1, 65 * 512, 126 * 512, 127 * 512, 511 * 128,
                                           109 * 128 * 512 - 200 * 512, (127 * 110 - 1) * 512,
                                           109 * 128 * 512, 20000000));

TEST_F(CompoundStream, TwentyMegabytesInOneWrite_TakeOneCallEachWay) {
  const Bytes bytes = Pattern(20u << 20);
  Make("file", {{"Workbook", bytes}});
  ASSERT_EQ(file_.Open(Path("file")), S_OK);
  Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file_.storage, Name("workbook"), platform::kModeExclusive, &stream),
            S_OK);
  Bytes back(bytes.size() + 1);
  uint32_t moved = 0;
  EXPECT_EQ(platform::StreamRead(stream, back.data(), static_cast<uint32_t>(back.size()), &moved), S_OK);
  back.resize(moved);
  EXPECT_TRUE(back == bytes);
  platform::StreamRelease(stream);
}

TEST_F(CompoundStream, Write_InPieces_IsOneStream) {
  const Bytes bytes = Pattern(10000);
  Stream* stream = NewStream("pieces");
  for (uint32_t at = 0, piece = 1; at < bytes.size(); at += piece, piece = piece * 2 % 1021) {
    piece = std::min<uint32_t>(piece, static_cast<uint32_t>(bytes.size()) - at);
    uint32_t moved = 0;
    ASSERT_EQ(platform::StreamWrite(stream, bytes.data() + at, piece, &moved), S_OK);
    ASSERT_EQ(moved, piece);
    ASSERT_EQ(Size(stream), at + piece);
  }
  platform::StreamRelease(stream);
  EXPECT_EQ(file_.Commit(), S_OK);
  file_.Release();
  EXPECT_TRUE(StreamOf(Path("file"), "pieces") == bytes);
}

TEST_F(CompoundStream, WriteLent_IsReadBackAndCommitted) {
  const Bytes bytes = Pattern(70000);
  Stream* stream = NewStream("lent");
  uint32_t moved = 0;
  ASSERT_EQ(platform::StreamWriteLent(stream, bytes.data(), static_cast<uint32_t>(bytes.size()), &moved),
            S_OK);
  EXPECT_EQ(moved, bytes.size());
  EXPECT_EQ(Size(stream), bytes.size());
  platform::StreamRelease(stream);
  ASSERT_EQ(platform::StorageOpenStream(file_.storage, Name("lent"), platform::kModeExclusive, &stream),
            S_OK);
  Bytes back(bytes.size());
  EXPECT_EQ(platform::StreamRead(stream, back.data(), static_cast<uint32_t>(back.size()), &moved), S_OK);
  EXPECT_TRUE(back == bytes);
  platform::StreamRelease(stream);
  ASSERT_EQ(file_.Commit(), S_OK);
  file_.Release();
  EXPECT_TRUE(StreamOf(Path("file"), "lent") == bytes);
}

TEST_F(CompoundStream, WriteLent_WithMoreBehindIt_IsOneStream) {
  const Bytes bytes = Pattern(9000);
  Stream* stream = NewStream("lent");
  ASSERT_EQ(platform::StreamWriteLent(stream, bytes.data(), 5000, nullptr), S_OK);
  ASSERT_EQ(platform::StreamWriteLent(stream, bytes.data() + 5000, 3000, nullptr), S_OK);
  ASSERT_EQ(platform::StreamWrite(stream, bytes.data() + 8000, 1000, nullptr), S_OK);
  platform::StreamRelease(stream);
  ASSERT_EQ(file_.Commit(), S_OK);
  file_.Release();
  EXPECT_TRUE(StreamOf(Path("file"), "lent") == bytes);
}

TEST_F(CompoundStream, Write_OverTheStartOfAnExistingStream_KeepsTheRest) {
  Bytes bytes = Pattern(9000);
  Make("file", {{"s", bytes}});
  ASSERT_EQ(file_.Open(Path("file")), S_OK);
  Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file_.storage, Name("s"), platform::kModeExclusive, &stream), S_OK);
  const uint8_t over[] = {1, 2, 3};
  ASSERT_EQ(platform::StreamWrite(stream, over, 3, nullptr), S_OK);
  EXPECT_EQ(Size(stream), 9000u);
  platform::StreamRelease(stream);
  ASSERT_EQ(file_.Commit(), S_OK);
  file_.Release();
  std::copy(over, over + 3, bytes.begin());
  EXPECT_TRUE(StreamOf(Path("file"), "s") == bytes);
}

TEST_F(CompoundStream, ReadThenWrite_GoOnFromOnePosition) {
  Make("file", {{"s", {'a', 'b', 'c', 'd'}}});
  ASSERT_EQ(file_.Open(Path("file")), S_OK);
  Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file_.storage, Name("s"), platform::kModeExclusive, &stream), S_OK);
  uint8_t bytes[8] = {};
  uint32_t moved = 0;
  EXPECT_EQ(platform::StreamRead(stream, bytes, 3, &moved), S_OK);
  EXPECT_EQ(moved, 3u);
  EXPECT_EQ(platform::StreamWrite(stream, "XY", 2, &moved), S_OK);
  EXPECT_EQ(Size(stream), 5u);
  EXPECT_EQ(platform::StreamRead(stream, bytes, 8, &moved), S_OK);
  EXPECT_EQ(moved, 0u);
  platform::StreamRelease(stream);
  ASSERT_EQ(file_.Commit(), S_OK);
  file_.Release();
  EXPECT_EQ(StreamOf(Path("file"), "s"), Bytes({'a', 'b', 'c', 'X', 'Y'}));
}

TEST_F(CompoundStream, Read_OfWhatIsChangedAndNotCommitted_GivesTheContentsAsTheyAreNow) {
  const Bytes bytes = Pattern(5000);
  const std::string path = Make("file", {{"Workbook", bytes}});
  ASSERT_EQ(file_.Open(path), S_OK);
  Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file_.storage, Name("Workbook"), platform::kModeExclusive, &stream),
            S_OK);
  uint32_t moved = 0;
  EXPECT_EQ(platform::StreamWrite(stream, "12345", 5, &moved), S_OK);
  Bytes rest(6000);
  EXPECT_EQ(platform::StreamRead(stream, rest.data(), 6000, &moved), S_OK);
  EXPECT_EQ(moved, 4995u);
  EXPECT_TRUE(std::equal(bytes.begin() + 5, bytes.end(), rest.begin()));
  platform::StreamRelease(stream);
}

TEST_F(CompoundStream, Read_PastTheEnd_MovesWhatIsThere) {
  Make("file", {{"s", Pattern(100)}});
  ASSERT_EQ(file_.Open(Path("file")), S_OK);
  Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageOpenStream(file_.storage, Name("s"), platform::kModeExclusive, &stream), S_OK);
  Bytes bytes(200);
  uint32_t moved = 99;
  EXPECT_EQ(platform::StreamRead(stream, bytes.data(), 200, &moved), S_OK);
  EXPECT_EQ(moved, 100u);
  EXPECT_EQ(platform::StreamRead(stream, bytes.data(), 200, &moved), S_OK);
  EXPECT_EQ(moved, 0u);
  platform::StreamRelease(stream);
}

TEST_F(CompoundStream, Write_OfNothing_ChangesNothing) {
  Stream* stream = NewStream("s");
  uint32_t moved = 99;
  EXPECT_EQ(platform::StreamWrite(stream, nullptr, 0, &moved), S_OK);
  EXPECT_EQ(moved, 0u);
  EXPECT_EQ(Size(stream), 0u);
  platform::StreamRelease(stream);
}

TEST_F(CompoundStream, Replace_ByAShorterOne_LeavesNothingOfTheOld) {
  const std::string path = Make("file", {{"s", Pattern(9000, 1)}});
  EXPECT_EQ(Save(path, "S", Pattern(10, 2)), S_OK);
  auto entries = CheckCompound(ReadFile(path));
  EXPECT_EQ(entries.size(), 2u);
  EXPECT_TRUE(entries["/S"].contents == Pattern(10, 2));
}

TEST_F(CompoundStream, GrowsOverTheCutoffAndBack_StaysSound) {
  const std::string path = Make("file", {{"s", Pattern(4095)}, {"t", Pattern(200, 7)}});
  for (const size_t size : {4096u, 100u, 70000u, 0u, 4095u}) {
    EXPECT_EQ(Save(path, "s", Pattern(size, 4)), S_OK);
    auto entries = CheckCompound(ReadFile(path));
    EXPECT_TRUE(entries["/s"].contents == Pattern(size, 4)) << size;
    EXPECT_TRUE(entries["/t"].contents == Pattern(200, 7)) << size;
  }
}

TEST_F(CompoundStream, Commit_TwiceFromOneStorage_WritesBothStates) {
  ASSERT_EQ(file_.Create(Path("file")), S_OK);
  EXPECT_EQ(file_.Put("a", Pattern(5000)), S_OK);
  EXPECT_EQ(file_.Commit(), S_OK);
  EXPECT_EQ(CheckCompound(ReadFile(Path("file"))).size(), 2u);
  Bytes back;
  EXPECT_EQ(file_.Get("a", &back), S_OK);
  EXPECT_TRUE(back == Pattern(5000));
  EXPECT_EQ(file_.Put("b", Pattern(50)), S_OK);
  EXPECT_EQ(file_.Commit(), S_OK);
  auto entries = CheckCompound(ReadFile(Path("file")));
  EXPECT_TRUE(entries["/a"].contents == Pattern(5000));
  EXPECT_TRUE(entries["/b"].contents == Pattern(50));
}

TEST_F(CompoundStream, OpenStream_IgnoresCase) {
  const std::string path = Make("file", {{"Book", Pattern(9)}});
  for (const char* name : {"book", "BOOK", "Book", "bOOk"})
    EXPECT_EQ(StreamOf(path, name), Pattern(9)) << name;
}

TEST_F(CompoundStream, OpenStream_OfAnotherName_IsNotFound) {
  Make("file", {{"Book", Pattern(9)}});
  ASSERT_EQ(file_.Open(Path("file")), S_OK);
  for (const char* name :
       {"Boo", "Books", "Workbook", "", "Root Entry", "a name of far more than thirty-one units"}) {
    Stream* stream = reinterpret_cast<Stream*>(&name_);
    EXPECT_EQ(platform::StorageOpenStream(file_.storage, Name(name), platform::kModeExclusive, &stream),
              static_cast<HRESULT>(0x80030002u))
        << name;
    EXPECT_EQ(stream, nullptr);
  }
}

TEST_F(CompoundStream, CreateStream_UnderATakenName_NeedsTheReplaceMode) {
  Make("file", {{"s", Pattern(9)}});
  ASSERT_EQ(file_.Open(Path("file")), S_OK);
  Stream* stream = nullptr;
  EXPECT_EQ(platform::StorageCreateStream(file_.storage, Name("S"), platform::kModeExclusive, &stream),
            static_cast<HRESULT>(0x80030050u));
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(platform::StorageCreateStream(file_.storage, Name("S"), platform::kModeReplace, &stream), S_OK);
  EXPECT_EQ(Size(stream), 0u);
  platform::StreamRelease(stream);
}

TEST_F(CompoundStream, NameOfBytesAbove7F_KeepsItsSignExtendedUnits) {
  const std::string path = Make("file", {{"\xC3\xA4", Pattern(9)}});
  EXPECT_EQ(StreamOf(path, "\xC3\xA4"), Pattern(9));
  const Bytes file = ReadFile(path);
  const uint8_t units[] = {0xC3, 0xFF, 0xA4, 0xFF, 0, 0};
  EXPECT_NE(std::search(file.begin(), file.end(), std::begin(units), std::end(units)), file.end());
}

TEST_F(CompoundStream, Destroy_RemovesTheStream) {
  const std::string path = Make("file", {{"a", Pattern(9)}, {"b", Pattern(9000)}});
  ASSERT_EQ(file_.Open(path), S_OK);
  EXPECT_EQ(file_.Destroy("B"), S_OK);
  EXPECT_EQ(file_.Destroy("B"), static_cast<HRESULT>(0x80030002u));
  EXPECT_EQ(file_.Commit(), S_OK);
  file_.Release();
  EXPECT_EQ(CheckCompound(ReadFile(path)).size(), 2u);
}

}  // namespace
}  // namespace tolvenar::testing
