// Costly files: compound files of many sectors, many streams and long chains, references of many objects, directories of many ids.
#include <filesystem>

#include "hostile/hostile_fixture.h"
#include "hostile/hostile_streams.h"
#include "support/compound_builder.h"
#include "support/workbook_file.h"

namespace tolvenar::testing {
namespace {

class HostileFile : public HostileTest {
 protected:
  void SetUp() override {
    HostileTest::SetUp();
    path_ = folder_.File("file");
  }

  // A file of `small` and one of `large` bytes, on which `call` is measured.
  template <typename Make, typename Call>
  void Expect(const char* name, Make make, Call call) {
    const Bytes small = make(kSmall);
    const Bytes large = make(kLarge);
    const auto cost = [&](const Bytes& file) {
      PutFile(path_, file);
      Load({});
      return CostOf(call);
    };
    ExpectGrowth(
        name, large.size(), [&] { return cost(small); }, [&] { return cost(large); });
  }

  // The file of one stream, as the library writes it.
  Bytes FileOf(const char* stream, const Bytes& bytes) {
    EXPECT_TRUE(WriteWorkbook(path_, stream, bytes));
    return FileBytes(path_);
  }

  void SaveWorkbook() {
    uint32_t buffer = 0, table = 0, size = 0;
    EXPECT_EQ(::XLOpenFile(path_.c_str(), &buffer, &size), 0);
    EXPECT_EQ(::XLLocateSheets(buffer, &table, size), 0);
    EXPECT_EQ(::XLSaveFile(path_.c_str(), &buffer, &table, &size), 0);
  }

  std::string path_;
};

Bytes SmallWorkbook() {
  return StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 1).Eof().Stream();
}

// A chain in which no sector follows the one before it in the file.
TEST_F(HostileFile, AScatteredChain) {
  const auto make = [](size_t bytes) {
    CompoundBuilder file;
    file.AddStream("Workbook", SmallWorkbook());
    file.AddStream("other", Pattern(bytes));
    return file.Build().bytes;
  };
  Expect("scattered chain", make, [&] { SaveWorkbook(); });
}

TEST_F(HostileFile, AScatteredMiniStream) {
  const auto make = [](size_t bytes) {
    CompoundBuilder file;
    file.AddStream("Workbook", SmallWorkbook());
    for (size_t i = 0; i < bytes / 4160; ++i) file.AddStream("s" + std::to_string(i), Pattern(4090));
    return file.Build().bytes;
  };
  Expect("scattered mini stream", make, [&] { SaveWorkbook(); });
}

TEST_F(HostileFile, ALongDirectory) {
  const auto make = [](size_t bytes) {
    CompoundBuilder file;
    file.AddStream("Workbook", SmallWorkbook());
    for (size_t i = 0; i < bytes / 200; ++i) file.AddStream("s" + std::to_string(i), Pattern(1));
    return file.Build().bytes;
  };
  Expect("long directory", make, [&] { SaveWorkbook(); });
}

TEST_F(HostileFile, AReferenceOfManyObjects) {
  const auto make = [&](size_t bytes) { return FileOf("7       ", HostileReference(bytes)); };
  Expect("reference", make, [&] {
    uint32_t buffer = 0, size = 0;
    EXPECT_EQ(::XLReadReference(path_.c_str(), &buffer, &size, 7), 0);
    EXPECT_EQ(::XLRefreshReference(&buffer, &size), 0);
    EXPECT_EQ(::XLSaveReference(path_.c_str(), &buffer, &size, 7), 0);
  });
}

TEST_F(HostileFile, ADirectoryOfManyIds) {
  const auto make = [&](size_t bytes) { return FileOf("Contents", HostileContents(bytes)); };
  Expect("ids", make, [&] {
    const int32_t id = ::XLCreateReference(path_.c_str());
    EXPECT_GT(id, 1);
    EXPECT_EQ(::XLDeleteReference(path_.c_str(), static_cast<uint32_t>(id)), 0);
  });
}

// The bounds on memory above are kept by every build, and mean something in one that tells it.
TEST_F(HostileFile, MemoryIsMeasured) {
  if (const char* why = WhyNoMemory()) GTEST_SKIP() << why;
  Bytes* taken = nullptr;
  const Cost cost = CostOf([&] { taken = new Bytes(20u << 20, 1); });
  delete taken;
  EXPECT_GE(cost.bytes, 19u << 20);
  EXPECT_LE(cost.bytes, 22u << 20);
}

}  // namespace
}  // namespace tolvenar::testing
