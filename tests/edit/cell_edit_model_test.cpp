// Random changes of cells against a model that knows no patches: a plain list of records in the order of the
// walk. After each change the walk must give the list's bytes, whatever SLACK and DETOURs lie between them.
#include <random>
#include <string>

#include "edit/cell_change.h"
#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::OwnedBstr;
using testing::StreamBuilder;
using testing::U16;
using testing::U32;
using testing::operator+;

constexpr int kRows = 3;
constexpr int kColumns = 12;

// A ROW or a cell record. A run has more than one entry in `xfs`; `body` is what stands behind the XF of a
// single cell.
struct Item {
  enum class Kind { kRow, kSingle, kMulRk, kMulBlank };
  Kind kind;
  uint16_t type;
  int row;
  int first;
  std::vector<uint16_t> xfs;
  std::vector<uint32_t> rks;
  Bytes body;

  bool IsRun() const { return kind == Kind::kMulRk || kind == Kind::kMulBlank; }
  int Last() const { return first + static_cast<int>(xfs.size()) - 1; }

  Bytes Record() const {
    if (kind == Kind::kRow) return StreamBuilder().Row(static_cast<uint16_t>(row)).Stream();
    Bytes payload = U16(static_cast<uint16_t>(row)) + U16(static_cast<uint16_t>(first));
    for (size_t i = 0; i < xfs.size(); ++i)
      payload = payload + U16(xfs[i]) + (rks.empty() ? Bytes() : U32(rks[i]));
    payload = payload + body + (IsRun() ? U16(static_cast<uint16_t>(Last())) : Bytes());
    return StreamBuilder().Record(type, payload).Stream();
  }
};

Item RowItem(int row) {
  return {Item::Kind::kRow, 0x0208, row, 0, {}, {}, {}};
}

Item Single(uint16_t type, int row, int column, uint16_t xf, const Bytes& body) {
  return {Item::Kind::kSingle, type, row, column, {xf}, {}, body};
}

// Cells `from` to `from` + `count` - 1 of a run, from column `first` on; one cell becomes an RK or a BLANK.
Item Piece(const Item& run, size_t from, size_t count, int first) {
  const bool rk = run.kind == Item::Kind::kMulRk;
  Item piece = run;
  piece.first = first;
  piece.xfs = {run.xfs.begin() + static_cast<ptrdiff_t>(from),
               run.xfs.begin() + static_cast<ptrdiff_t>(from + count)};
  if (rk)
    piece.rks = {run.rks.begin() + static_cast<ptrdiff_t>(from),
                 run.rks.begin() + static_cast<ptrdiff_t>(from + count)};
  if (count != 1) return piece;
  return Single(rk ? 0x027E : 0x0201, run.row, first, piece.xfs[0], rk ? U32(piece.rks[0]) : Bytes());
}

class Model {
 public:
  explicit Model(std::vector<Item> items) : items_(std::move(items)) {}

  Bytes Stream() const {
    Bytes stream;
    for (const Item& item : items_) stream = stream + item.Record();
    return stream;
  }

  // Puts a cell of this type and body, or a blank that erases a whole MULBLANK, where one is or belongs.
  // False when it can't exist.
  bool Put(int row, int column, uint16_t type, const Bytes& body) {
    size_t at = 0;
    bool present = false;
    if (!Find(row, column, &at, &present)) return false;
    uint16_t xf = 15;
    if (present) {
      const Item old = items_[at];
      xf = old.xfs[old.IsRun() ? static_cast<size_t>(column - old.first) : 0];
      items_.erase(items_.begin() + static_cast<ptrdiff_t>(at));
      if (old.kind == Item::Kind::kMulBlank && type == 0x0201) return true;
      if (old.IsRun()) at = Split(old, column, at);
    }
    Insert(at, Single(type, row, column, xf, body));
    return true;
  }

  // Stamps the cell and, in a run, the first one with it.
  bool Stamp(int row, int column, uint16_t xf) {
    size_t at = 0;
    bool present = false;
    if (!Find(row, column, &at, &present)) return false;
    if (!present) Insert(at, Single(0x0201, row, column, xf, {}));
    Item& item = items_[at];
    item.xfs[0] = xf;
    item.xfs[item.IsRun() ? static_cast<size_t>(column - item.first) : 0] = xf;
    return true;
  }

  // No cell stands in front of an earlier one. (Two in one place can be: a MULBLANK's lone right cell takes
  // the new cell's column.)
  bool InOrder() const {
    for (size_t i = 1; i < items_.size(); ++i) {
      const Item& a = items_[i - 1];
      const Item& b = items_[i];
      if (a.kind == Item::Kind::kRow || b.kind == Item::Kind::kRow) continue;
      if (b.row < a.row || (b.row == a.row && b.first < a.Last())) return false;
    }
    return true;
  }

