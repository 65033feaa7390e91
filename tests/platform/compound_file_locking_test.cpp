// Who may have a file or a stream open, and what becomes of those who lose it.
#if !defined(_WIN32)

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "platform/portable/file_io.h"
#include "platform/storage.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

using platform::Stream;

class CompoundLocking : public StorageTest {
 protected:
  static Stream* OpenStream(OpenFile* file, const char16_t* name) {
    Stream* stream = nullptr;
    EXPECT_EQ(platform::StorageOpenStream(file->storage, name, platform::kModeExclusive, &stream), S_OK);
    return stream;
  }
};

TEST_F(CompoundLocking, SecondOpen_InThisProcess_IsRefusedUntilTheRelease) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  OpenFile first;
  OpenFile second;
  ASSERT_EQ(first.Open(path), S_OK);
  EXPECT_EQ(second.Open(path), platform::kStgShareViolation);
  EXPECT_EQ(second.storage, nullptr);
  EXPECT_EQ(second.Create(path, platform::kModeReplace), platform::kStgShareViolation);
  first.Release();
  EXPECT_EQ(second.Open(path), S_OK);
}

TEST_F(CompoundLocking, SecondOpen_AfterACommit_IsStillRefused) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  OpenFile first;
  OpenFile second;
  ASSERT_EQ(first.Open(path), S_OK);
  EXPECT_EQ(first.Put("s", Pattern(20)), S_OK);
  EXPECT_EQ(first.Commit(), S_OK);
  EXPECT_EQ(second.Open(path), platform::kStgShareViolation);
}

TEST_F(CompoundLocking, SecondOpen_BySymbolicOrHardLink_IsRefused) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  std::filesystem::create_symlink("file", Path("symbolic"));
  std::filesystem::create_hard_link(path, Path("hard"));
  OpenFile first;
  OpenFile second;
  ASSERT_EQ(first.Open(path), S_OK);
  EXPECT_EQ(second.Open(Path("symbolic")), platform::kStgShareViolation);
  EXPECT_EQ(second.Open(Path("hard")), platform::kStgShareViolation);
}

TEST_F(CompoundLocking, NewFile_IsClaimedFromItsCreationOn) {
  OpenFile first;
  OpenFile second;
  ASSERT_EQ(first.Create(Path("file")), S_OK);
  EXPECT_EQ(second.Create(Path("file")), platform::kStgShareViolation);
  EXPECT_EQ(second.Create(Path("file"), platform::kModeReplace), platform::kStgShareViolation);
  EXPECT_EQ(second.Open(Path("file")), platform::kStgFileNotFound);
  first.Release();
  EXPECT_EQ(second.Create(Path("file")), S_OK);
}

// A child opens the file and stays; its end, even a violent one, frees the file.
TEST_F(CompoundLocking, OpenInAnotherProcess_RefusesUntilThatProcessIsGone) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    OpenFile file;
    const char told = file.Open(path) == S_OK && file.Put("s", Pattern(500)) == S_OK ? 'y' : 'n';
    if (write(ready[1], &told, 1) != 1) _exit(1);
    for (;;) pause();
  }
  char told = 0;
  ASSERT_EQ(read(ready[0], &told, 1), 1);
  ASSERT_EQ(told, 'y');
  OpenFile file;
  EXPECT_EQ(file.Open(path), platform::kStgShareViolation);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(file.Open(path), S_OK);
  file.Release();
  EXPECT_EQ(StreamOf(path, "s"), Pattern(10));
  EXPECT_EQ(Listing(), std::vector<std::string>({"file"}));
  close(ready[0]);
  close(ready[1]);
}

