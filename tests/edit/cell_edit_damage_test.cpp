// Damage sweep of the cell editors: every prefix of a small book, and every byte of it set to 00, 7F, 80 and
// FF. Whatever the stream says, each call ends, and leaves a buffer that is a pool block of at least its
// size, or none.
#include <iterator>

#include "edit/cell_change.h"
#include "edit/change_format.h"
#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::kChart;
using testing::kWorksheet;
using testing::OwnedBstr;
using testing::StreamBuilder;
using testing::operator+;

constexpr int16_t kRows = 4;
constexpr int16_t kColumns = 8;

class CellEditDamageTest : public testing::SheetEditTest {
 protected:
  // A book that nearly fills its slot, with every kind of record that the editors look at.
  static StreamBuilder Book(uint8_t version) {
    BiffVersion = version;
    StreamBuilder book = StreamBuilder().Bof(version).Sheet("D").Eof();
    book.Bof(version, kWorksheet).Dimensions(0, 4, 0, 8).Row(0).Row(2).Number(0, 0, 15, 1.5);
    book.MulRk(0, 1, {{21, 1}, {22, 2}, {23, 3}})
        .Slack(3)
        .MulBlank(2, 1, {24, 25, 26, 27})
        .Bof(version, kChart)
        .Eof();
    return book.Label(2, 6, 15, "ab").Raw(testing::kWindow2).Eof().BufEnd();
  }

  // Loads `stream` and gives it the table of the book as it was before it was damaged.
  void Load(const Bytes& stream, const Bytes& table) {
    MEMORYFREEALL();
    size_ = static_cast<uint32_t>(stream.size());
    buffer_ = MEMORYALLOC(static_cast<int32_t>(size_));
    CopyIn(OpenBlock(buffer_), 0, stream.data(), size_);
    table_ = MEMORYALLOC(static_cast<int32_t>(table.size()));
    CopyIn(OpenBlock(table_), 0, table.data(), static_cast<uint32_t>(table.size()));
  }

  void ExpectSound() const {
    if (buffer_ != 0) {
      EXPECT_GE(MEMORYALLOCSIZE(buffer_), size_);
    }
  }

  // Every cell once through every export.
  void EditAll(const VARIANT* values, size_t count) {
    size_t next = 0;
    for (int16_t row = 1; row <= kRows; ++row) {
      for (int16_t column = 1; column <= kColumns; ++column) {
        XLChangeCellXF(&buffer_, table_, &size_, 1, row, column, 30);
        XLChangeCellValue(&buffer_, table_, &size_, 1, row, column, &values[next++ % count]);
        ExpectSound();
      }
    }
    ChangeFormat(buffer_, table_, 1, matrix_.data(), 0);
  }

  void Sweep(uint8_t version);

  std::vector<int16_t> matrix_ =
      std::vector<int16_t>(0x8000, 40);  // with a stride of 0 it covers every column
};

void CellEditDamageTest::Sweep(uint8_t version) {
  const OwnedBstr text(u"xyz");
  VARIANT values[3];
  for (VARIANT& value : values) VariantInit(&value);  // the first one stays VT_EMPTY
  values[1].vt = VT_R8;
  values[1].dblVal = 2.5;
  values[2].vt = VT_BSTR;
  values[2].bstrVal = text.Get();

  OpenAsItIs(Book(version));
  const Bytes whole = Contents();
  const Bytes table = testing::BlockContents(table_, MEMORYSIZE(table_));
  for (size_t n = 1; n <= whole.size(); ++n) {
    Load(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(n)), table);
    EditAll(values, std::size(values));
  }
  for (size_t at = 0; at < whole.size(); ++at) {
    for (uint8_t byte : std::initializer_list<uint8_t>{0x00, 0x7F, 0x80, 0xFF}) {
      Bytes damaged = whole;
      damaged[at] = byte;
      Load(damaged, table);
      EditAll(values + at % 2, 2);
    }
  }
}

TEST_F(CellEditDamageTest, Biff5) {
  Sweep(5);
}

TEST_F(CellEditDamageTest, Biff8) {
  Sweep(6);
}

TEST_F(CellEditDamageTest, TableThatPointsAnywhere) {
  for (uint32_t begin : {0u, 1u, 100u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    for (uint32_t end : {0u, 2u, 0xFFFFFFFFu}) {
      Load(Book(6).Stream(), testing::U32(1) + testing::U32(0) + testing::U32(begin) + testing::U32(end));
      VARIANT empty;
      VariantInit(&empty);
      EditAll(&empty, 1);
    }
  }
}

}  // namespace
}  // namespace tolvenar
