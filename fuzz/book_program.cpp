// The calls, in one list: an export that changes a workbook goes there.
#include "book_program.h"

#include <array>

#include "reading.h"

namespace tolvenar::fuzz {

namespace {

constexpr uint32_t kMostOnASide = 5;
constexpr size_t kTextRoom = 64;
constexpr uint32_t kLargestQuickBlock = 1500000;

// A text of up to 20 characters with room behind it, since some exports copy twice the length.
struct Text {
  std::array<char, kTextRoom> bytes = {};
  explicit Text(Choices* choices) {
    const uint32_t length = choices->Below(20);
    for (uint32_t i = 0; i < length; ++i) bytes[i] = static_cast<char>(choices->Byte());
  }
  const char* get() const { return bytes.data(); }
};

// What the calls of a program work on.
struct Program {
  Book* book;
  Choices* choices;
  const char* path;
  uint32_t position = 0;  // of a staged sheet

  uint32_t* buffer() { return &book->buffer; }
  uint32_t* size() { return &book->size; }
  int16_t Sheet() { return static_cast<int16_t>(choices->Below(5)); }
  // A row or a column: mostly near the used range, sometimes anywhere.
  int16_t Line() {
    const uint8_t line = choices->Byte();
    return line < 250 ? static_cast<int16_t>(line % 24) : static_cast<int16_t>(choices->Word());
  }
  // Rows or columns of a new sheet; of none, and fewer, too.
  int16_t Count() { return static_cast<int16_t>(static_cast<int>(choices->Below(kMostOnASide + 2)) - 1); }
};

// The cells of a new sheet, more than any Count asks for, and their XFs.
struct NewCells {
  static constexpr size_t kCells = (kMostOnASide + 1) * (kMostOnASide + 1);
  std::array<VARIANT, kCells> values = {};
  std::array<const VARIANT*, kCells> addresses = {};
  std::array<uint16_t, kCells> xfs = {};