// An office program has the file open: it holds a record lock, which no lock of a whole file meets.
TEST_F(CompoundLocking, RecordLockOfAnotherProcess_RefusesUntilItIsGone) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const int held = open(path.c_str(), O_RDWR);
    const char told = held >= 0 && lockf(held, F_LOCK, 0) == 0 ? 'y' : 'n';
    if (write(ready[1], &told, 1) != 1) _exit(1);
    for (;;) pause();
  }
  char told = 0;
  ASSERT_EQ(read(ready[0], &told, 1), 1);
  ASSERT_EQ(told, 'y');
  OpenFile file;
  EXPECT_EQ(file.Open(path), platform::kStgShareViolation);
  EXPECT_EQ(file.Create(path, platform::kModeReplace), platform::kStgShareViolation);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(file.Open(path), S_OK);
  close(ready[0]);
  close(ready[1]);
}

// Adds 1 to a number in the file, waiting for its turn by trying again.
bool CountOne(const std::string& path) {
  for (int attempt = 0; attempt < 10000000; ++attempt) {
    OpenFile file;
    const HRESULT opened = file.Open(path);
    if (opened == platform::kStgShareViolation) continue;
    Bytes bytes;
    if (opened != S_OK || file.Get("count", &bytes) != S_OK || bytes.size() != 4) return false;
    uint32_t count;
    std::memcpy(&count, bytes.data(), 4);
    ++count;
    std::memcpy(bytes.data(), &count, 4);
    return file.Put("count", bytes) == S_OK && file.Commit() == S_OK;
  }
  return false;
}

// In memory, where a commit takes so little time that the instant to be hit is a good part of it.
class CompoundCounting : public StorageTest {
 protected:
  CompoundCounting() : StorageTest("/dev/shm") {}
};

// Every commit gives the name to another file. Were there an instant at which two processes could both hold
// it, one would overwrite what the other had counted.
TEST_F(CompoundCounting, ThreeProcessesCounting_LoseNoCount) {
  const std::string path = Make("file", {{"count", Bytes(4, 0)}});
  constexpr uint32_t kRounds = 1500;
  std::vector<pid_t> children;
  for (int i = 0; i < 3; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      for (uint32_t round = 0; round < kRounds; ++round) {
        if (!CountOne(path)) _exit(1);
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const Bytes bytes = StreamOf(path, "count");
  ASSERT_EQ(bytes.size(), 4u);
  EXPECT_EQ(bytes[0] + 256 * bytes[1], 3 * static_cast<int>(kRounds));
}

TEST_F(CompoundLocking, OneOfManyCreators_GetsTheName) {
  std::vector<pid_t> children;
  for (int i = 0; i < 8; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      OpenFile file;
      if (file.Create(Path("file")) != S_OK) _exit(2);
      _exit(file.Put("s", Pattern(5000, static_cast<uint32_t>(i))) == S_OK && file.Commit() == S_OK ? 0 : 1);
    }
    children.push_back(child);
  }
  int made = 0;
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), 1) << "a claimed name was lost";
    made += WEXITSTATUS(status) == 0;
  }
  EXPECT_EQ(made, 1);
  EXPECT_EQ(StreamOf(Path("file"), "s").size(), 5000u);
}

TEST_F(CompoundLocking, SecondStreamOfOneName_IsRefusedUntilTheRelease) {
  OpenFile file;
  ASSERT_EQ(file.Open(Make("file", {{"s", Pattern(10)}})), S_OK);
  Stream* first = OpenStream(&file, u"s");
  Stream* second = nullptr;
  EXPECT_EQ(platform::StorageOpenStream(file.storage, u"S", platform::kModeExclusive, &second),
            platform::kStgAccessDenied);
  EXPECT_EQ(platform::StorageCreateStream(file.storage, u"S", platform::kModeReplace, &second),
            platform::kStgAccessDenied);
  EXPECT_EQ(second, nullptr);
  platform::StreamRelease(first);
  EXPECT_EQ(platform::StorageOpenStream(file.storage, u"S", platform::kModeExclusive, &second), S_OK);
  platform::StreamRelease(second);
}

