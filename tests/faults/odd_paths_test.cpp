// Paths that lead to no file that can be had: each file export tells so by its stated code, in time, and nothing changes on the way. And
// paths that look odd and do lead to one.
#if !defined(_WIN32)

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

#include "faults/calls.h"
#include "faults/live_block_table.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "support/workbook_file.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

namespace {

namespace fs = std::filesystem;

const Bytes kReference = {0xFF, 0x10, 4, 0, 8, 0, 0, 0, 0xDA, 0x10, 4, 0, 0, 0, 0, 0,
                          0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};
const Bytes kContents = {0xFF, 0x10, 4, 0, 1,    0,    0, 0, 0xFD, 0x10, 4, 0,
                         1,    0,    0, 0, 0xFE, 0x10, 4, 0, 0,    0,    0, 0};

// A file that serves every call: a workbook and a reference file in one.
void MakeFile(const std::string& path) {
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", TwoSheetBook(kBiff8).Stream()));
  ASSERT_TRUE(AddStream(path, "Contents", kContents));
  ASSERT_TRUE(AddStream(path, "1       ", kReference));
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
}

// The file exports, in the order of the results below.
struct PathCall {
  const char* name;
  bool of_reference;  // the buffer is one
  int32_t (*run)(Ground&, const char*);
};

constexpr PathCall kPathCalls[] = {
    {"XLOpenFile", false,
     [](Ground& g, const char* path) -> int32_t { return ::XLOpenFile(path, &g.position, &g.size); }},
    {"XLSaveFile", false,
     [](Ground& g, const char* path) -> int32_t { return ::XLSaveFile(path, &g.buffer, &g.table, &g.size); }},
    {"DebugSaveFile", false, [](Ground&, const char* path) -> int32_t { return ::DebugSaveFile(path, 9); }},
    {"XLCreateReference", true, [](Ground&, const char* path) { return ::XLCreateReference(path); }},
    {"XLDeleteReference", true,
     [](Ground&, const char* path) -> int32_t { return ::XLDeleteReference(path, 1); }},
    {"XLReadReference", true,
     [](Ground& g, const char* path) -> int32_t { return ::XLReadReference(path, &g.position, &g.size, 1); }},
    {"XLSaveReference", true,
     [](Ground& g, const char* path) -> int32_t { return ::XLSaveReference(path, &g.buffer, &g.size, 1); }},
    {"XLGetReference", false, [](Ground&, const char* path) { return ::XLGetReference(path); }},
};
using Results = std::array<int32_t, std::size(kPathCalls)>;

constexpr Results kCantBeOpened = {101, 101, 102, -3, -3, 101, 101, -2};
constexpr Results kCantBeMade = {101, 111, 102, -3, -3, 101, 101, -2};
constexpr Results kNoPath = {101, 111, 102, -1, -3, 101, 101, -2};
// The file can be read, and nothing can be put beside it.
constexpr Results kCantBeChanged = {0, 102, 102, -20, -24, 0, 103, 0};

// What a row lays on the way, for as long as it lives.
using Obstacle = std::shared_ptr<void>;

struct OddPath {
  const char* label;
  Results results;
  bool unprivileged;  // root is to be somebody else in the call
  std::string path;   // in the folder, unless it is absolute; "(null)" and "(empty)" are what they say
  Obstacle (*lay)(const std::string& path);
};

void PrintTo(const OddPath& row, std::ostream* out) {
  *out << row.label;
}

Obstacle Nothing(const std::string&) {
  return nullptr;
}

Obstacle PlainFile(const std::string& path) {
  PutFile(path, Bytes(3000, 'x'));
  EXPECT_EQ(chmod(path.c_str(), 0666), 0);
  return nullptr;
}

Obstacle FileBelow(const std::string& path) {
  PutFile(path.substr(0, path.rfind('/')), Bytes(10, 'x'));
  return nullptr;
}

Obstacle CompoundWithSlash(const std::string& path) {
  MakeFile(path.substr(0, path.size() - 1));
  return nullptr;
}

Obstacle CutFile(const std::string& path) {
  MakeFile(path);
  fs::resize_file(path, 700);
  return nullptr;
}

Obstacle Folder(const std::string& path) {
  fs::create_directory(path);
  return nullptr;
}

Obstacle LinkTo(const std::string& path, const std::string& target) {
  fs::create_symlink(target, path);
  return nullptr;
}

Obstacle ReadOnlyFile(const std::string& path) {
  MakeFile(path);
  EXPECT_EQ(chmod(path.c_str(), 0444), 0);
  return nullptr;
}

// Gives a folder its rights back.
Obstacle CloseFolder(const std::string& folder) {
  EXPECT_EQ(chmod(folder.c_str(), 0555), 0);
  return {nullptr, [folder](void*) { EXPECT_EQ(chmod(folder.c_str(), 0755), 0); }};
}

Obstacle ReadOnlyFolder(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/'));
  fs::create_directory(folder);
  return CloseFolder(folder);
}

Obstacle FileInReadOnlyFolder(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/'));
  fs::create_directory(folder);
  MakeFile(path);
  return CloseFolder(folder);
}

// Another process that has the file locked, until it is killed.
Obstacle HeldBy(const std::string& path, bool (*lock)(int)) {
  MakeFile(path);
  int ready[2];
  EXPECT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const int file = open(path.c_str(), O_RDWR);
    const char told = file >= 0 && lock(file) ? 'y' : 'n';
    if (write(ready[1], &told, 1) != 1) _exit(1);
    for (;;) pause();
  }
  char told = 0;
  EXPECT_EQ(read(ready[0], &told, 1), 1);
  EXPECT_EQ(told, 'y');
  close(ready[0]);
  close(ready[1]);
  return {nullptr, [child](void*) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
          }};
}

