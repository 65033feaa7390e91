// Paths: existence, and addresses that can't be read.
#include "platform/path.h"

#include <gtest/gtest.h>

#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

class PathTest : public StorageTest {};

TEST_F(PathTest, PathExists_OfFileAndFolder_IsTrue) {
  WriteFile(folder_ / "file", {});
  EXPECT_TRUE(platform::PathExists(Path("file").c_str()));
  EXPECT_TRUE(platform::PathExists(folder_.string().c_str()));
}

TEST_F(PathTest, PathExists_OfNothing_IsFalse) {
  EXPECT_FALSE(platform::PathExists(Path("file").c_str()));
  EXPECT_FALSE(platform::PathExists(""));
  EXPECT_FALSE(platform::PathExists(nullptr));
}

TEST_F(PathTest, IsReadable_TellsNullFromAnObject) {
  const uint64_t object = 0;
  EXPECT_TRUE(platform::IsReadable(&object, sizeof object));
  EXPECT_FALSE(platform::IsReadable(nullptr, 8));
}

}  // namespace
}  // namespace tolvenar::testing
