// Every call on every costly workbook, at one size and at ten times that size: its time grows no faster than the size, and neither time nor
// memory are beyond reason. Both sizes lie in the pool's largest blocks, so that what a walk can come through grows only with the file.
#include <filesystem>

#include "hostile/hostile_calls.h"
#include "hostile/hostile_fixture.h"
#include "hostile/hostile_streams.h"

namespace tolvenar::testing {
namespace {

class HostileWorkbook : public HostileTest, public ::testing::WithParamInterface<HostileShape> {
 protected:
  void SetUp() override {
    HostileTest::SetUp();
    small_ = GetParam().make(kSmall);
    large_ = GetParam().make(kLarge);
    path_ = folder_.File("book.xls");
  }

  // The workbook of a stream, in a pool without any other block.
  HostileBook Open(const HostileStream& stream) {
    std::filesystem::remove(path_);
    HostileBook book;
    book.path = path_;
    book.size = static_cast<uint32_t>(stream.bytes.size());
    book.buffer = Load(stream.bytes);
    EXPECT_EQ(::XLLocateSheets(book.buffer, &book.table, book.size), 0);
    if (stream.late_at != 0) WriteU32(BlockBytes(book.buffer) + stream.late_at, stream.late_value);
    return book;
  }

  Cost CostOn(const HostileStream& stream, const HostileCall& call) {
    HostileBook book = Open(stream);
    return CostOf([&] { call.run(&book); });
  }

  HostileStream small_;
  HostileStream large_;
  std::string path_;
};

TEST_P(HostileWorkbook, EveryCallGrowsWithTheSizeAlone) {
  for (const HostileCall& call : HostileCalls()) {
    ExpectGrowth(
        call.name, large_.bytes.size(), [&] { return CostOn(small_, call); },
        [&] { return CostOn(large_, call); });
  }
}

TEST_P(HostileWorkbook, LocatingTheSheetsGrowsWithTheSizeAlone) {
  const auto locate = [&](const HostileStream& stream) {
    const uint32_t buffer = Load(stream.bytes);
    uint32_t table = 0;
    return CostOf([&] { ::XLLocateSheets(buffer, &table, static_cast<uint32_t>(stream.bytes.size())); });
  };
  ExpectGrowth(
      "XLLocateSheets", large_.bytes.size(), [&] { return locate(small_); }, [&] { return locate(large_); });
}

INSTANTIATE_TEST_SUITE_P(All, HostileWorkbook, ::testing::ValuesIn(HostileWorkbooks()),
                         [](const auto& shape) { return std::string(shape.param.name); });

}  // namespace
}  // namespace tolvenar::testing