Obstacle LockedFile(const std::string& path) {
  return HeldBy(path, [](int file) { return flock(file, LOCK_EX) == 0; });
}
Obstacle SharedLockedFile(const std::string& path) {
  return HeldBy(path, [](int file) { return flock(file, LOCK_SH) == 0; });
}
Obstacle RecordLockedFile(const std::string& path) {
  return HeldBy(path, [](int file) { return lockf(file, F_LOCK, 0) == 0; });
}

Obstacle Pipe(const std::string& path) {
  EXPECT_EQ(mkfifo(path.c_str(), 0666), 0);
  return nullptr;
}

std::vector<OddPath> OddPaths() {
  const std::string long_path = [] {
    std::string path;
    for (int i = 0; i < 1000; ++i) path += "x/../";
    return path + "file";
  }();
  return {
      {"NullPath", kNoPath, false, "(null)", Nothing},
      {"EmptyPath", kCantBeMade, false, "(empty)", Nothing},
      {"Directory", kCantBeOpened, false, "file", Folder},
      {"DirectoryWithSlash", kCantBeOpened, false, "file/",
       [](const std::string& path) { return Folder(path); }},
      {"RootDirectory", kCantBeOpened, false, "/", Nothing},
      {"MissingFolder", kCantBeMade, false, "none/file", Nothing},
      {"FileAsAFolder", kCantBeMade, false, "plain/file", FileBelow},
      {"FileWithSlash", kCantBeMade, false, "file/", CompoundWithSlash},
      {"MissingFileWithSlash", kCantBeMade, false, "none/", Nothing},
      {"NameTooLong", kCantBeMade, false, std::string(256, 'n'), Nothing},
      {"PathTooLong", kCantBeMade, false, long_path, Nothing},
      {"NoCompoundFile", kCantBeOpened, false, "file", PlainFile},
      {"EmptyFile", kCantBeOpened, false, "file",
       [](const std::string& path) { return PutFile(path, {}), Obstacle(); }},
      {"CutFile", kCantBeOpened, false, "file", CutFile},
      {"LinkToItself", kCantBeMade, false, "link",
       [](const std::string& path) { return LinkTo(path, "link"); }},
      {"LinkToAMissingFolder", kCantBeMade, false, "link",
       [](const std::string& path) { return LinkTo(path, "none/file"); }},
      {"LinkToADirectory", kCantBeOpened, false, "link",
       [](const std::string& path) { return LinkTo(path, "."); }},
      {"LinkToADevice", kCantBeOpened, false, "link",
       [](const std::string& path) { return LinkTo(path, "/dev/full"); }},
      {"Pipe", kCantBeOpened, false, "pipe", Pipe},
      {"NullDevice", kCantBeOpened, false, "/dev/null", Nothing},
      {"EndlessDevice", kCantBeOpened, false, "/dev/zero", Nothing},
      {"ReadOnlyFile", kCantBeOpened, true, "file", ReadOnlyFile},
      {"NewFileInAReadOnlyFolder", kCantBeMade, true, "closed/file", ReadOnlyFolder},
      {"FileInAReadOnlyFolder", kCantBeChanged, true, "closed/file", FileInReadOnlyFolder},
      {"FileLockedElsewhere", kCantBeOpened, false, "file", LockedFile},
      {"FileLockedForReadingElsewhere", kCantBeOpened, false, "file", SharedLockedFile},
      {"FileWithARecordLockedElsewhere", kCantBeOpened, false, "file", RecordLockedFile},
  };
}

