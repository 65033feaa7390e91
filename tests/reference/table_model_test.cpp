// Random tables against a slow, plain model: the records that a table is stored in, and the array that comes back.
#include <random>

#include "reference/reference_states.h"
#include "reference/reference_table.h"
#include "reference/table_array.h"
#include "reference/table_positions.h"

namespace tolvenar::testing {
namespace {

using Values = std::vector<uint32_t>;

constexpr uint32_t kSteps[] = {1, 0x100, 0x1000000};

// A box as the model finds it; one of volume 1 is a cell.
struct ModelBox {
  int at[4] = {};
  int extents[4] = {1, 1, 1, 1};
  uint32_t steps[4] = {};
  uint32_t base = 0;
  int Volume() const { return extents[0] * extents[1] * extents[2] * extents[3]; }
};

class ModelTable {
 public:
  ModelTable(const GridCell& sizes, const Values& values) : values_(values) {
    for (int k = 0; k < 4; ++k) sizes_[k] = sizes[static_cast<size_t>(k)];
  }

  uint32_t& At(int a, int b, int c, int d) {
    return values_[static_cast<size_t>(((d * sizes_[2] + c) * sizes_[1] + b) * sizes_[0] + a)];
  }
  uint32_t Index(const int* at) const {
    return static_cast<uint32_t>(((at[3] * sizes_[2] + at[2]) * sizes_[1] + at[1]) * sizes_[0] + at[0]);
  }
  const Values& All() const { return values_; }
  const int* Sizes() const { return sizes_; }

  // Takes the boxes out in the order in which they are stored.
  std::vector<ModelBox> TakeBoxes() {
    std::vector<ModelBox> boxes;
    for (int a = 0; a < sizes_[0]; ++a)
      for (int b = 0; b < sizes_[1]; ++b)
        for (int c = 0; c < sizes_[2]; ++c)
          for (int d = 0; d < sizes_[3]; ++d)
            if (At(a, b, c, d) != 0)
              boxes.push_back(TakeBox({{a, b, c, d}, {1, 1, 1, 1}, {}, At(a, b, c, d)}));
    return boxes;
  }

  // Calls visit(element, value expected there) for each cell of the box.
  template <typename Visit>
  void ForBox(const ModelBox& box, Visit visit) {
    for (int x = 0; x < box.extents[0]; ++x)
      for (int y = 0; y < box.extents[1]; ++y)
        for (int z = 0; z < box.extents[2]; ++z)
          for (int w = 0; w < box.extents[3]; ++w)
            visit(At(box.at[0] + x, box.at[1] + y, box.at[2] + z, box.at[3] + w),
                  box.base + static_cast<uint32_t>(x) * box.steps[0] +
                      static_cast<uint32_t>(y) * box.steps[1] + static_cast<uint32_t>(z) * box.steps[2] +
                      static_cast<uint32_t>(w) * box.steps[3]);
  }

 private:
  // The steps, and how far the array goes on along the dimensions that have one.
  void FindSteps(ModelBox* box, int* reach) {
    for (int k = 0; k < 4; ++k) {
      reach[k] = 1;
      int next[4] = {box->at[0], box->at[1], box->at[2], box->at[3]};
      if (++next[k] >= sizes_[k]) continue;
      const uint32_t distance = values_[Index(next)] - box->base;
      bool usable = distance == kSteps[0] || distance == kSteps[1] || distance == kSteps[2];
      for (int before = 0; before < k; ++before) usable = usable && box->steps[before] != distance;
      if (!usable) continue;
      box->steps[k] = distance;
      reach[k] = sizes_[k] - box->at[k];
    }
  }

  bool Fits(const ModelBox& box) {
    bool fits = true;
    ForBox(box, [&](uint32_t& value, uint32_t expected) { fits = fits && value == expected; });
    return fits;
  }

  // Tries all boxes, from the one that reaches furthest along dimension 1, then 2, 3, 4.
  ModelBox TakeBox(ModelBox box) {
    int reach[4];
    FindSteps(&box, reach);
    ModelBox best = box;
    for (int x = reach[0]; x >= 1; --x)
      for (int y = reach[1]; y >= 1; --y)
        for (int z = reach[2]; z >= 1; --z)
          for (int w = reach[3]; w >= 1; --w) {
            ModelBox tried = box;
            const int extents[4] = {x, y, z, w};
            std::copy(extents, extents + 4, tried.extents);
            if (tried.Volume() > best.Volume() && Fits(tried)) best = tried;
          }
    ForBox(best, [](uint32_t& value, uint32_t) { value = 0; });
    return best;
  }

