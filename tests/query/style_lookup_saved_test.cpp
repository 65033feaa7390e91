// Style lookups through a save: what they add to a buffer, patched already, stands in the file behind its run, and is found there
// when the file is opened again.
#include "support/book_fixture.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"

#include "query/format_catalogue.h"
#include "query/style_lookup.h"
#include "workbook/open_workbook.h"
#include "workbook/save_workbook.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

Bytes FontOf(std::string_view name) {
  return U16(200) + U16(0) + U16(8) + U16(400) + U16(0) + Bytes{0, 0, 0, 0x44} +
         Bytes{static_cast<uint8_t>(name.size())} + Text(name);
}
Bytes FormatOf(uint16_t index, std::string_view text) {
  return U16(index) + Bytes{static_cast<uint8_t>(text.size())} + Text(text);
}
Bytes XfOf(uint16_t font, uint16_t format) {
  return U16(font) + U16(format) + U16(1) + U16(0x0321) + U16(7) + Bytes(6);
}

// Font 6, format 254, on the automatic background; as it is made.
constexpr XfValues kFull = {6, 254, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0};
const Bytes kFullPayload = U16(6) + U16(254) + U16(1) + U16(0x1C20) + U16(0x2009) + Bytes(6);

struct Runs {
  std::vector<Bytes> fonts, formats, xfs;
  Bytes behindXfs;  // what a full XF of BIFF8 brings along
};

class SavedLookups : public BookTest {
 protected:
  // A workbook of two sheets with a note, which is patched in later, behind each run.
  static StreamBuilder BookOf(uint8_t version, const Runs& runs, bool notes) {
    StreamBuilder book = StreamBuilder().Bof(version).Record(0x0042, U16(1252));
    AddRun(&book, 0x0031, runs.fonts, notes);
    AddRun(&book, 0x041E, runs.formats, notes);
    AddRun(&book, 0x00E0, runs.xfs, false);
    book.Raw(runs.behindXfs).Record(0x0293, Bytes(4)).Sheet("One").Sheet("Two").Eof();
    for (double value : {1.5, 2.5}) {
      book.Bof(version, kWorksheet).Dimensions(0, 1, 0, 1).Number(0, 0, 2, value);
      book.Record(0x023E, Bytes(10)).Eof();
    }
    return book;
  }
  static void AddRun(StreamBuilder* book, uint16_t type, const std::vector<Bytes>& run, bool notes) {
    for (const Bytes& payload : run) book->Record(type, payload);
    if (notes) book->Record(0x00D3, Bytes{9});
  }
  static Runs Before() {
    return {{FontOf("A"), FontOf("B"), FontOf("C"), FontOf("D")},
            {FormatOf(164, "0"), FormatOf(165, "00")},
            {XfOf(0, 0), XfOf(1, 164)},
            {}};
  }
  static Runs After(int32_t version) {
    Runs runs = Before();
    runs.fonts.insert(runs.fonts.end(), {FontOf("E"), FontOf("F")});
    runs.formats.insert(runs.formats.end(), {FormatOf(254, "0.0"), FormatOf(253, "0.00")});
    runs.xfs.insert(runs.xfs.end(), {XfOf(5, 254), XfOf(6, 253), kFullPayload});
    if (version == kBiff8) runs.behindXfs = Bytes(4);
    return runs;
  }
  // Puts the notes into the open book: a record less, a patch more behind either run, and room that is free.
  void PatchNotesIn() {
    const Bytes note = StreamBuilder().Record(0x00D3, Bytes{9}).Stream();
    for (uint8_t low : {kLowFormat, kLowXf}) {
      uint32_t at = 0;
      while (!IsPlain(Stream(), at, low)) at = NextRecord(Stream(), at);
      const Bytes slack = StreamBuilder().Slack(static_cast<uint16_t>(note.size() + 6)).Stream();
      ASSERT_EQ(PatchRecord(&buffer_, slack.data(), at, static_cast<uint32_t>(slack.size()), &size_), 0);
      at = NextRecord(Stream(), at);
      ASSERT_TRUE(IsPrivate(Stream(), at, kLowSlack));
      ASSERT_EQ(PatchRecord(&buffer_, note.data(), at, static_cast<uint32_t>(note.size()), &size_), 0);
    }
  }
  void ExpectLookups() {
    const FontValues plain = {0, 200, 400, 0, 0, 0};
    EXPECT_EQ(XLGetFont(&buffer_, table_, &size_, "E", plain), 5);
    EXPECT_EQ(XLGetFormat(&buffer_, table_, &size_, "0.0"), 254);
    EXPECT_EQ(XLGetXFInd(&buffer_, table_, &size_, {5, 254, 1, 0, 1, 2, 3, 7}), 2);
    EXPECT_EQ(XLGetFormat(&buffer_, table_, &size_, "0.00"), 253);
    EXPECT_EQ(XLGetFont(&buffer_, table_, &size_, "F", plain), 6);
    EXPECT_EQ(XLGetXFInd(&buffer_, table_, &size_, {6, 253, 1, 0, 1, 2, 3, 7}), 3);
    EXPECT_EQ(XLGetXFIndFull(&buffer_, table_, &size_, kFull, 1, 0), 4);
  }
  void Reopen(const std::string& path) {
    ASSERT_EQ(MEMORYFREE(&buffer_), 1);
    ASSERT_EQ(LiveBlocks(), 0u);
    ASSERT_EQ(XLOpenFile(path.c_str(), &buffer_, &size_), 0);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  }
};

TEST_F(SavedLookups, StandBehindTheirRuns_AndAreFoundAgain) {
  for (int32_t version : {kBiff5, kBiff8}) {
    const uint8_t generation = static_cast<uint8_t>(version);
    const TempFolder folder;
    const std::string path = folder.File("book.xls");
    const char* name = version == kBiff8 ? "Workbook" : "Book";
    ASSERT_TRUE(WriteWorkbook(path, name, BookOf(generation, Before(), false).Stream()));
    ASSERT_EQ(XLOpenFile(path.c_str(), &buffer_, &size_), 0);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
    BiffVersion = version;
    PatchNotesIn();
    ExpectLookups();
    const Bytes once = BlockContents(buffer_, size_);
    ExpectLookups();
    EXPECT_EQ(BlockContents(buffer_, size_), once);
    ASSERT_EQ(XLSaveFile(path.c_str(), &buffer_, &table_, &size_), 0);
    const StreamBuilder wanted = BookOf(generation, After(version), true);
    EXPECT_EQ(Hex(ReadStream(path, name).value_or(Bytes{})), Hex(wanted.Stream()));
    Reopen(path);
    ExpectLookups();
    EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(wanted.Stream()));
    EXPECT_EQ(LiveBlocks(), 2u);
    MEMORYFREEALL();
  }
}

}  // namespace