// Goes on as a user without privileges, where the test runs as root, until it is destroyed.
class Unprivileged {
 public:
  explicit Unprivileged(bool wanted) : was_(geteuid()) {
    const bool changed = !wanted || was_ != 0 || seteuid(65534) == 0;
    EXPECT_TRUE(changed) << "root can't become another user here";
  }
  ~Unprivileged() { EXPECT_EQ(seteuid(was_), 0); }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  uid_t was_;
};

// Names, and the bytes of files and the ends of links; when a file was changed last as well.
std::map<std::string, std::pair<Bytes, fs::file_time_type>> Everything(const std::string& folder) {
  std::map<std::string, std::pair<Bytes, fs::file_time_type>> found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    auto& [bytes, time] = found[entry.path().string()];
    if (entry.is_symlink()) {
      const std::string target = fs::read_symlink(entry.path()).string();
      bytes.assign(target.begin(), target.end());
    } else {
      if (entry.is_regular_file()) bytes = FileBytes(entry.path().string());
      time = entry.last_write_time();
    }
  }
  return found;
}

void Prepare(Ground* ground, bool of_reference) {
  OpenStream(*ground, TwoSheetBook(kBiff8, 300), kBiff8);
  if (!of_reference) return;
  MEMORYFREE(&ground->buffer);
  MEMORYFREE(&ground->table);
  ground->buffer = StreamBuilder().Raw(kReference).Load(&ground->size);
}

// Runs the call and returns what it says. No more blocks stay live than are stated.
int32_t RunOn(const PathCall& call, Ground* ground, const char* path) {
  const int32_t result = call.run(*ground, path);
  for (uint32_t* held : {&ground->buffer, &ground->table, &ground->position}) MEMORYFREE(held);
  const int lost = static_cast<int>(MEMORYHANDLES(nullptr, 0));
  EXPECT_TRUE(MayStay(call.name, result, lost)) << "after " << result << ", " << lost << " blocks stay live";
  return result;
}

class OddPathTest : public ::testing::TestWithParam<OddPath> {};

