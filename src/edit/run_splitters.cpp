// Run splitters: one plan for all six, and a table of what differs. The plan stands in run_splitters.h.
#include "edit/run_splitters.h"

#include "edit/find_cell.h"
#include "foundation/memory_pool.h"

namespace tolvenar {

namespace {

// The two kinds of run: the type and the bytes of a cell, and the type and size of the record that a piece of
// one cell becomes.
struct RunKind {
  uint16_t type;
  uint32_t cellSize;
  uint16_t loneType;
  uint32_t loneSize;
};
constexpr RunKind kMulRk = {kTypeMulRk, kMulRkCell, kTypeRk, kRkSize};
constexpr RunKind kMulBlank = {kTypeMulBlank, kMulBlankCell, kTypeBlank, kBlankSize};
constexpr uint32_t kLongBlankSize = kBlankSize + 4;  // with 4 bytes of no meaning

// What differs between the six splitters; c is the record column of the split, l the run's last column.
struct SplitRules {
  const RunKind& run;
  int32_t count;          // cells on the right: l - c + this
  int32_t first;          // first column of the right piece: c + this
  int32_t last;           // its last column: l + this
  int32_t source;         // the column of the run that its first cell comes from: c + this
  int32_t loneColumn;     // of a right piece of one cell, the same: first column,
  int32_t loneSource;     // source,
  uint32_t loneSize;      // and size
  bool movesWithoutLeft;  // the place moves past the erased run even if there is no left piece
  bool endsBehindRight;   // the result is behind the right piece, not its start
};

// Where loneColumn differs from first, loneSource from source, the long BLANKs and the one movesWithoutLeft:
// on purpose, all of them.
// clang-format off
//                                          run       count first last source | lone: column source size    | moves  ends
constexpr SplitRules kMulRkForChange    = {kMulRk,    0,    1,    0,   1,             1,     1, kRkSize,        false, false};
constexpr SplitRules kMulBlankForChange = {kMulBlank, 0,    1,    0,   1,             0,     1, kBlankSize,     true,  false};
constexpr SplitRules kMulRkForInsert    = {kMulRk,    1,    1,    1,   0,             1,     1, kRkSize,        false, true};
constexpr SplitRules kMulBlankForInsert = {kMulBlank, 1,    1,    1,   0,             1,     0, kLongBlankSize, false, true};
constexpr SplitRules kMulRkForDelete    = {kMulRk,    0,    0,   -1,   1,             0,     1, kRkSize,        false, true};
constexpr SplitRules kMulBlankForDelete = {kMulBlank, 0,    0,   -1,   1,             0,     1, kLongBlankSize, false, true};
// clang-format on

// The scratch copy of a run's body: the record without its header.
constexpr uint32_t kBodyRow = kCellRow - kHeaderSize;
constexpr uint32_t kBodyCells = kCellXf - kHeaderSize;

constexpr uint32_t kLastColumnSize = 2;  // at the end of a piece that is a run

// A piece under construction. A block of 0 is no piece.
struct Piece {
  uint32_t block = 0;
  uint32_t size = 0;
};

// What goes into a piece: `count` cells of the body from number `source` on, to stand in columns `first` to
// `last`.
struct Cells {
  int32_t count;
  int32_t source;
  int32_t first;
  int32_t last;
  uint32_t loneSize;
};

// Builds a piece in a scratch block. No cells, no piece. False when no block can be had. Cells that the body
// does not have are what stands behind it in the slot of the copy, and zero behind the slot.
bool BuildPiece(const RunKind& run, const Block& body, const Cells& cells, Piece* piece) {
  if (cells.count == 0) return true;
  const bool lone = cells.count == 1;
  const uint32_t cell_bytes = static_cast<uint32_t>(cells.count) * run.cellSize;
  piece->size = lone ? cells.loneSize : kRunFixed + cell_bytes;
  piece->block = MEMORYALLOC(static_cast<int32_t>(piece->size));
  if (piece->block == 0) return false;

  const Block block = OpenBlock(piece->block);
  PutU16(block, kRecordTypeLow, lone ? run.loneType : run.type);
  PutU16(block, kRecordLength, static_cast<uint16_t>(piece->size - kHeaderSize));
  PutU16(block, kCellRow, U16At(body, kBodyRow));
  PutU16(block, kCellColumn, static_cast<uint16_t>(cells.first));
  const uint32_t from = kBodyCells + static_cast<uint32_t>(cells.source) * run.cellSize;
  if (const uint32_t inside = BytesInside(body, from, cell_bytes))
    CopyIn(block, kCellXf, body.base + from, inside);
  if (!lone) PutU16(block, piece->size - kLastColumnSize, static_cast<uint16_t>(cells.last));
  return true;
}

// The run to be split and where, read once before it turns SLACK.
struct Cut {
  int32_t first;   // f, the run's first column
  int32_t last;    // l, its last
  int32_t column;  // c, the record column of the split
};

Cells LeftCells(const SplitRules& rules, const Cut& cut) {
  return {cut.column - cut.first, 0, cut.first, cut.column - 1, rules.run.loneSize};
}

Cells RightCells(const SplitRules& rules, const Cut& cut) {
  const int32_t count = cut.last - cut.column + rules.count;
  const bool lone = count == 1;
  const int32_t source = cut.column + (lone ? rules.loneSource : rules.source) - cut.first;
  const int32_t first = cut.column + (lone ? rules.loneColumn : rules.first);
  return {count, source, first, cut.last + rules.last, rules.loneSize};
}

// The scratch blocks of one split.
struct Scratch {
  uint32_t body = 0;
  Piece left;
  Piece right;
};

// Releases those that there are.
void ReleaseScratch(Scratch* scratch) {
  MEMORYFREE(&scratch->left.block);
  MEMORYFREE(&scratch->right.block);
  MEMORYFREE(&scratch->body);
}

bool CopyBody(const Block& block, uint32_t offset, Scratch* scratch) {
  const uint32_t length = LengthAt(block, offset);
  scratch->body = MEMORYALLOC(static_cast<int32_t>(length));
  if (scratch->body == 0) return false;
  CopyOut(block, offset + kHeaderSize, BlockBytes(scratch->body), length);
  return true;
}

// Patches a piece in at `at`. A piece longer than a patch can count is one that can't be patched: no sheet is
// wide enough for it.
bool PutPiece(uint32_t* buffer, uint32_t* size, uint32_t at, const Piece& piece) {
  if (piece.size > INT16_MAX) return false;
  return PatchRecord(buffer, BlockBytes(piece.block), at, piece.size, size) == kPatchDone;
}

// Offset of the record behind the piece that was put at `at`. One that did not fit stands at the target of
// the DETOUR laid there.
uint32_t BehindPiece(uint32_t buffer, uint32_t at) {
  const Block block = OpenBlock(buffer);
  return NextRecord(block, IsJump(block, at) ? NextRecord(block, at) : at);
}

// Puts the pieces into the walk. Result: the splitter's own; 0 when a patch failed.
int32_t PlacePieces(const SplitRules& rules, uint32_t* buffer, uint32_t* size, uint32_t offset,
                    const Scratch& scratch) {
  uint32_t place = offset;
  const bool left = scratch.left.block != 0;
  if (left && !PutPiece(buffer, size, place, scratch.left)) return 0;
  if (left || rules.movesWithoutLeft) place = BehindPiece(*buffer, place);
  if (scratch.right.block != 0) {
    if (!PutPiece(buffer, size, place, scratch.right)) return 0;
    if (rules.endsBehindRight) place = BehindPiece(*buffer, place);
  }
  return static_cast<int32_t>(place);
}

int32_t SplitRun(const SplitRules& rules, uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  const Block block = OpenBlock(*buffer);
  Scratch scratch;
  if (block.base == nullptr || !CopyBody(block, offset, &scratch)) return 0;

  const Cut cut = {I16At(block, offset + kCellColumn), LastColumnOfRun(block, offset),
                   static_cast<int16_t>(column - 1)};
  const Cells left = LeftCells(rules, cut);
  const Cells right = RightCells(rules, cut);
  if (left.count < 0 || right.count < 0) return 0;  // the copy of the body stays live, on purpose

  MarkRecordSlack(block, offset);
  const Block body = OpenBlock(scratch.body);
  if (!BuildPiece(rules.run, body, left, &scratch.left) ||
      !BuildPiece(rules.run, body, right, &scratch.right)) {
    ReleaseScratch(&scratch);
    return 0;
  }
  const int32_t place = PlacePieces(rules, buffer, size, offset, scratch);
  if (place != 0) ReleaseScratch(&scratch);  // after a failed patch none is released, on purpose
  return place;
}

}  // namespace

int32_t SplitMulRkForChange(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  return SplitRun(kMulRkForChange, buffer, size, offset, column);
}

int32_t SplitMulBlankForChange(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  return SplitRun(kMulBlankForChange, buffer, size, offset, column);
}

int32_t SplitMulRkForInsert(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  return SplitRun(kMulRkForInsert, buffer, size, offset, column);
}

int32_t SplitMulBlankForInsert(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  return SplitRun(kMulBlankForInsert, buffer, size, offset, column);
}

int32_t SplitMulRkForDelete(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  return SplitRun(kMulRkForDelete, buffer, size, offset, column);
}

int32_t SplitMulBlankForDelete(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column) {
  return SplitRun(kMulBlankForDelete, buffer, size, offset, column);
}

}  // namespace tolvenar