  int sizes_[4];
  Values values_;
};

Bytes RecordOf(const ModelBox& box, uint32_t index) {
  if (box.Volume() == 1) return CellPosition(index, box.base);
  constexpr uint8_t kUnits[] = {1, 5, 25};
  uint32_t axes = 0;
  int counts[3] = {};
  for (uint32_t k = 0; k < 4; ++k) {
    for (uint32_t s = 0; s < 3; ++s) {
      if (box.steps[k] != kSteps[s]) continue;
      axes += (k + 1) * kUnits[s];
      counts[s] = box.extents[k];
    }
  }
  return BoxPosition(static_cast<uint8_t>(axes), index, box.base, static_cast<uint8_t>(counts[0]),
                     static_cast<uint16_t>(counts[1]), static_cast<uint8_t>(counts[2]));
}

// What comes back: the records are read from the last one stored to the first. A cell alone goes to one place lower in each dimension.
Values ReadBack(const std::vector<ModelBox>& boxes, const GridCell& sizes) {
  ModelTable read(sizes, Values(static_cast<size_t>(VolumeOf(sizes))));
  for (size_t i = boxes.size(); i-- > 0;) {
    ModelBox box = boxes[i];
    bool inside = true;
    if (box.Volume() == 1) {
      for (int& at : box.at) inside = --at >= 0 && inside;
    }
    if (inside) read.ForBox(box, [](uint32_t& value, uint32_t expected) { value = expected; });
  }
  return read.All();
}

class TableModelTest : public RefStateTest {
 protected:
  int Pick(int n) { return static_cast<int>(random_() % static_cast<uint32_t>(n)); }

  GridCell RandomSizes(int most) {
    GridCell sizes;
    for (int32_t& size : sizes) size = 1 + Pick(most);
    return sizes;
  }
  // Long in two dimensions.
  GridCell RandomPlane() {
    GridCell sizes = {1, 1, 1, 1};
    sizes[static_cast<size_t>(Pick(2))] = 1 + Pick(14);
    sizes[static_cast<size_t>(2 + Pick(2))] = 1 + Pick(14);
    return sizes;
  }

  // Values that advance evenly from `base` along random dimensions, with holes and strays.
  Values RandomValues(const GridCell& sizes, int spoilt, uint32_t base = 0x1000) {
    const uint32_t steps[] = {0, 1, 0x100, 0x1000000, 2};
    GridStrides along;
    for (uint32_t& step : along) step = steps[Pick(5)];
    Values values(static_cast<size_t>(VolumeOf(sizes)));
    const GridStrides strides = StridesOf(sizes);
    VisitCells(kGridOrigin, sizes, [&](const GridCell& cell) {
      const bool stray = Pick(100) < spoilt;
      values[PlaceOf(strides, cell)] = stray ? static_cast<uint32_t>(Pick(4)) : base + PlaceOf(along, cell);
      return true;
    });
    return values;
  }

  // Values that differ by steps everywhere, and nowhere in good order: many small boxes, many of one volume.
  Values RandomSteps(const GridCell& sizes, uint32_t base) {
    Values values(static_cast<size_t>(VolumeOf(sizes)));
    for (uint32_t& value : values) {
      value = base;
      for (const uint32_t step : kSteps) value += step * static_cast<uint32_t>(Pick(2));
    }
    return values;
  }

  // Fills table 1 and holds its records, and what comes back, against the model.
  void Check(const GridCell& sizes, const Values& values) {
    SetUp();
    const auto u16 = [&](uint32_t k) { return static_cast<uint16_t>(sizes[k]); };
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, u16(0), u16(1), u16(2), u16(3)), 1);
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 2);
    Settle();
    TableArray array(sizes);
    array.SetAll(values);
    ASSERT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), 0);
    ModelTable model(sizes, values);
    const std::vector<ModelBox> boxes = model.TakeBoxes();
    Bytes content;
    for (const ModelBox& box : boxes) content = RecordOf(box, model.Index(box.at)) + content;
    ASSERT_EQ(Objects(), Hex(TableHeadOf(1, u16(0), u16(1), u16(2), u16(3)) + content + kTableEnd +
                             TableHeadOf(2, 1, 1, 1, 1) + kTableEnd));
    array.SetAll(Values(values.size()));
    ASSERT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), 0);
    ASSERT_EQ(array.All(), ReadBack(boxes, sizes));
  }

  std::mt19937 random_{20260};
};
TOLVENAR_BOTH_STATES(TableModelTest);

