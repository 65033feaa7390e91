// All or nothing: the path holds the old file or the new one, whatever happens on the way.
#if !defined(_WIN32)

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>

#include "platform/storage.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

namespace fs = std::filesystem;

class CompoundCommit : public StorageTest {
 protected:
  std::string StageOf(const std::string& name) const { return Path("." + name + ".tolvenar"); }

  static struct stat StatusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
  }
};

TEST_F(CompoundCommit, ReleaseWithoutCommit_LeavesTheFileAsItWas) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  const Bytes before = ReadFile(path);
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(9000, 2)), S_OK);
  EXPECT_EQ(file.Destroy("s"), S_OK);
  EXPECT_TRUE(ReadFile(path) == before);
  file.Release();
  EXPECT_TRUE(ReadFile(path) == before);
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

TEST_F(CompoundCommit, CreatedFile_IsNotThereBeforeTheCommit) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(9000)), S_OK);
  EXPECT_FALSE(fs::exists(Path("file")));
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_TRUE(fs::exists(Path("file")));
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

TEST_F(CompoundCommit, CreatedFileReleased_LeavesNothing) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(9000)), S_OK);
  file.Release();
  EXPECT_TRUE(Listing().empty());
}

TEST_F(CompoundCommit, CreatedFileWithNothingInIt_IsAFileOfItsOwn) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_EQ(CheckCompound(ReadFile(Path("file"))).size(), 1u);
}

TEST_F(CompoundCommit, CreatedFile_HasTheModeThatTheProcessGives) {
  const mode_t old = umask(027);
  Make("file", {});
  umask(old);
  EXPECT_EQ(StatusOf(Path("file")).st_mode & 07777, 0640u);
}

TEST_F(CompoundCommit, NothingChanged_LeavesTheVeryFile) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  const ino_t before = StatusOf(path).st_ino;
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  Bytes bytes;
  EXPECT_EQ(file.Get("s", &bytes), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  file.Release();
  EXPECT_EQ(StatusOf(path).st_ino, before);
}

TEST_F(CompoundCommit, Replace_OfAnyFile_WaitsForTheCommit) {
  WriteFile(Path("file"), Pattern(700));
  OpenFile file;
  EXPECT_EQ(file.Create(Path("file")), platform::kStgFileAlreadyExists);
  ASSERT_EQ(file.Create(Path("file"), platform::kModeReplace), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(10)), S_OK);
  EXPECT_TRUE(ReadFile(Path("file")) == Pattern(700));
  EXPECT_EQ(file.Commit(), S_OK);
  file.Release();
  EXPECT_EQ(StreamOf(Path("file"), "s"), Pattern(10));
}

TEST_F(CompoundCommit, NameTakenByAnotherProgramMeanwhile_IsNotOverwritten) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(10)), S_OK);
  WriteFile(Path("file"), Pattern(5));
  EXPECT_EQ(file.Commit(), platform::kStgFileAlreadyExists);
  file.Release();
  EXPECT_EQ(ReadFile(Path("file")), Pattern(5));
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

TEST_F(CompoundCommit, ModeAndOwner_Survive) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  if (chown(path.c_str(), 12345, 23456) != 0) GTEST_SKIP() << "NOT TESTED: only root may give files away";
  ASSERT_EQ(chmod(path.c_str(), 0604), 0);
  EXPECT_EQ(Save(path, "s", Pattern(20)), S_OK);
  const struct stat after = StatusOf(path);
  EXPECT_EQ(after.st_mode & 07777, 0604u);
  EXPECT_EQ(after.st_uid, 12345u);
  EXPECT_EQ(after.st_gid, 23456u);
}

TEST_F(CompoundCommit, SymbolicLinks_StayAndLeadToTheNewFile) {
  fs::create_directory(Path("elsewhere"));
  Make("elsewhere/file", {{"s", Pattern(10)}});
  fs::create_symlink("elsewhere/file", Path("link"));
  fs::create_symlink(Path("link"), Path("link to link"));
  EXPECT_EQ(Save(Path("link to link"), "s", Pattern(20)), S_OK);
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_TRUE(fs::is_symlink(Path("link to link")));
  EXPECT_EQ(StreamOf(Path("elsewhere/file"), "s"), Pattern(20));
  EXPECT_EQ(Listing(), std::vector<std::string>({"elsewhere", "link", "link to link"}));
}