  explicit NewCells(Choices* choices) {
    for (size_t i = 0; i < kCells; ++i) {
      if (i < 9) values[i] = ChosenValue(choices);
      addresses[i] = &values[i];
      xfs[i] = static_cast<uint16_t>(15 + i);
    }
  }
  NewCells(const NewCells&) = delete;
  NewCells& operator=(const NewCells&) = delete;
  ~NewCells() {
    for (VARIANT& value : values) VariantClear(&value);
  }
};

// ---- Cells and rows ----

void ChangeValue(Program* p) {
  VARIANT value = ChosenValue(p->choices);
  const int16_t sheet = p->Sheet(), row = p->Line(), column = p->Line();
  ::XLChangeCellValue(p->buffer(), p->book->table, p->size(), sheet, row, column, &value);
  VariantClear(&value);
}

void ChangeXf(Program* p) {
  const int16_t sheet = p->Sheet(), row = p->Line(), column = p->Line();
  ::XLChangeCellXF(p->buffer(), p->book->table, p->size(), sheet, row, column, p->choices->Word());
}

void ChangeStructure(Program* p) {
  constexpr int16_t(TOLVENAR_CALL * kCalls[])(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t) = {
      ::XLAddRow, ::XLAddCol, ::XLInsertRow, ::XLInsertCol, ::XLDeleteRow, ::XLDeleteCol};
  const auto call = kCalls[p->choices->Below(6)];
  const int16_t sheet = p->Sheet(), line = p->Line();
  call(p->buffer(), p->book->table, p->size(), sheet, line);
}

void ChangeSize(Program* p) {
  const int16_t sheet = p->Sheet(), line = p->Line();
  const auto call = p->choices->Byte() % 2 == 0 ? ::XLChangeRowHeight : ::XLChangeColWidth;
  call(p->buffer(), p->book->table, p->size(), sheet, line, p->choices->Word());
}

void DeleteDbCells(Program* p) {
  ::XLDeleteDBCells(p->book->buffer, p->book->size);
}

// ---- Styles and stamps ----

void LookUpStyle(Program* p) {
  const Text text(p->choices);
  const uint16_t a = p->choices->Byte(), b = p->choices->Word();
  const int16_t c = static_cast<int16_t>(p->choices->Word());
  uint32_t* size = p->size();
  switch (p->choices->Below(4)) {
    case 0:
      ::XLGetFont(p->buffer(), p->book->table, size, text.get(), c, b, 400, a & 1, a, a & 2);
      break;
    case 1:
      ::XLGetFormat(p->buffer(), p->book->table, size, text.get());
      break;
    case 2:
      ::XLGetXFInd(p->buffer(), p->book->table, size, a, b, a & 1, a & 2, c, c, 0, b);
      break;
    default:
      ::XLGetXFIndFull(p->buffer(), p->book->table, size, static_cast<int16_t>(a), c, 1, 0, c, 0, 0, c, 1, c,
                       1, c, 2, c, 3, c, 4, c);
  }
}

void Stamp(Program* p) {
  if (p->choices->Byte() % 4 == 0) {
    ::XLUnbindReference(p->book->buffer, p->book->table);
  } else {
    ::XLInsertReference(p->buffer(), p->book->table, p->size(), p->choices->Long());
  }
}

// ---- Sheets ----

void AppendEmptySheet(Program* p) {
  const Text name(p->choices);
  const int16_t cols = p->Count(), rows = p->Count();
  ::XLAppendSheet(p->buffer(), p->size(), name.get(), cols, rows);
}

void AppendTextSheet(Program* p) {
  const Text name(p->choices), text(p->choices);
  std::array<const char*, NewCells::kCells> texts;
  texts.fill(text.get());
  const int16_t cols = p->Count(), rows = p->Count();
  ::XLAppendFullSheet(p->buffer(), p->size(), name.get(), cols, rows, texts.data());
}

void AppendValueSheet(Program* p) {
  const Text name(p->choices);
  const NewCells cells(p->choices);
  const int16_t cols = p->Count(), rows = p->Count();
  ::XLAppendVariantSheet(p->buffer(), p->size(), name.get(), cols, rows, cells.addresses.data(),
                         cells.xfs.data());
}

// The same from arrays. Of numbers: texts that an array gives are copied, and the copies are not released, on purpose.
void AppendArraySheet(Program* p) {
  const Text name(p->choices);
  SAFEARRAY* cells = SafeArrayCreateVector(VT_VARIANT, 0, NewCells::kCells);
  SAFEARRAY* xfs = SafeArrayCreateVector(VT_I2, 0, NewCells::kCells);
  VARIANT number = {};
  number.vt = VT_I2;
  number.iVal = static_cast<int16_t>(p->choices->Word());
  for (LONG i = 0; i < 9; ++i) SafeArrayPutElement(cells, &i, &number);
  const int16_t cols = p->Count(), rows = p->Count();
  ::XLAppendVariantSheetVB(p->buffer(), p->size(), name.get(), cols, rows, &cells, &xfs);
  SafeArrayDestroy(cells);
  SafeArrayDestroy(xfs);
}

// One stage of a staged sheet, in whatever order the choices ask for them.
void StageSheet(Program* p) {
  const Text name(p->choices);
  const NewCells cells(p->choices);
  const int16_t cols = p->Count(), rows = p->Count();
  const uint16_t width = static_cast<uint16_t>(p->choices->Below(kMostOnASide));
  switch (p->choices->Below(8)) {
    case 0:
      ::AppendVariantSheet1(p->buffer(), p->size(), name.get());
      break;
    case 1:
      ::CreateVariantSheet1(p->buffer(), p->size(), &p->position);
      break;
    case 2:
      ::CreateVariantSheet1A(p->buffer(), p->size(), cols, rows, &p->position);
      break;
    case 3:
      ::CreateVariantSheet2(p->buffer(), p->size(), &p->position, cols, rows, cells.values.data(),
                            cells.xfs.data());
      break;
    case 4:
      ::CreateVariantSheet2A(p->buffer(), p->size(), &p->position, width, p->choices->Word(), width, 4,
                             cells.values.data(), cells.xfs.data());
      break;
    case 5:
      ::CreateVariantSheet3(p->buffer(), p->size(), &p->position);
      break;
    case 6:
      ::CreateVariantSheet(p->buffer(), p->size(), cols, rows, cells.addresses.data(), cells.xfs.data());
      break;
    default:
      ::AppendVariantSheet2(p->buffer(), p->size(), p->Sheet());
  }
}

void AddBufEnd(Program* p) {
  ::AddZemblerRecord(p->buffer(), p->size());
}

// ---- The workbook as a whole ----

void LocateAnew(Program* p) {
  ::XLFreeHandle(&p->book->table);
  if (p->choices->Byte() % 4 == 0) {
    ::XLEmptyBookLocateSheets(p->book->buffer, &p->book->table, static_cast<int32_t>(p->book->size));
  } else {
    ::XLLocateSheets(p->book->buffer, &p->book->table, p->book->size);
  }
}

void Refresh(Program* p) {
  ::XLRefreshHandles(p->buffer(), p->book->table, p->size());
}

void Save(Program* p) {
  const int16_t saved = ::XLSaveFile(p->path, p->buffer(), &p->book->table, p->size());
  if (saved != 0) return;
  // What was saved can be opened, in the place of what is open.
  ::XLFreeHandle(p->buffer());
  Require(::XLOpenFile(p->path, p->buffer(), p->size()) == 0, "a workbook that was saved can be opened");
  ::XLLocateSheets(p->book->buffer, &p->book->table, p->book->size);
  ::XLGetReference(p->path);
}

void Read(Program* p) {
  ReadEverything(*p->book);
}

void NameSheets(Program* p) {
  ::XLSheetsNameNum(p->book->buffer, p->book->table, 0);
}

// The pool is short of a block from now on.
void TakeBlock(Program* p) {
  ::MEMORYALLOC(static_cast<int32_t>(p->choices->Word()) * (p->choices->Byte() % 32));
}

constexpr void (*kCalls[])(Program*) = {ChangeValue,
                                        ChangeValue,
                                        ChangeValue,
                                        ChangeXf,
                                        ChangeStructure,
                                        ChangeStructure,
                                        ChangeStructure,
                                        ChangeSize,
                                        LookUpStyle,
                                        LookUpStyle,
                                        Stamp,
                                        DeleteDbCells,
                                        AppendEmptySheet,
                                        AppendTextSheet,
                                        AppendValueSheet,
                                        AppendArraySheet,
                                        StageSheet,
                                        StageSheet,
                                        AddBufEnd,
                                        LocateAnew,
                                        Refresh,
                                        Save,
                                        Read,
                                        NameSheets,
                                        TakeBlock};

}  // namespace

VARIANT ChosenValue(Choices* choices) {
  static constexpr OLECHAR kText[] = u"a text that is longer than most";
  VARIANT value;
  VariantInit(&value);
  const uint8_t kind = choices->Byte();
  switch (kind % 5) {
    case 0:
      value.vt = VT_R8;
      value.dblVal = choices->Word();
      break;
    case 1:
      value.vt = VT_I2;
      value.iVal = static_cast<int16_t>(choices->Word());
      break;
    case 2:
      value.vt = VT_BSTR;
      value.bstrVal = SysAllocStringLen(kText, 1 + choices->Below(30));
      break;
    case 3:
      value.vt = VT_NULL;
      break;
    default:
      break;  // VT_EMPTY
  }
  if (kind == 255) value.vt = VT_I8;  // a type that removes the cell
  return value;
}

void RunProgram(Book* book, Choices* choices, int most, const std::string& path) {
  Program program{book, choices, path.c_str()};
  for (int i = 0; i < most && !choices->Done(); ++i) {
    // A walk that loses its way in one of the two large blocks takes as long as the block is large: fewer calls then.
    if (::MEMORYALLOCSIZE(book->buffer) > kLargestQuickBlock) i += most / 4;
    kCalls[choices->Byte() % std::size(kCalls)](&program);
  }
}

}  // namespace tolvenar::fuzz