TEST_P(OddPathTest, IsToldByTheStatedCodeAndNothingChanges) {
  const OddPath& row = GetParam();
  MayStay("", 0, 1);  // reads the table now: another user may not get at the sources
  for (size_t i = 0; i < std::size(kPathCalls); ++i) {
    SCOPED_TRACE(kPathCalls[i].name);
    Ground ground;
    const std::string folder = fs::path(ground.Path()).parent_path().string();
    const std::string path = row.path[0] == '('   ? ""
                             : row.path[0] == '/' ? row.path
                                                  : folder + "/" + row.path;
    const Obstacle obstacle = row.lay(path);
    const auto before = Everything(folder);
    Prepare(&ground, kPathCalls[i].of_reference);
    {
      const Unprivileged user(row.unprivileged);
      EXPECT_EQ(RunOn(kPathCalls[i], &ground, row.path == "(null)" ? nullptr : path.c_str()), row.results[i]);
    }
    EXPECT_TRUE(Everything(folder) == before) << "something has changed";
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, OddPathTest, ::testing::ValuesIn(OddPaths()),
                         [](const auto& row) { return std::string(row.param.label); });

// Odd, and good. `target` is where the file is then.
struct GoodRow {
  const char* label;
  const char* path;
  const char* target;
  Obstacle (*lay)(const std::string& path);
};

void PrintTo(const GoodRow& row, std::ostream* out) {
  *out << row.label;
}

Obstacle LinkInAFolder(const std::string& path) {
  fs::create_directory(path.substr(0, path.rfind('/')) + "/elsewhere");
  return LinkTo(path, "elsewhere/file");
}

class GoodPathTest : public ::testing::TestWithParam<GoodRow> {};

TEST_P(GoodPathTest, LeadsToTheFileAndStaysWhatItIs) {
  constexpr Results kDone = {0, 0, 0, 2, 0, 0, 0, 0};
  for (size_t i = 0; i < std::size(kPathCalls); ++i) {
    SCOPED_TRACE(kPathCalls[i].name);
    Ground ground;
    const std::string folder = fs::path(ground.Path()).parent_path().string() + "/";
    const std::string path = folder + GetParam().path;
    const Obstacle obstacle = GetParam().lay(path);
    MakeFile(folder + GetParam().target);
    const auto before = Everything(folder);
    Prepare(&ground, kPathCalls[i].of_reference);
    EXPECT_EQ(RunOn(kPathCalls[i], &ground, path.c_str()), kDone[i]);
    const auto after = Everything(folder);
    EXPECT_EQ(after.size(), before.size()) << "something has come up";
    EXPECT_TRUE(after.count(folder + GetParam().target));
    EXPECT_EQ(fs::is_symlink(path), std::string(GetParam().path) != GetParam().target);
    EXPECT_TRUE(ReadStream(path, "Contents").has_value());
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, GoodPathTest,
                         ::testing::Values(GoodRow{"Utf8",
                                                   "Gr\xC3\xB6\xC3\x9F"
                                                   "e \xE8\xA1\xA8 \xF0\x9F\x93\x8A.xls",
                                                   "Gr\xC3\xB6\xC3\x9F"
                                                   "e \xE8\xA1\xA8 \xF0\x9F\x93\x8A.xls",
                                                   Nothing},
                                           GoodRow{"NoUtf8", "\xFF\xFE\x80", "\xFF\xFE\x80", Nothing},
                                           GoodRow{"Blanks", " a\tb\n", " a\tb\n", Nothing},
                                           GoodRow{"LinkToAFile", "link", "elsewhere/file", LinkInAFolder},
                                           GoodRow{"Dots", "...", "...", Nothing}),
                         [](const auto& row) { return std::string(row.param.label); });

TEST(GoodPath, NewWorkbookByALinkToNothing_IsMadeWhereTheLinkLeads) {
  Ground ground;
  const std::string folder = fs::path(ground.Path()).parent_path().string();
  LinkInAFolder(ground.Path());
  Prepare(&ground, false);
  EXPECT_EQ(::XLSaveFile(ground.Path().c_str(), &ground.buffer, &ground.table, &ground.size), 0);
  EXPECT_TRUE(fs::is_symlink(ground.Path()));
  EXPECT_TRUE(fs::is_regular_file(folder + "/elsewhere/file"));
  EXPECT_EQ(Everything(folder).size(), 3u);
}

TEST(GoodPath, RootMayWriteWhatNobodyMay) {
  if (geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root has that right";
  Ground ground;
  ReadOnlyFile(ground.Path());
  Prepare(&ground, false);
  EXPECT_EQ(::XLSaveFile(ground.Path().c_str(), &ground.buffer, &ground.table, &ground.size), 0);
  EXPECT_EQ(ground.folder.Count(), 1u);
  EXPECT_EQ(static_cast<int>(fs::status(ground.Path()).permissions()), 0444);
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
