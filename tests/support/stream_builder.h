// StreamBuilder: BIFF streams that read in the test as they stand in the file.
//
//   StreamBuilder().Bof(6).Sheet("Data").Eof()      globals; the BOUNDSHEET finds its BOF by itself
//                  .Bof(6, kWorksheet).Dimensions(0, 2, 0, 3).Row(0).Number(0, 0, 15, 1.5).Eof()
//                  .Load(&size);                    a pool block as XLOpenFile would leave it
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tolvenar::testing {

using Bytes = std::vector<uint8_t>;

// Substream types of a BOF.
constexpr uint16_t kGlobals = 0x0005;
constexpr uint16_t kVisualBasic = 0x0006;
constexpr uint16_t kWorksheet = 0x0010;
constexpr uint16_t kChart = 0x0020;
constexpr uint16_t kMacroSheet = 0x0040;
constexpr uint16_t kWorkspace = 0x0100;

// Little-endian bytes of values.
Bytes U16(uint16_t value);
Bytes U32(uint32_t value);
Bytes F64(double value);
Bytes Text(std::string_view text);
Bytes operator+(Bytes a, const Bytes& b);

class StreamBuilder {
 public:
  // Any record.
  StreamBuilder& Record(uint16_t type, const Bytes& payload = {});
  // Bytes that need not be a record.
  StreamBuilder& Raw(const Bytes& bytes);

  // Globals.
  StreamBuilder& Bof(uint8_t version, uint16_t substream = kGlobals);  // 0x0809 with version 0x0500 or 0x0600
  StreamBuilder& Sheet(
      std::string_view name);  // BOUNDSHEET with BIFF8's layout; its offset is the next BOF's
  StreamBuilder& Eof();

  // Sheet records. Rows, columns 0-based; `past` one behind the last.
  StreamBuilder& Dimensions(uint16_t first_row, uint16_t past_row, uint16_t first_column,
                            uint16_t past_column);  // by the version
  StreamBuilder& Row(uint16_t row, uint16_t first_column = 0, uint16_t past_column = 256);
  StreamBuilder& Number(uint16_t row, uint16_t column, uint16_t xf, double value);
  StreamBuilder& Rk(uint16_t row, uint16_t column, uint16_t xf, uint32_t rk);
  StreamBuilder& Blank(uint16_t row, uint16_t column, uint16_t xf);
  StreamBuilder& Label(uint16_t row, uint16_t column, uint16_t xf,
                       std::string_view text);  // 8-bit layout without option byte
  StreamBuilder& LabelBiff8(uint16_t row, uint16_t column, uint16_t xf, std::string_view text,
                            uint8_t flags = 0);
  StreamBuilder& BoolErr(uint16_t row, uint16_t column, uint16_t xf, uint8_t value, uint8_t is_error);
  StreamBuilder& Formula(uint16_t row, uint16_t column, uint16_t xf, const Bytes& result8,
                         const Bytes& tokens = {});
  StreamBuilder& LabelSst(uint16_t row, uint16_t column, uint16_t xf, uint32_t index);
  struct RkCell {
    uint16_t xf;
    uint32_t rk;
  };
  StreamBuilder& MulRk(uint16_t row, uint16_t first_column, std::initializer_list<RkCell> cells);
  StreamBuilder& MulBlank(uint16_t row, uint16_t first_column, std::initializer_list<uint16_t> xfs);

  // Private records.
  StreamBuilder& Slack(uint16_t length, uint8_t fill = 0);
  StreamBuilder& Detour(uint32_t target);
  StreamBuilder& Resume(uint32_t target);
  StreamBuilder& BufEnd();

  // Offset at which the next record will stand, and of the record added last.
  uint32_t Here() const { return static_cast<uint32_t>(bytes_.size()); }
  uint32_t Last() const { return last_; }

  // The stream, BOUNDSHEET offsets filled in.
  Bytes Stream() const;
  // The same as a pool block with a BUFEND behind it, unless it ends with one already. Returns the handle;
  // *size is the buffer's size.
  uint32_t Load(uint32_t* size) const;

 private:
  Bytes bytes_;
  std::vector<uint32_t> sheets_;  // BOUNDSHEETs
  std::vector<uint32_t> bofs_;    // BOFs at depth 0, the globals' first
  uint8_t version_ = 6;
  uint32_t last_ = 0;
  int depth_ = 0;
};

// The first `size` bytes of a pool block.
Bytes BlockContents(uint32_t handle, uint32_t size);

// The records that a walk from `from` meets up to the BUFEND (which is left out), private ones left out too,
// laid end to end.
Bytes WalkedStream(uint32_t handle, uint32_t from = 0);

// "09 08 00 00", for failure messages.
std::string Hex(const Bytes& bytes);

}  // namespace tolvenar::testing