TEST_F(CompoundLocking, StreamOfADestroyedElement_IsReverted) {
  OpenFile file;
  ASSERT_EQ(file.Open(Make("file", {{"s", Pattern(10)}, {"t", Pattern(20)}})), S_OK);
  Stream* gone = OpenStream(&file, u"s");
  Stream* kept = OpenStream(&file, u"t");
  ASSERT_EQ(file.Destroy("s"), S_OK);
  ASSERT_EQ(file.Put("fresh", Pattern(30)), S_OK);  // takes the destroyed one's place
  uint8_t byte = 0;
  uint64_t size = 0;
  EXPECT_EQ(platform::StreamRead(gone, &byte, 1, nullptr), platform::kStgReverted);
  EXPECT_EQ(platform::StreamWrite(gone, &byte, 1, nullptr), platform::kStgReverted);
  EXPECT_EQ(platform::StreamSize(gone, &size), platform::kStgReverted);
  EXPECT_EQ(platform::StreamCommit(gone, 0), platform::kStgReverted);
  EXPECT_EQ(platform::StreamSize(kept, &size), S_OK);
  EXPECT_EQ(size, 20u);
  platform::StreamRelease(gone);
  platform::StreamRelease(kept);
}

TEST_F(CompoundLocking, StreamThatOutlivesItsStorage_IsRevertedAndFreesTheFile) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  OpenFile file;
  ASSERT_EQ(file.Open(path), S_OK);
  Stream* stream = OpenStream(&file, u"s");
  file.Release();
  uint8_t byte = 0;
  EXPECT_EQ(platform::StreamRead(stream, &byte, 1, nullptr), platform::kStgReverted);
  EXPECT_EQ(file.Open(path), S_OK);
  platform::StreamRelease(stream);
}

TEST_F(CompoundLocking, MissingFilesAndFolders_AreToldApart) {
  OpenFile file;
  EXPECT_EQ(file.Open(Path("nothing")), platform::kStgFileNotFound);
  EXPECT_EQ(file.Open(Path("no/thing")), platform::kStgPathNotFound);
  EXPECT_EQ(file.Open(""), platform::kStgPathNotFound);
  EXPECT_EQ(file.Open("/a file that is not there"), platform::kStgFileNotFound);
  EXPECT_EQ(file.Create(Path("no/thing")), platform::kStgPathNotFound);
  WriteFile(Path("plain"), {});
  EXPECT_EQ(file.Create(Path("plain/thing")), platform::kStgPathNotFound);
  EXPECT_EQ(file.Create(Path("plain")), platform::kStgFileAlreadyExists);
}

TEST_F(CompoundLocking, WhatIsNoRegularFile_IsRefusedWithoutWaiting) {
  OpenFile file;
  EXPECT_EQ(file.Open(folder_.string()), platform::kStgAccessDenied);
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(file.Open(Path("pipe")), platform::kStgAccessDenied);
  EXPECT_EQ(file.Create(Path("pipe"), platform::kModeReplace), platform::kStgAccessDenied);
  EXPECT_EQ(file.Open("/dev/null"), platform::kStgAccessDenied);
}

// Goes on as a user without privileges, where the test runs as root, until it is destroyed.
class Unprivileged {
 public:
  Unprivileged() : was_(geteuid()) { changed_ = was_ != 0 || seteuid(65534) == 0; }
  ~Unprivileged() { static_cast<void>(seteuid(was_)); }
  bool Changed() const { return changed_; }

 private:
  uid_t was_;
  bool changed_;
};

TEST_F(CompoundLocking, FileThatTheUserMayNotWrite_IsRefused) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(chmod(folder_.c_str(), 0777), 0);
  const Unprivileged user;
  if (!user.Changed()) GTEST_SKIP() << "NOT TESTED: root can't become another user here";
  OpenFile file;
  for (const mode_t mode : {mode_t{0444}, mode_t{0666}}) {
    SCOPED_TRACE(mode);
    static_cast<void>(seteuid(0));
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    static_cast<void>(seteuid(65534));
    EXPECT_EQ(file.Open(path), mode == 0444 ? platform::kStgAccessDenied : S_OK);
  }
}