TEST_F(CompoundCommit, LinkToNothing_IsWhereANewFileIsMade) {
  fs::create_symlink("file", Path("link"));
  OpenFile file;
  ASSERT_EQ(file.Create(Path("link")), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_TRUE(fs::is_regular_file(Path("file")));
}

TEST_F(CompoundCommit, LinkToItself_IsAnError) {
  fs::create_symlink("link", Path("link"));
  OpenFile file;
  EXPECT_EQ(file.Open(Path("link")), platform::kStgPathNotFound);
  EXPECT_EQ(file.Create(Path("link")), platform::kStgPathNotFound);
}

TEST_F(CompoundCommit, RelativePath_MeansTheFolderOfTheOpening) {
  const fs::path before = fs::current_path();
  fs::create_directory(Path("there"));
  fs::current_path(folder_);
  OpenFile file;
  EXPECT_EQ(file.Create("file"), S_OK);
  fs::current_path(Path("there"));
  EXPECT_EQ(file.Commit(), S_OK);
  fs::current_path(before);
  EXPECT_TRUE(fs::exists(Path("file")));
}

TEST_F(CompoundCommit, LongestName_CanBeSaved) {
  const std::string name(255, 'n');
  Make(name, {{"s", Pattern(10)}});
  EXPECT_EQ(Save(Path(name), "s", Pattern(9000)), S_OK);
  EXPECT_EQ(Listing(), std::vector<std::string>({name}));
}

TEST_F(CompoundCommit, LongestNames_CanBeMadeSideBySide) {
  OpenFile one;
  OpenFile other;
  EXPECT_EQ(one.Create(Path(std::string(255, 'n'))), S_OK);
  EXPECT_EQ(other.Create(Path(std::string(254, 'n') + "m")), S_OK);
  EXPECT_EQ(one.Commit(), S_OK);
  EXPECT_EQ(other.Commit(), S_OK);
}

TEST_F(CompoundCommit, NameTooLongForTheFileSystem_IsToldByTheCreation) {
  OpenFile file;
  for (const uint32_t mode : {platform::kModeExclusive, platform::kModeReplace}) {
    EXPECT_EQ(file.Create(Path(std::string(256, 'n')), mode), platform::kStgPathNotFound);
    EXPECT_EQ(file.storage, nullptr);
  }
  EXPECT_EQ(Listing(), std::vector<std::string>());
}

TEST_F(CompoundCommit, LeftOverStage_IsRemovedByTheNextOpen) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  WriteFile(StageOf("file"), Pattern(3000));
  EXPECT_EQ(StreamOf(path, "s"), Pattern(10));
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

TEST_F(CompoundCommit, LeftOverStage_DoesNotStandInTheWayOfACreation) {
  WriteFile(StageOf("file"), Pattern(3000));
  Make("file", {{"s", Pattern(10)}});
  EXPECT_EQ(CheckCompound(ReadFile(Path("file"))).size(), 2u);
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

// Whoever may write into the folder could put a link there, and have its target overwritten.
TEST_F(CompoundCommit, LinkInPlaceOfTheStage_IsNotFollowed) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  WriteFile(Path("victim"), Pattern(100));
  fs::create_symlink("victim", StageOf("file"));
  EXPECT_EQ(Save(path, "s", Pattern(20)), S_OK);
  EXPECT_EQ(ReadFile(Path("victim")), Pattern(100));
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path)));
}

// The stage has the new bytes before they are in place: nobody may read there what he may not read in the
// file.
TEST_F(CompoundCommit, Stage_IsAsPrivateAsTheFile) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  ASSERT_EQ(file.Put("s", Pattern(20)), S_OK);
  EXPECT_EQ(StatusOf(StageOf("file")).st_mode & 07777, 0600u);
}

TEST_F(CompoundCommit, RoomOfTheWholeFile_IsTakenByTheWrite) {
  const std::string path = Make("file", {{"kept", Pattern(100000)}, {"s", Pattern(10)}});
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  ASSERT_EQ(file.Put("s", Pattern(50000)), S_OK);
  const struct stat staged = StatusOf(StageOf("file"));
  EXPECT_GE(staged.st_blocks * 512, 150000);
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_EQ(StatusOf(path).st_size, staged.st_size);
}

// A limit on the size of files would be told by a signal that ends the process.
TEST_F(CompoundCommit, FileSizeLimit_IsToldByTheWrite) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  struct rlimit old;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  struct rlimit small = old;
  small.rlim_cur = 100000;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const HRESULT result = Save(path, "s", Pattern(200000));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
  EXPECT_EQ(result, platform::kStgMediumFull);
  EXPECT_EQ(StreamOf(path, "s"), Pattern(10));
}

