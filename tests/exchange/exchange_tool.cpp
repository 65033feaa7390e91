// Writes and reads workbooks and compound files in a way that is the same on every platform, so that what one
// build wrote can be compared with what another wrote, and read by it.
//
//   exchange_tool write FILE          makes a compound file of the streams below
//   exchange_tool replace FILE        removes one of its streams, replaces one and adds one
//   exchange_tool check FILE          reads what `write` left;  check-replaced FILE: what `replace` left
//   exchange_tool save FILE OUT ...   opens FILE, saves it unedited to the new file OUT; goes on with the
//   next two exchange_tool edit FILE ...       opens FILE, changes cells on every worksheet, saves it over
//   itself exchange_tool dump FILE ...       prints what the queries tell of FILE
//
// Ends with 0, or says what did not work and ends with 1. A workbook that can't be opened is reported by its
// result, and is no failure.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/storage.h"
#include "tolvenar/tolvenar.h"

namespace {

// The storage layer; what the system's headers declare on Windows is found without.
using namespace tolvenar::platform;

[[noreturn]] void Fail(const std::string& sentence) {
  std::printf("exchange_tool: %s\n", sentence.c_str());
  std::exit(1);
}

void Require(bool condition, const std::string& sentence) {
  if (!condition) Fail(sentence);
}

void RequireOk(HRESULT result, const std::string& what) {
  char text[16];
  std::snprintf(text, sizeof text, "%08" PRIX32, static_cast<uint32_t>(result));
  Require(result == S_OK, what + ": " + text);
}

// ---- Compound files ----

struct Contents {
  const char* name;
  uint32_t size;
};

// Sizes on both sides of where a stream leaves the mini stream, and one that needs a long sector table.
constexpr Contents kWritten[] = {{"Workbook", 5000},   {"empty", 0},      {"One", 1},
                                 {"sixty-three", 63},  {"Z", 64},         {"sixty-five", 65},
                                 {"below 4096", 4095}, {"at 4096", 4096}, {"above", 4097},
                                 {"large", 8000000},   {"a", 512},        {"AA", 513}};
constexpr Contents kRemoved = {"large", 0};
constexpr Contents kReplaced = {"sixty-three", 70000};
constexpr Contents kAdded = {"added later", 1500};

std::u16string Wide(const char* text) {
  return std::u16string(text, text + std::strlen(text));
}

const OLECHAR* Units(const std::u16string& text) {
  return reinterpret_cast<const OLECHAR*>(text.c_str());
}

// The bytes of a stream follow from its name and size.
std::vector<uint8_t> BytesOf(const Contents& contents) {
  std::vector<uint8_t> bytes(contents.size);
  uint32_t state = contents.size + static_cast<uint8_t>(contents.name[0]);
  for (uint8_t& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(state >> 24);
  }
  return bytes;
}

void WriteStream(Storage* storage, const Contents& contents, uint32_t mode) {
  Stream* stream = nullptr;
  RequireOk(StorageCreateStream(storage, Units(Wide(contents.name)), mode, &stream), contents.name);
  const std::vector<uint8_t> bytes = BytesOf(contents);
  uint32_t moved = 0;
  if (!bytes.empty()) RequireOk(StreamWrite(stream, bytes.data(), contents.size, &moved), contents.name);
  Require(moved == contents.size, std::string(contents.name) + ": a short write");
  RequireOk(StreamCommit(stream, 0), contents.name);
  StreamRelease(stream);
}

void CheckStream(Storage* storage, const Contents& contents) {
  Stream* stream = nullptr;
  RequireOk(StorageOpenStream(storage, Units(Wide(contents.name)), kModeExclusive, &stream), contents.name);
  uint64_t size = 0;
  RequireOk(StreamSize(stream, &size), contents.name);
  Require(size == contents.size, std::string(contents.name) + ": its size is another");
  std::vector<uint8_t> bytes(contents.size + 1);
  uint32_t moved = 0;
  const HRESULT result = StreamRead(stream, bytes.data(), contents.size + 1, &moved);
  Require(SUCCEEDED(result) && moved == contents.size, std::string(contents.name) + ": can't be read");
  bytes.pop_back();
  Require(bytes == BytesOf(contents), std::string(contents.name) + ": its bytes are others");
  StreamRelease(stream);
}

Storage* OpenFile(const char* path) {
  Storage* storage = nullptr;
  RequireOk(StorageOpen(Units(Wide(path)), kModeExclusive, &storage), path);
  return storage;
}

void CloseFile(Storage* storage) {
  RequireOk(StorageCommit(storage, 0), "commit");
  StorageRelease(storage);
}

void Write(const char* path) {
  Storage* storage = nullptr;
  RequireOk(StorageCreate(Units(Wide(path)), kModeExclusive, &storage), path);
  for (const Contents& contents : kWritten) WriteStream(storage, contents, kModeExclusive);
  CloseFile(storage);
}

void Replace(const char* path) {
  Storage* storage = OpenFile(path);
  RequireOk(StorageDestroyElement(storage, Units(Wide(kRemoved.name))), kRemoved.name);
  WriteStream(storage, kReplaced, kModeReplace);
  WriteStream(storage, kAdded, kModeExclusive);
  CloseFile(storage);
}

bool SameName(const Contents& one, const Contents& other) {
  return std::strcmp(one.name, other.name) == 0;
}

void Check(const char* path, bool replaced) {
  Storage* storage = OpenFile(path);
  for (const Contents& contents : kWritten) {
    if (replaced && (SameName(contents, kRemoved) || SameName(contents, kReplaced))) continue;
    CheckStream(storage, contents);
  }
  if (replaced) {
    CheckStream(storage, kReplaced);
    CheckStream(storage, kAdded);
    Stream* stream = nullptr;
    Require(FAILED(StorageOpenStream(storage, Units(Wide(kRemoved.name)), kModeExclusive, &stream)),
            "a removed stream is there");
  }
  StorageRelease(storage);
}

// ---- Workbooks ----

struct Book {
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

// False when the workbook can't be opened or located, which is reported.
bool Open(const char* path, Book* book) {
  const int16_t opened = XLOpenFile(path, &book->buffer, &book->size);
  const int16_t located = opened == 0 ? XLLocateSheets(book->buffer, &book->table, book->size) : int16_t{0};
  if (opened == 0 && located == 0) return true;
  std::printf("open %d locate %d\n", opened, located);
  MEMORYFREEALL();
  return false;
}

void Save(const char* path, Book* book) {
  std::printf("save %d\n", XLSaveFile(path, &book->buffer, &book->table, &book->size));
}

struct Extent {
  uint16_t first_row = 0, last_row = 0, first_column = 0, last_column = 0;
};

// Encrypted workbooks have extents of any size.
constexpr int32_t kMostCells = 1000000;

int32_t CellCount(const Extent& extent) {
  const int32_t rows = std::max(extent.last_row - extent.first_row + 1, 0);
  const int32_t columns = std::max(extent.last_column - extent.first_column + 1, 0);
  return columns == 0 || rows < kMostCells / columns ? rows * columns : kMostCells;
}

int16_t ExtentOf(const Book& book, int16_t sheet, Extent* extent) {
  return XLGetSheetSize(book.buffer, book.table, sheet, &extent->first_row, &extent->last_row,
                        &extent->first_column, &extent->last_column);
}

int16_t PutCell(Book* book, int16_t sheet, uint16_t row, uint16_t column, const VARIANT& value) {
  return XLChangeCellValue(&book->buffer, book->table, &book->size, sheet, static_cast<int16_t>(row),
                           static_cast<int16_t>(column), &value);
}

// A number into the first cell of the used range, a text into its last, another XF for the one between.
void EditSheet(Book* book, int16_t sheet) {
  Extent extent;
  if (ExtentOf(*book, sheet, &extent) != 0) return;
  VARIANT number;
  VariantInit(&number);
  number.vt = VT_R8;
  number.dblVal = sheet + 0.1;
  VARIANT text;
  VariantInit(&text);
  text.vt = VT_BSTR;
  text.bstrVal = SysAllocString(Units(u"exchanged"));
  const int first = PutCell(book, sheet, extent.first_row, extent.first_column, number);
  const int last = PutCell(book, sheet, extent.last_row, extent.last_column, text);
  const int format =
      XLChangeCellXF(&book->buffer, book->table, &book->size, sheet, static_cast<int16_t>(extent.last_row),
                     static_cast<int16_t>(extent.first_column), 15);
  std::printf("sheet %d: number %d text %d format %d\n", sheet, first, last, format);
  VariantClear(&text);
}

void SaveTo(const char* from, const char* to) {
  std::printf("%s\n", from);
  Book book;
  if (Open(from, &book)) Save(to, &book);
  MEMORYFREEALL();
}

void Edit(const char* path) {
  std::printf("%s\n", path);
  Book book;
  if (Open(path, &book)) {
    const int16_t sheets = XLGetNumSheets(book.table);
    for (int16_t sheet = 1; sheet <= sheets && book.buffer != 0; ++sheet) EditSheet(&book, sheet);
    if (book.buffer != 0) Save(path, &book);
  }
  MEMORYFREEALL();
}

// ---- What the queries tell ----

// Text that goes into a line of its own is long; a hash of it is not.
class Hash {
 public:
  void Add(const void* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i)
      value_ = (value_ ^ static_cast<const uint8_t*>(bytes)[i]) * 0x100000001B3u;
  }
  void Add(const std::string& text) { Add(text.data(), text.size()); }
  uint64_t Value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325u;
};

struct DestroyArray {
  void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using Array = std::unique_ptr<SAFEARRAY, DestroyArray>;

Array MakeArray(VARTYPE type, const Extent& extent) {
  SAFEARRAYBOUND bounds[2];
  bounds[0].cElements = static_cast<ULONG>(extent.last_row - extent.first_row + 1);
  bounds[0].lLbound = extent.first_row;
  bounds[1].cElements = static_cast<ULONG>(extent.last_column - extent.first_column + 1);
  bounds[1].lLbound = extent.first_column;
  Array array(SafeArrayCreate(type, 2, bounds));
  Require(array != nullptr, "no memory for an array");
  return array;
}

void AddText(Hash* hash, BSTR text) {
  hash->Add("text");
  hash->Add(text, SysStringByteLen(text));
}

// A text counts alike whether it came as a BSTR or in a VARIANT: arrays off Windows take either.
void AddCell(Hash* hash, SAFEARRAY* texts, SAFEARRAY* values, LONG* indices) {
  BSTR text = nullptr;
  RequireOk(SafeArrayGetElement(texts, indices, &text), "an element");
  VARIANT value;
  VariantInit(&value);
  RequireOk(SafeArrayGetElement(values, indices, &value), "an element");
  hash->Add(indices, 2 * sizeof(LONG));
  if (text != nullptr) {
    AddText(hash, text);
  } else if (value.vt == VT_BSTR) {
    AddText(hash, value.bstrVal);
  } else if (value.vt != VT_EMPTY) {
    hash->Add(&value.vt, sizeof value.vt);
    hash->Add(&value.dblVal, value.vt == VT_R8 ? 8 : 2);
  }
  SysFreeString(text);
  VariantClear(&value);
}

void DumpCells(const Book& book, int16_t sheet, const Extent& extent) {
  const Array texts = MakeArray(VT_BSTR, extent);
  const Array values = MakeArray(VT_VARIANT, extent);
  const Array formats = MakeArray(VT_I2, extent);
  SAFEARRAY* handed[] = {texts.get(), values.get(), formats.get()};
  const int got_texts = XLGetVariantData(&handed[0], book.buffer, book.table, sheet);
  const int got_values = XLGetVariantData(&handed[1], book.buffer, book.table, sheet);
  const int got_formats = XLGetCellData(&handed[2], book.buffer, book.table, sheet);
  Hash cells;
  Hash xfs;
  for (LONG row = extent.first_row; row <= extent.last_row; ++row) {
    for (LONG column = extent.first_column; column <= extent.last_column; ++column) {
      LONG indices[2] = {row, column};
      AddCell(&cells, texts.get(), values.get(), indices);
      int16_t xf = 0;
      RequireOk(SafeArrayGetElement(formats.get(), indices, &xf), "an element");
      xfs.Add(&xf, sizeof xf);
    }
  }
  std::printf("  values %d %d %016" PRIX64 " formats %d %016" PRIX64 "\n", got_texts, got_values,
              cells.Value(), got_formats, xfs.Value());
}

void DumpSheet(const Book& book, int16_t sheet) {
  BSTR name = nullptr;
  const int length = XLGetNameSheet(book.buffer, book.table, sheet, &name);
  Hash hash;
  AddText(&hash, name);
  SysFreeString(name);
  Extent extent;
  const int kind = ExtentOf(book, sheet, &extent);
  std::printf(" sheet %d: name %d %016" PRIX64 " size %d %d-%d %d-%d\n", sheet, length, hash.Value(), kind,
              extent.first_row, extent.last_row, extent.first_column, extent.last_column);
  if (kind == 0 && CellCount(extent) > 0 && CellCount(extent) < kMostCells) DumpCells(book, sheet, extent);
}

void DumpList(const Book& book) {
  SAFEARRAY* arrays[4];
  constexpr VARTYPE kTypes[4] = {VT_I4, VT_I2, VT_BSTR, VT_I2};
  constexpr ULONG kMost = 100000;
  for (int i = 0; i < 4; ++i) arrays[i] = SafeArrayCreateVector(kTypes[i], 1, kMost);
  int32_t count = 0;
  const int result = XLGetList(book.buffer, static_cast<int32_t>(book.size), &count, &arrays[0], &arrays[1],
                               &arrays[2], &arrays[3]);
  Hash hash;
  for (LONG index = 1; index <= count && index <= static_cast<LONG>(kMost); ++index) {
    BSTR image = nullptr;
    RequireOk(SafeArrayGetElement(arrays[2], &index, &image), "an element");
    AddText(&hash, image);
    SysFreeString(image);
  }
  for (const int plain : {0, 1, 3}) {
    void* data = nullptr;
    RequireOk(SafeArrayAccessData(arrays[plain], &data), "the elements");
    hash.Add(data, kMost * SafeArrayGetElemsize(arrays[plain]));
    SafeArrayUnaccessData(arrays[plain]);
  }
  for (SAFEARRAY* array : arrays) SafeArrayDestroy(array);
  std::printf(" list %d: %" PRId32 " records %016" PRIX64 "\n", result, count, hash.Value());
}

void Dump(const char* path) {
  std::printf("%s\n", path);
  Book book;
  if (!Open(path, &book)) return;
  const int16_t sheets = XLGetNumSheets(book.table);
  std::printf(" size %" PRIu32 " generation %d sheets %d\n", book.size, XLGetNumVers(book.buffer, book.table),
              sheets);
  for (int16_t sheet = 1; sheet <= sheets; ++sheet) DumpSheet(book, sheet);
  DumpList(book);
  MEMORYFREEALL();
}

void ForEach(int count, char** files, void (*act)(const char*)) {
  for (int i = 0; i < count; ++i) act(files[i]);
}

int Run(const std::string& command, int count, char** files) {
  if (command == "write") {
    ForEach(count, files, Write);
  } else if (command == "replace") {
    ForEach(count, files, Replace);
  } else if (command == "check") {
    ForEach(count, files, [](const char* path) { Check(path, false); });
  } else if (command == "check-replaced") {
    ForEach(count, files, [](const char* path) { Check(path, true); });
  } else if (command == "save") {
    for (int i = 0; i + 1 < count; i += 2) SaveTo(files[i], files[i + 1]);
  } else if (command == "edit") {
    ForEach(count, files, Edit);
  } else if (command == "dump") {
    ForEach(count, files, Dump);
  } else {
    Fail("no such command: " + command);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) Fail("usage: exchange_tool COMMAND FILE ...");
  return Run(argv[1], argc - 2, argv + 2);
}
