// StreamBuilder: how each record is laid down.
#include "support/stream_builder.h"

#include <cstdio>
#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"

namespace tolvenar::testing {

Bytes U16(uint16_t value) {
  Bytes bytes(2);
  WriteU16(bytes.data(), value);
  return bytes;
}

Bytes U32(uint32_t value) {
  Bytes bytes(4);
  WriteU32(bytes.data(), value);
  return bytes;
}

Bytes F64(double value) {
  Bytes bytes(8);
  WriteF64(bytes.data(), value);
  return bytes;
}

Bytes Text(std::string_view text) {
  return Bytes(text.begin(), text.end());
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

StreamBuilder& StreamBuilder::Raw(const Bytes& bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

StreamBuilder& StreamBuilder::Record(uint16_t type, const Bytes& payload) {
  last_ = Here();
  return Raw(U16(type) + U16(static_cast<uint16_t>(payload.size())) + payload);
}

StreamBuilder& StreamBuilder::Bof(uint8_t version, uint16_t substream) {
  if (depth_++ == 0) bofs_.push_back(Here());
  version_ = version;
  const Bytes head = U16(static_cast<uint16_t>(version << 8)) + U16(substream) + U16(0x0DBB) + U16(0x07CC);
  return Record(0x0809, version == 6 ? head + Bytes(8) : head);
}

StreamBuilder& StreamBuilder::Sheet(std::string_view name) {
  sheets_.push_back(Here());
  return Record(0x0085, U32(0) + U16(0) + Bytes{static_cast<uint8_t>(name.size()), 0} + Text(name));
}

StreamBuilder& StreamBuilder::Eof() {
  --depth_;
  return Record(0x000A);
}

StreamBuilder& StreamBuilder::Dimensions(uint16_t first_row, uint16_t past_row, uint16_t first_column,
                                         uint16_t past_column) {
  if (version_ == 6) {
    return Record(0x0200, U32(first_row) + U32(past_row) + U16(first_column) + U16(past_column) + U16(0));
  }
  return Record(0x0200, U16(first_row) + U16(past_row) + U16(first_column) + U16(past_column) + U16(0));
}

StreamBuilder& StreamBuilder::Row(uint16_t row, uint16_t first_column, uint16_t past_column) {
  return Record(0x0208, U16(row) + U16(first_column) + U16(past_column) + U16(0x00FF) + U16(0) + U16(0) +
                            U16(0x0100) + U16(0x000F));
}

StreamBuilder& StreamBuilder::Number(uint16_t row, uint16_t column, uint16_t xf, double value) {
  return Record(0x0203, U16(row) + U16(column) + U16(xf) + F64(value));
}

StreamBuilder& StreamBuilder::Rk(uint16_t row, uint16_t column, uint16_t xf, uint32_t rk) {
  return Record(0x027E, U16(row) + U16(column) + U16(xf) + U32(rk));
}

StreamBuilder& StreamBuilder::Blank(uint16_t row, uint16_t column, uint16_t xf) {
  return Record(0x0201, U16(row) + U16(column) + U16(xf));
}

StreamBuilder& StreamBuilder::Label(uint16_t row, uint16_t column, uint16_t xf, std::string_view text) {
  return Record(0x0204,
                U16(row) + U16(column) + U16(xf) + U16(static_cast<uint16_t>(text.size())) + Text(text));
}

StreamBuilder& StreamBuilder::LabelBiff8(uint16_t row, uint16_t column, uint16_t xf, std::string_view text,
                                         uint8_t flags) {
  return Record(0x0204, U16(row) + U16(column) + U16(xf) + U16(static_cast<uint16_t>(text.size())) +
                            Bytes{flags} + Text(text));
}

StreamBuilder& StreamBuilder::BoolErr(uint16_t row, uint16_t column, uint16_t xf, uint8_t value,
                                      uint8_t is_error) {
  return Record(0x0205, U16(row) + U16(column) + U16(xf) + Bytes{value, is_error});
}

StreamBuilder& StreamBuilder::Formula(uint16_t row, uint16_t column, uint16_t xf, const Bytes& result8,
                                      const Bytes& tokens) {
  return Record(0x0006, U16(row) + U16(column) + U16(xf) + result8 + U16(0) + U32(0) +
                            U16(static_cast<uint16_t>(tokens.size())) + tokens);
}

StreamBuilder& StreamBuilder::LabelSst(uint16_t row, uint16_t column, uint16_t xf, uint32_t index) {
  return Record(0x00FD, U16(row) + U16(column) + U16(xf) + U32(index));
}

StreamBuilder& StreamBuilder::MulRk(uint16_t row, uint16_t first_column,
                                    std::initializer_list<RkCell> cells) {
  Bytes payload = U16(row) + U16(first_column);
  for (const RkCell& cell : cells) payload = payload + U16(cell.xf) + U32(cell.rk);
  return Record(0x00BD, payload + U16(static_cast<uint16_t>(first_column + cells.size() - 1)));
}

StreamBuilder& StreamBuilder::MulBlank(uint16_t row, uint16_t first_column,
                                       std::initializer_list<uint16_t> xfs) {
  Bytes payload = U16(row) + U16(first_column);
  for (uint16_t xf : xfs) payload = payload + U16(xf);
  return Record(0x00BE, payload + U16(static_cast<uint16_t>(first_column + xfs.size() - 1)));
}

StreamBuilder& StreamBuilder::Slack(uint16_t length, uint8_t fill) {
  return Record(0xFEFD, Bytes(length, fill));
}

StreamBuilder& StreamBuilder::Detour(uint32_t target) {
  return Record(0xFEFF, U32(target));
}

StreamBuilder& StreamBuilder::Resume(uint32_t target) {
  return Record(0xFEFA, U32(target));
}

StreamBuilder& StreamBuilder::BufEnd() {
  return Record(0xFEF8);
}

Bytes StreamBuilder::Stream() const {
  Bytes stream = bytes_;
  for (size_t i = 0; i < sheets_.size() && i + 1 < bofs_.size(); ++i) {
    WriteU32(stream.data() + sheets_[i] + kBoundSheetBof, bofs_[i + 1]);
  }
  return stream;
}

uint32_t StreamBuilder::Load(uint32_t* size) const {
  static const Bytes kEnd = {0xF8, 0xFE, 0, 0};
  Bytes stream = Stream();
  const bool ended = stream.size() >= kEnd.size() && Bytes(stream.end() - kBufEndSize, stream.end()) == kEnd;
  if (!ended) stream = stream + kEnd;
  *size = static_cast<uint32_t>(stream.size());
  const uint32_t buffer = MEMORYALLOC(static_cast<int32_t>(*size));
  if (buffer != 0) std::memcpy(BlockBytes(buffer), stream.data(), stream.size());
  return buffer;
}

Bytes BlockContents(uint32_t handle, uint32_t size) {
  Bytes bytes(size);
  CopyOut(OpenBlock(handle), 0, bytes.data(), size);
  return bytes;
}

Bytes WalkedStream(uint32_t handle, uint32_t from) {
  Bytes bytes;
  const Block block = OpenBlock(handle);
  for (Walk walk = StartWalk(block, from); !walk.ended && !IsPrivate(block, walk.at, kLowBufEnd);
       Step(&walk)) {
    if (IsJump(block, walk.at) || IsPrivate(block, walk.at, kLowSlack)) continue;
    Bytes record(kHeaderSize + LengthAt(block, walk.at));
    CopyOut(block, walk.at, record.data(), static_cast<uint32_t>(record.size()));
    bytes = bytes + record;
  }
  return bytes;
}

std::string Hex(const Bytes& bytes) {
  std::string text;
  for (uint8_t byte : bytes) {
    char two[4];
    std::snprintf(two, sizeof two, "%02X ", byte);
    text += two;
  }
  return text;
}

}  // namespace tolvenar::testing
