// tolvenar-newref FILE: makes an empty ReferenceFile, the first one that a host needs before XLCreateReference. A file that exists is left
// alone. Exit status 0; 1 the file exists or can't be written; 2 wrong use; --help says what is right.
//
//   SECTOR  CONTENT                                 The file is a compound file of version 3 with sectors of 512 bytes; sector 0
//        -  header                                  follows the header. "Contents" has 24 bytes, and a stream that small lies in
//        0  sector table                            the mini stream, in one mini sector of 64 bytes.
//        1  directory: root, "Contents"
//        2  mini sector table
//        3  mini stream
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kSector = 512;
constexpr size_t kSectors = 4;
constexpr uint32_t kChainEnd = 0xFFFFFFFE;
constexpr uint32_t kTableSector = 0xFFFFFFFD;
constexpr uint8_t kFree = 0xFF;
constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr uint32_t kMiniSector = 64;
constexpr size_t kEntry = 128;

using File = std::array<uint8_t, (kSectors + 1) * kSector>;

// The directory without an id: two headers with a count of 0, and the end.
constexpr uint8_t kContents[] = {0xFF, 0x10, 4, 0, 0,    0,    0, 0, 0xFF, 0x10, 4, 0,
                                 0,    0,    0, 0, 0xFE, 0x10, 4, 0, 0,    0,    0, 0};

uint8_t* Sector(File* file, size_t number) {
  return file->data() + (number + 1) * kSector;
}

void Put(uint8_t* at, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

void PutHeader(uint8_t* at) {
  constexpr uint8_t kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
  std::memcpy(at, kSignature, sizeof kSignature);
  Put(at + 24, 0x3E, 2);  // versions
  Put(at + 26, 3, 2);
  Put(at + 28, 0xFFFE, 2);  // byte order
  Put(at + 30, 9, 2);       // sectors of 512 bytes
  Put(at + 32, 6, 2);       // mini sectors of 64
  Put(at + 44, 1, 4);       // sectors of the sector table
  Put(at + 48, 1, 4);       // directory
  Put(at + 56, 4096, 4);    // streams below this are in the mini stream
  Put(at + 60, 2, 4);       // mini sector table
  Put(at + 64, 1, 4);
  Put(at + 68, kChainEnd, 4);  // no longer list of table sectors
  std::memset(at + 76, kFree, kSector - 76);
  Put(at + 76, 0, 4);  // the sector table
}

void PutEntry(uint8_t* at, const char* name, uint8_t type, uint32_t child, uint32_t sector, uint32_t size) {
  const size_t length = std::strlen(name);
  for (size_t i = 0; i < length; ++i) at[2 * i] = static_cast<uint8_t>(name[i]);
  Put(at + 64, static_cast<uint32_t>(2 * length + 2), 2);
  at[66] = type;
  at[67] = 1;  // black
  Put(at + 68, kNone, 4);
  Put(at + 72, kNone, 4);
  Put(at + 76, child, 4);
  Put(at + 116, sector, 4);
  Put(at + 120, size, 4);
}

File MakeFile() {
  File file{};
  PutHeader(file.data());
  uint8_t* const table = Sector(&file, 0);
  std::memset(table, kFree, kSector);
  Put(table, kTableSector, 4);
  for (int sector = 1; sector <= 3; ++sector) Put(table + 4 * sector, kChainEnd, 4);
  uint8_t* const directory = Sector(&file, 1);
  PutEntry(directory, "Root Entry", 5, 1, 3, kMiniSector);
  PutEntry(directory + kEntry, "Contents", 2, kNone, 0, sizeof kContents);
  for (size_t unused = 2; unused < kSector / kEntry; ++unused) {
    std::memset(directory + unused * kEntry + 68, kFree, 12);  // without siblings and members
  }
  std::memset(Sector(&file, 2), kFree, kSector);
  Put(Sector(&file, 2), kChainEnd, 4);
  std::memcpy(Sector(&file, 3), kContents, sizeof kContents);
  return file;
}

// Opens a file that isn't there yet. Windows' own C library doesn't know the mode that says so.
std::FILE* OpenNew(const char* path) {
#if defined(_WIN32)
  if (std::FILE* there = std::fopen(path, "rb")) {
    std::fclose(there);
    return nullptr;
  }
  return std::fopen(path, "wb");
#else
  return std::fopen(path, "wbx");
#endif
}

}  // namespace

int main(int argc, char** argv) {
  const bool asks = argc == 2 && std::strcmp(argv[1], "--help") == 0;
  if (argc != 2 || asks) {
    std::fprintf(asks ? stdout : stderr,
                 "usage: tolvenar-newref FILE\n"
                 "Makes FILE, an empty file of references. One that is there already is left alone.\n");
    return asks ? 0 : 2;
  }
  std::FILE* out = OpenNew(argv[1]);
  if (out == nullptr) {
    std::fprintf(stderr, "%s: exists, or can't be made. Name a file that isn't there, in a folder that is.\n",
                 argv[1]);
    return 1;
  }
  const File file = MakeFile();
  const bool written = std::fwrite(file.data(), 1, file.size(), out) == file.size();
  const bool closed = std::fclose(out) == 0;
  if (written && closed) return 0;
  std::perror(argv[1]);
  std::remove(argv[1]);
  return 1;
}
