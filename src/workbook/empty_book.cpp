// XLCreateEmptyBook and XLEmptyBookLocateSheets.
#include "workbook/empty_book.h"

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "workbook/biff_version.h"
#include "workbook/default_records.h"
#include "workbook/record_builders.h"
#include "workbook/sheet_table.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr int16_t kNoBlock = -1;
constexpr int16_t kAppendFailed = -2;
constexpr int16_t kLocateNoBuffer = 1;

constexpr int32_t kFirstSize = 4096;

// A step of the list: the record of a key, once for each variant from the first to the last.
struct Step {
  int16_t key;
  uint8_t first_variant = 0;
  uint8_t last_variant = 0;
  bool biff5_only = false;  // not even asked for in BIFF8
};

constexpr Step kSteps[] = {
    {kKeyInterfaceHdr},
    {kKeyInterfacePayload},
    {kKeyMms},
    {kKeyToolbarHdr, 0, 0, true},
    {kKeyToolbar00A4, 0, 0, true},
    {kKeyToolbarEnd, 0, 0, true},
    {kKeyInterfaceEnd},
    {kKeyWriteAccess},
    {kKeyCodepage},
    {kKeyDsf},
    {kKeyTabId},
    {kKeyFnGroupCount},
    {kKeyWindowProtect},
    {kKeyProtect},
    {kKeyPassword},
    {kKeyProt4Rev},
    {kKeyProt4RevPass},
    {kKeyWindow1},
    {kKeyBackup},
    {kKeyHideObj},
    {kKeyDateMode1904},
    {kKeyPrecision},
    {kKeyRefreshAll},
    {kKeyBookBool},
    {kKeyFont, 0, 3},
    {kKeyFont, 4, 4, true},
    {kKeyFormat, 0, 9},  // variant 9 is not served, and asked for on purpose
    {kKeyXf, 0, 21},
    {kKeyStyle, 0, 5},
    {kKeyUsesElfs},
    {kKeyBoundSheet},  // nor is this
    {kKeyCountry},
    {kKeyEof},
};

struct NewBook {
  uint32_t buffer;
  uint32_t nominal_size;  // what AppendBytes counts; not reported
  uint32_t at;
};

bool Append(NewBook* book, uint32_t record, uint32_t size) {
  const int32_t behind = AppendBytes(&book->buffer, &book->nominal_size, book->at, record, size);
  if (behind < 0) return false;
  book->at = static_cast<uint32_t>(behind);
  return true;
}

bool AppendStep(NewBook* book, const Step& step) {
  if (step.biff5_only && BiffVersion != kBiff5) return true;
  for (uint32_t variant = step.first_variant; variant <= step.last_variant; ++variant) {
    uint32_t size = 0;
    const uint32_t record = MakeDefaultRecord(&size, step.key, variant);
    if (!Append(book, record, size)) return false;
  }
  return true;
}

bool AppendGlobals(NewBook* book) {
  uint32_t size = 0;
  const uint32_t bof = MakeBofRecord(&size, kBofGlobals);
  if (!Append(book, bof, size)) return false;
  for (const Step& step : kSteps) {
    if (!AppendStep(book, step)) return false;
  }
  return true;
}

}  // namespace

int16_t XLCreateEmptyBook(uint32_t* buffer, uint32_t* size, int32_t selector) {
  NewBook book = {MEMORYALLOC(kFirstSize), kFirstSize, 0};
  if (book.buffer == 0) return kNoBlock;
  BiffVersion = selector == kSelectBiff8 ? kBiff8 : kBiff5;
  if (!AppendGlobals(&book)) {
    MEMORYFREE(&book.buffer);
    return kAppendFailed;
  }
  if (size != nullptr) *size = book.at;
  if (buffer != nullptr) {
    *buffer = book.buffer;
  } else {
    MEMORYFREE(&book.buffer);  // nobody could
  }
  return kDone;
}

int16_t XLEmptyBookLocateSheets(uint32_t buffer, uint32_t* table, int32_t size) {
  uint32_t unwanted = 0;
  if (table == nullptr) table = &unwanted;
  *table = 0;
  if (buffer == 0) return kLocateNoBuffer;
  const int16_t result =
      MakeSheetTable(buffer, table, static_cast<uint32_t>(size), WithoutSheets::kBehindEof);
  if (result != kDone) MEMORYFREE(&buffer);
  MEMORYFREE(&unwanted);
  return result;
}

}  // namespace tolvenar
