// LABEL records. The layout stands in label_record.h.
#include "workbook/label_record.h"

#include <algorithm>
#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "platform/host_text.h"
#include "workbook/biff_version.h"
#include "workbook/record_pen.h"

namespace tolvenar {

namespace {

// MakeLabelRecord's own place of the text, in both generations.
constexpr uint32_t kDoubledText = kLabelFixed + 1;

constexpr OLECHAR kOneBlank[] = {u' ', 0};

// Bytes of a label in front of its text.
uint32_t TextAt() {
  return BiffVersion == kBiff8 ? kLabelTextBiff8 : kLabelText;
}

// Number of characters up to the zero, at most `most`.
uint32_t WideLength(const OLECHAR* text, uint32_t most) {
  uint32_t length = 0;
  while (length < most && text[length] != 0) ++length;
  return length;
}

// Narrows one character more of `text`; false at its zero.
inline bool NarrowNext(uint8_t* to, const OLECHAR* text, uint32_t* characters) {
  const OLECHAR character = text[*characters];
  if (character == 0) return false;
  to[(*characters)++] = static_cast<uint8_t>(character);
  return true;
}

// Narrows the text up to its zero, at most `room` characters, to `to`; how many. In one pass, and character by character, since nothing behind
// the zero may be read; in steps of eight, within which only the zero is looked for.
uint32_t NarrowText(uint8_t* to, uint32_t room, const OLECHAR* text) {
  constexpr uint32_t kStep = 8;
  uint32_t done = 0;
  for (; room - done >= kStep; done += kStep) {
    uint32_t characters = 0;
    while (characters < kStep && NarrowNext(to + done, text + done, &characters)) continue;
    if (characters < kStep) return done + characters;
  }
  while (done < room && NarrowNext(to, text, &done)) continue;
  return done;
}

void PutCell(const Block& label, uint16_t row, uint16_t column, uint16_t xf, uint32_t characters) {
  PutU16(label, kCellRow, row);
  PutU16(label, kCellColumn, column);
  PutU16(label, kCellXf, xf);
  PutU16(label, kLabelLength, static_cast<uint16_t>(characters));
}

// Row, column, XF, length and the narrowed text, and the record's length field.
void PutLabel(const Block& label, uint16_t row, uint16_t column, uint16_t xf, const OLECHAR* text,
              uint32_t characters) {
  const uint32_t text_at = TextAt();
  PutU16(label, kRecordLength, static_cast<uint16_t>(text_at + characters - kHeaderSize));
  PutCell(label, row, column, xf, characters);
  if (uint8_t* to = At(label, text_at, characters)) {
    // The analyzer does not see that `characters` is no more than the text has.
    for (uint32_t i = 0; i < characters; ++i) {
      to[i] = static_cast<uint8_t>(text[i]);  // NOLINT(clang-analyzer-core.uninitialized.Assign)
    }
  }
}

}  // namespace

uint32_t MakeLabelRecord(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf, const char* text) {
  constexpr size_t kLongest = INT32_MAX / 2 - kLabelFixed;  // more than the pool has room for
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  if (length > kLongest) return 0;
  const uint32_t doubled = static_cast<uint32_t>(length) * 2;
  const uint32_t total = kLabelFixed + doubled;
  RecordPen pen = StartRecordOfLength(kTypeLabel, static_cast<uint16_t>(total - kHeaderSize), total);
  if (pen.block == 0) return 0;
  *size = total;
  WriteFields(&pen, row, column, xf, static_cast<uint16_t>(length), uint8_t{0});
  // Past the block, not through the gate: the last byte may be the slot's spare one.
  if (doubled != 0) {
    platform::CopyHostBytes(BlockBytes(pen.block) + kDoubledText, text, static_cast<uint32_t>(length) + 1,
                            doubled);
  }
  return pen.block;
}

uint32_t MakeLabelRecordWide(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf,
                             const OLECHAR* text) {
  if (text == nullptr) return 0;
  const uint32_t text_at = TextAt();
  const uint32_t characters = WideLength(text, static_cast<uint32_t>(kLabelShellSize) - text_at);
  const uint32_t total = text_at + characters;
  RecordPen pen = StartRecordOfLength(kTypeLabel, 0, total);
  if (pen.block == 0) return 0;
  *size = total;
  PutLabel(pen.room, row, column, xf, text, characters);
  return pen.block;
}

uint32_t AllocLabelRecord(int32_t size, uint16_t row, uint16_t column, uint16_t xf) {
  const int32_t clamped = std::min(size, kLabelShellSize);
  const uint32_t block = MEMORYALLOC(clamped);
  const Block label = OpenBlock(block);
  PutU16(label, kRecordTypeLow, kTypeLabel);
  PutU16(label, kRecordLength, static_cast<uint16_t>(clamped - static_cast<int32_t>(kHeaderSize)));
  PutCell(label, row, column, xf, 0);
  PutU8(label, TextAt(), 0);
  return block;
}

void FillLabelRecord(const Block& shell, uint32_t* size, uint16_t row, uint16_t column, uint16_t xf,
                     const OLECHAR* text) {
  *size = 0;
  if (text == nullptr) text = kOneBlank;
  const uint32_t text_at = TextAt();
  const uint32_t room = shell.extent > text_at ? shell.extent - text_at : 0;
  const uint32_t characters = NarrowText(At(shell, text_at, room), room, text);
  PutU16(shell, kRecordLength, static_cast<uint16_t>(text_at + characters - kHeaderSize));
  PutCell(shell, row, column, xf, characters);
  *size = text_at + characters;
}

}  // namespace tolvenar