 private:
  void Insert(size_t at, const Item& item) {
    items_.insert(items_.begin() + static_cast<ptrdiff_t>(at), item);
  }

  bool Find(int row, int column, size_t* at, bool* present) const {
    bool seen = false;
    size_t behind = 0;
    for (size_t i = 0; i < items_.size(); ++i) {
      const Item& item = items_[i];
      const bool is_row = item.kind == Item::Kind::kRow;
      if (is_row && (item.row != row || seen)) continue;
      seen = seen || is_row;
      behind = i + 1;
      if (is_row || item.row < row) continue;
      if (item.row == row && item.Last() < column) continue;
      *at = i;
      *present = item.row == row && item.first <= column;
      return seen;
    }
    *at = behind;
    return seen;
  }

  // Puts the pieces at `at`. Returns the place between them.
  size_t Split(const Item& run, int column, size_t at) {
    const size_t left = static_cast<size_t>(column - run.first);
    const size_t right = static_cast<size_t>(run.Last() - column);
    const bool short_by_one = right == 1 && run.kind == Item::Kind::kMulBlank;
    if (right != 0) Insert(at, Piece(run, left + 1, right, short_by_one ? column : column + 1));
    if (left == 0) return at;
    Insert(at, Piece(run, 0, left, run.first));
    return at + 1;
  }

  std::vector<Item> items_;
};

Item RkRun(int row, int first, int count) {
  Item run = {Item::Kind::kMulRk, 0x00BD, row, first, {}, {}, {}};
  for (int i = 0; i < count; ++i) {
    run.xfs.push_back(static_cast<uint16_t>(50 + i));
    run.rks.push_back(static_cast<uint32_t>(0x1000 + i));
  }
  return run;
}

Item BlankRun(int row, int first, int count) {
  Item run = RkRun(row, first, count);
  run.kind = Item::Kind::kMulBlank;
  run.type = 0x00BE;
  run.rks.clear();
  return run;
}

class CellEditModelTest : public testing::SheetEditTest {
 protected:
  static std::vector<Item> FirstItems() {
    return {RowItem(0),
            RowItem(1),
            RowItem(2),
            RkRun(0, 1, 6),
            Single(0x0203, 0, 8, 20, testing::F64(1.5)),
            BlankRun(1, 0, 8),
            Single(0x0204, 1, 10, 21, U16(1) + Bytes{'q'}),
            BlankRun(2, 0, 4),
            RkRun(2, 5, 4),
            BlankRun(2, 9, 3)};
  }

  // One random change, in the buffer and in the model.
  void Step(Model* model, std::mt19937* random) {
    const auto pick = [&](int n) { return static_cast<int>((*random)() % static_cast<uint32_t>(n)); };
    const int row = pick(kRows + 1);  // the last one has no ROW record
    const int column = pick(kColumns);
    const int kind = pick(4);
    const OwnedBstr text(std::u16string(static_cast<size_t>(pick(9)), u'z'));
    VARIANT value;
    VariantInit(&value);
    value.vt = static_cast<VARTYPE>(kind == 0 ? VT_R8 : kind == 1 ? VT_BSTR : VT_EMPTY);
    bool can_exist = false;
    if (kind == 0) {
      value.dblVal = pick(1000);
      can_exist = model->Put(row, column, 0x0203, testing::F64(value.dblVal));
    } else if (kind == 1) {
      value.bstrVal = text.Get();
      const UINT length = SysStringLen(text.Get());
      can_exist = model->Put(row, column, 0x0204, U16(static_cast<uint16_t>(length)) + Bytes(length, 'z'));
    } else if (kind == 2) {
      can_exist = model->Put(row, column, 0x0201, {});
    } else {
      can_exist = model->Stamp(row, column, 77);
    }
    const int16_t r = static_cast<int16_t>(row + 1);
    const int16_t c = static_cast<int16_t>(column + 1);
    const int16_t result = kind == 3 ? XLChangeCellXF(&buffer_, table_, &size_, 1, r, c, 77)
                                     : XLChangeCellValue(&buffer_, table_, &size_, 1, r, c, &value);
    ASSERT_EQ(result, can_exist ? kChangeDone : kChangeNoCell);
  }
};

TEST_F(CellEditModelTest, RandomChanges_GiveTheWalkThatThePlainListHas) {
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    Model model(FirstItems());
    Open(Sheet(seed % 2 == 0 ? 5 : 6).Raw(model.Stream()));
    for (int step = 0; step < 120; ++step) {
      SCOPED_TRACE(step);
      Step(&model, &random);
      ASSERT_EQ(testing::Hex(Cells()), testing::Hex(model.Stream()));
      ASSERT_TRUE(model.InOrder());
      ASSERT_EQ(LiveBlocks(), live_);
    }
    MEMORYFREEALL();
  }
}

}  // namespace
}  // namespace tolvenar