TEST_F(CompoundLocking, FileWithoutAnyRightToWrite_IsTheSystemsToRefuse) {
  const std::string path = Make("file", {{"s", Pattern(10)}});
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  OpenFile file;
  EXPECT_EQ(file.Open(path), geteuid() == 0 ? S_OK : platform::kStgAccessDenied);
}

TEST_F(CompoundLocking, NullArguments_AreRefused) {
  OpenFile file;
  platform::Storage* storage = nullptr;
  EXPECT_EQ(platform::StorageOpen(nullptr, platform::kModeExclusive, &storage), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StorageOpen(u"x", platform::kModeExclusive, nullptr), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StorageCreate(nullptr, platform::kModeExclusive, &storage),
            platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StorageCommit(nullptr, 0), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StorageDestroyElement(nullptr, u"x"), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StreamRead(nullptr, nullptr, 0, nullptr), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StreamSize(nullptr, nullptr), platform::kStgInvalidPointer);
  platform::StorageRelease(nullptr);
  platform::StreamRelease(nullptr);
  ASSERT_EQ(file.Create(Path("file")), S_OK);
  Stream* stream = nullptr;
  EXPECT_EQ(platform::StorageOpenStream(file.storage, nullptr, 0x12, &stream), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StorageCreateStream(file.storage, u"s", 0x12, nullptr), platform::kStgInvalidPointer);
  ASSERT_EQ(platform::StorageCreateStream(file.storage, u"s", 0x12, &stream), S_OK);
  EXPECT_EQ(platform::StreamWrite(stream, nullptr, 1, nullptr), platform::kStgInvalidPointer);
  EXPECT_EQ(platform::StreamRead(stream, nullptr, 1, nullptr), platform::kStgInvalidPointer);
  platform::StreamRelease(stream);
}

TEST_F(CompoundLocking, PathWithAUnitWhoseLowByteIsZero_NamesNoFile) {
  platform::Storage* storage = reinterpret_cast<platform::Storage*>(this);
  EXPECT_EQ(platform::StorageOpen(u"a\u0100b", platform::kModeExclusive, &storage),
            platform::kStgInvalidName);
  EXPECT_EQ(storage, nullptr);
  EXPECT_EQ(platform::StorageCreate(u"a\u0100b", platform::kModeReplace, &storage),
            platform::kStgInvalidName);
}

TEST(FileIo, EverySystemErrorHasItsResult) {
  const struct {
    int error;
    HRESULT result;
  } kRows[] = {{ENOENT, platform::kStgFileNotFound},       {ENOTDIR, platform::kStgPathNotFound},
               {ELOOP, platform::kStgPathNotFound},        {ENAMETOOLONG, platform::kStgPathNotFound},
               {EACCES, platform::kStgAccessDenied},       {EPERM, platform::kStgAccessDenied},
               {EROFS, platform::kStgAccessDenied},        {EISDIR, platform::kStgAccessDenied},
               {EBUSY, platform::kStgAccessDenied},        {ETXTBSY, platform::kStgAccessDenied},
               {EEXIST, platform::kStgFileAlreadyExists},  {ENOSPC, platform::kStgMediumFull},
               {EDQUOT, platform::kStgMediumFull},         {EFBIG, platform::kStgMediumFull},
               {ENOMEM, platform::kStgInsufficientMemory}, {EMFILE, platform::kStgInsufficientMemory},
               {ENFILE, platform::kStgInsufficientMemory}, {EIO, platform::kStgWriteFault}};
  for (const auto& row : kRows) {
    EXPECT_EQ(platform::ResultOfError(row.error, platform::kStgWriteFault), row.result) << row.error;
  }
}

TEST_F(CompoundLocking, PathOfWidenedBytes_ArrivesAsItWas) {
  const std::string name = "\xC3\xA4\xE2\x82\xAC.xls";
  Make(name, {{"s", Pattern(10)}});
  EXPECT_EQ(Listing(), std::vector<std::string>({name}));
  EXPECT_EQ(StreamOf(Path(name), "s"), Pattern(10));
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