// How often each cell is stood for.
std::vector<int> Cover(const std::vector<ModelBox>& boxes, const GridCell& sizes) {
  ModelTable covered(sizes, Values(static_cast<size_t>(VolumeOf(sizes))));
  for (const ModelBox& box : boxes) covered.ForBox(box, [](uint32_t& value, uint32_t) { ++value; });
  return {covered.All().begin(), covered.All().end()};
}

// The boxes that the records at `content` tell, from the last one stored to the first.
std::vector<ModelBox> BoxesOf(const Bytes& content, const GridCell& sizes) {
  std::vector<ModelBox> boxes;
  for (const uint8_t* p = content.data(); p < content.data() + content.size(); p += 4 + p[2]) {
    ModelBox box;
    const bool cell = p[0] == 0xF9;
    uint32_t index = ReadU32(p + (cell ? 4 : 5));
    for (uint32_t k = 0; k < 4; index /= static_cast<uint32_t>(sizes[k++])) {
      box.at[k] = static_cast<int>(index % static_cast<uint32_t>(sizes[k]));
    }
    for (int s = 0, axes = p[4]; s < 3 && !cell; ++s, axes /= 5) {
      const int counts[] = {p[13], p[14] + 256 * p[15], p[16]};
      if (axes % 5 != 0) box.extents[axes % 5 - 1] = counts[s];
    }
    boxes.push_back(box);
  }
  return boxes;
}

TEST_P(TableModelTest, RandomTablesAreStoredAndReadAsTheModelSays) {
  for (int round = 0; round < 250 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    const GridCell sizes = RandomSizes(5);
    Check(sizes, RandomValues(sizes, 5 * Pick(10)));
  }
}

TEST_P(TableModelTest, ValuesThatComeRoundAt32BitsAreStoredAsTheModelSays) {
  for (int round = 0; round < 250 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    const GridCell sizes = RandomSizes(5);
    const uint32_t bases[] = {0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFF00, 0xFFFFFE00, 0xFF000000, 0xFE000000};
    Check(sizes, RandomValues(sizes, 3 * Pick(10), bases[Pick(6)]));
  }
}

TEST_P(TableModelTest, StepsWithoutOrderAreStoredAsTheModelSays) {
  for (int round = 0; round < 150 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    const GridCell sizes = RandomSizes(5);
    Check(sizes, RandomSteps(sizes, Pick(2) == 0 ? 0x1000 : 0xFFFFFFFF));
  }
}

TEST_P(TableModelTest, PlanesAreStoredAsTheModelSays) {
  for (int round = 0; round < 150 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    const GridCell sizes = RandomPlane();
    Check(sizes, round % 3 == 0 ? RandomSteps(sizes, 0x1000) : RandomValues(sizes, 2 * Pick(10)));
  }
}

TEST_P(TableModelTest, TheRecordsCoverEachCellThatIsNot0Once) {
  for (int round = 0; round < 250; ++round) {
    SetUp();
    const GridCell sizes = RandomSizes(6);
    const auto u16 = [&](uint32_t k) { return static_cast<uint16_t>(sizes[k]); };
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, u16(0), u16(1), u16(2), u16(3)), 1);
    Settle();
    const Values values = RandomValues(sizes, 5 * Pick(10));
    TableArray array(sizes);
    array.SetAll(values);
    ASSERT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), 0);
    Compact();
    const uint32_t end = Find(1, kKindTable).end;
    const Bytes image = Image();
    const Bytes content(image.begin() + 8 + kTableHeadSize, image.begin() + end);
    std::vector<int> expected(values.size());
    for (size_t i = 0; i < values.size(); ++i) expected[i] = values[i] != 0 ? 1 : 0;
    ASSERT_EQ(Cover(BoxesOf(content, sizes), sizes), expected) << round;
  }
}

}  // namespace
}  // namespace tolvenar::testing