// Runs `body` as a user whom rights bind, in a process of its own. True when it answered true there.
template <typename Body>
bool AsNobody(const Body& body) {
  constexpr uid_t kNobody = 65534;
  const pid_t child = fork();
  if (child == 0) {
    const bool changed = setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
    _exit(changed && body() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class CompoundRights : public CompoundCommit {
 protected:
  void SetUp() override {
    StorageTest::SetUp();
    if (geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root can try this as somebody else";
  }
};

TEST_F(CompoundRights, FileWithoutTheRightToWrite_IsRefused) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  EXPECT_TRUE(AsNobody([&] {
    OpenFile file;
    return file.Open(path) == platform::kStgAccessDenied;
  }));
}

TEST_F(CompoundRights, FolderWithoutTheRightToWrite_RefusesCreationsAndChangesButNotReading) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  EXPECT_TRUE(AsNobody([&] {
    OpenFile file;
    Bytes bytes;
    return file.Create(Path("new")) == platform::kStgAccessDenied && file.Open(path) == S_OK &&
           file.Get("s", &bytes) == S_OK && bytes == Pattern(10) &&
           file.Destroy("s") == platform::kStgAccessDenied &&
           file.Put("s", {}) == platform::kStgAccessDenied && file.Commit() == S_OK;
  }));
  EXPECT_EQ(StreamOf(path, "s"), Pattern(10));
}

// A user who can't give files away can still save one that is not his.
TEST_F(CompoundRights, AnothersFile_IsSavedWithItsMode) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder_.c_str(), 0777), 0);
  EXPECT_TRUE(AsNobody([&] { return Save(path, "s", Pattern(20)) == S_OK; }));
  EXPECT_EQ(StreamOf(path, "s"), Pattern(20));
  EXPECT_EQ(StatusOf(path).st_mode & 07777, 0666u);
}

TEST_F(CompoundRights, AnothersLeftOverStage_IsRemovedWithoutBeingReadable) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  WriteFile(StageOf("file"), Pattern(100));
  ASSERT_EQ(chmod(StageOf("file").c_str(), 0600), 0);
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder_.c_str(), 0777), 0);
  EXPECT_TRUE(AsNobody([&] { return Save(path, "s", Pattern(20)) == S_OK; }));
  EXPECT_EQ(StreamOf(path, "s"), Pattern(20));
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

// A file system of 1 MiB, for the time of the test.
class CompoundFullDisk : public CompoundCommit {
 protected:
  void SetUp() override {
    StorageTest::SetUp();
    mounted_ = mount("none", folder_.c_str(), "tmpfs", 0, "size=1m") == 0;
    if (!mounted_) GTEST_SKIP() << "NOT TESTED: no right to mount a small file system for a full disk";
  }

  void TearDown() override {
    if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
    StorageTest::TearDown();
  }

  bool mounted_ = false;
};

TEST_F(CompoundFullDisk, StreamTooLarge_FailsTheWriteAndKeepsTheOldFile) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  const Bytes before = ReadFile(path);
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(2u << 20)), platform::kStgMediumFull);
  EXPECT_EQ(file.Commit(), platform::kStgMediumFull);
  EXPECT_EQ(file.Put("s", Pattern(1)), platform::kStgMediumFull);
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
  file.Release();
  EXPECT_TRUE(ReadFile(path) == before);
}

// The new stream is small, but beside it the rest of the file has to be written anew.
TEST_F(CompoundFullDisk, RoomForTheStreamButNotForTheFile_FailsTheWrite) {
  const std::string path = Make("file", {{"kept", Pattern(600000)}, {"s", Pattern(10)}});
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(20)), platform::kStgMediumFull);
  file.Release();
  EXPECT_EQ(StreamOf(path, "s"), Pattern(10));
  EXPECT_TRUE(StreamOf(path, "kept") == Pattern(600000));
}

TEST_F(CompoundFullDisk, SecondPieceTooLarge_FailsItsOwnWrite) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  platform::Stream* stream = nullptr;
  ASSERT_EQ(platform::StorageCreateStream(file.storage, u"s", platform::kModeExclusive, &stream), S_OK);
  EXPECT_EQ(platform::StreamWrite(stream, Pattern(100).data(), 100, nullptr), S_OK);
  const Bytes large = Pattern(2u << 20);
  EXPECT_EQ(platform::StreamWrite(stream, large.data(), static_cast<uint32_t>(large.size()), nullptr),
            platform::kStgMediumFull);
  platform::StreamRelease(stream);
}

TEST_F(CompoundFullDisk, NoRoomForTheNameOfANewFile_IsToldByTheWriteToo) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(mount(nullptr, folder_.c_str(), nullptr, MS_REMOUNT, "size=1m,nr_inodes=2"), 0);
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  EXPECT_EQ(file.Destroy("s"), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(20)), platform::kStgMediumFull);
  file.Release();
  EXPECT_EQ(StreamOf(path, "s"), Pattern(10));
}

TEST_F(CompoundFullDisk, NewFileTooLarge_IsNotMade) {
  OpenFile file;
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  EXPECT_EQ(file.Put("s", Pattern(2u << 20)), platform::kStgMediumFull);
  EXPECT_EQ(file.Commit(), platform::kStgMediumFull);
  file.Release();
  EXPECT_TRUE(Listing().empty());
}

TEST_F(CompoundFullDisk, FileSystemThatIsReadOnly_IsRefused) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(mount(nullptr, folder_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  OpenFile file;
  EXPECT_EQ(file.Open(path), platform::kStgAccessDenied);
  EXPECT_EQ(file.Create(Path("new")), platform::kStgAccessDenied);
}

// Once the write has succeeded the commit does, though others have taken the rest of the disk.
TEST_F(CompoundFullDisk, DiskFilledAfterTheWrite_DoesNotHinderTheCommit) {
  const std::string path = Make("file", {{"kept", Pattern(100000)}, {"s", Pattern(10)}});
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  ASSERT_EQ(file.Put("s", Pattern(200000)), S_OK);
  const int hog = open(Path("hog").c_str(), O_WRONLY | O_CREAT, 0600);
  const Bytes block(4096, 1);
  while (write(hog, block.data(), block.size()) > 0) {
  }
  close(hog);
  EXPECT_EQ(file.Commit(), S_OK);
  file.Release();
  EXPECT_TRUE(StreamOf(path, "s") == Pattern(200000));
  EXPECT_TRUE(StreamOf(path, "kept") == Pattern(100000));
}

// Streams of every size up to more than fits: each is either refused by its write, or there after the commit.
TEST_F(CompoundFullDisk, AnySizeAroundTheLimit_IsRefusedByTheWriteOrCommitted) {
  int refused = 0;
  for (size_t size = 300000; size < 800000; size += 9973) {
    OpenFile file;
    ASSERT_EQ(file.Create(Path("file"), platform::kModeReplace), S_OK);
    const HRESULT written = file.Put("s", Pattern(size));
    EXPECT_EQ(file.Commit(), written) << size;
    file.Release();
    if (written != S_OK) ++refused;
    if (written == S_OK) {
      EXPECT_TRUE(StreamOf(Path("file"), "s") == Pattern(size)) << size;
    }
  }
  EXPECT_GT(refused, 0);
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
}

// What round `round` saves: its number over and over, at a size of its own.
Bytes RoundBytes(uint32_t round) {
  Bytes bytes(4 * (1000 + round % 7 * 9000));
  for (size_t at = 0; at < bytes.size(); at += 4) std::memcpy(&bytes[at], &round, 4);
  return bytes;
}

// Saves round after round until it is killed.
[[noreturn]] void SaveForEver(const std::string& path, uint32_t round) {
  for (;; ++round) {
    if (Save(path, "s", RoundBytes(round)) != S_OK) _exit(1);
  }
}

TEST_F(CompoundCommit, KilledAtAnyInstant_LeavesTheOldFileOrTheNew) {
  const std::string path = Make("file", {{"kept", Pattern(5000)}, {"s", RoundBytes(0)}});
  std::mt19937 random(20240229);
  uint32_t round = 0;
  std::set<uint32_t> seen;
  for (int kills = 0; kills < 200; ++kills) {
    const pid_t child = fork();
    if (child == 0) SaveForEver(path, round + 1);
    usleep(static_cast<useconds_t>(random() % 10000));
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child failed to save";
    const Bytes bytes = StreamOf(path, "s");
    ASSERT_GE(bytes.size(), 4u);
    std::memcpy(&round, bytes.data(), 4);
    ASSERT_TRUE(bytes == RoundBytes(round)) << round;
    ASSERT_EQ(Listing(), std::vector<std::string>({"file"}));
    seen.insert(round);
  }
  EXPECT_EQ(StreamOf(path, "kept"), Pattern(5000));
  EXPECT_GT(seen.size(), 10u);
  CheckCompound(ReadFile(path));
}

TEST_F(CompoundCommit, CreationKilledAtAnyInstant_LeavesNoFileOrAWholeOne) {
  std::mt19937 random(20240301);
  int made = 0;
  for (int kills = 0; kills < 100; ++kills) {
    const pid_t child = fork();
    if (child == 0) {
      OpenFile file;
      if (file.Create(Path("file")) != S_OK || file.Put("s", RoundBytes(6)) != S_OK || file.Commit() != S_OK)
        _exit(1);
      file.Release();
      for (;;) pause();
    }
    usleep(static_cast<useconds_t>(random() % 10000));
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child failed to create";
    if (!fs::exists(Path("file"))) continue;
    ++made;
    ASSERT_TRUE(StreamOf(Path("file"), "s") == RoundBytes(6));
    ASSERT_EQ(Listing(), std::vector<std::string>({"file"}));
    fs::remove(Path("file"));
  }
  EXPECT_GT(made, 0);
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
