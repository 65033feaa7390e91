// The compound file on disk: where its fields lie and what its marks mean. All integers are little-endian.
//
//   A file is a header and sectors of one size, 512 bytes (version 3) or 4096 (version 4). Sector n begins at
//   (n + 1) sectors from the start of the file: the header takes a whole sector, in version 4 filled up with
//   zeros.
//
//   HEADER
//   OFFSET  SIZE  FIELD                                OFFSET  SIZE  FIELD
//        0     8  signature D0 CF 11 E0 A1 B1 1A E1        44     4  sector-table sectors
//        8    16  class id, zero                           48     4  first sector of the directory
//       24     2  minor version, 3E                        52     4  transaction signature
//       26     2  major version, 3 or 4                    56     4  mini stream cutoff, 4096
//       28     2  byte order, FFFE                         60     4  first sector of the mini sector table
//       30     2  sector shift, 9 or 12                    64     4  mini-table sectors
//       32     2  mini sector shift, 6                     68     4  first sector of the long list
//       34     6  zero                                     72     4  long-list sectors
//       40     4  directory sectors (version 4 only)       76   436  first 109 sectors of the sector table
//
//   DIRECTORY ENTRY, 128 bytes
//   OFFSET  SIZE  FIELD                                OFFSET  SIZE  FIELD
//        0    64  name, UTF-16, zero-terminated            80    16  class id
//       64     2  bytes of the name, terminator too        96     4  state bits
//       66     1  0 unused, 1 storage, 2 stream, 5 root   100     8  time of creation
//       67     1  colour: 0 red, 1 black                  108     8  time of the last change
//       68     4  left sibling                            116     4  first sector (root: of the mini stream)
//       72     4  right sibling                           120     8  size in bytes (version 3: the low 4
//       76     4  child: top of its members' tree                    bytes count)
//
//   The sector table holds one u32 per sector: the next sector of the same chain, or one of the marks below.
//   Its own sectors are listed in the header and, beyond 109, in the long list: sectors of u32s whose last
//   entry names the next such sector. Streams below the cutoff lie in the mini stream, in mini sectors of 64
//   bytes chained by the mini sector table.
#pragma once

#include <cstdint>

namespace tolvenar::platform {

constexpr uint8_t kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

constexpr uint32_t kHeaderMinor = 24;
constexpr uint32_t kHeaderMajor = 26;
constexpr uint32_t kHeaderByteOrder = 28;
constexpr uint32_t kHeaderSectorShift = 30;
constexpr uint32_t kHeaderMiniShift = 32;
constexpr uint32_t kHeaderDirectorySectors = 40;
constexpr uint32_t kHeaderTableSectors = 44;
constexpr uint32_t kHeaderFirstDirectory = 48;
constexpr uint32_t kHeaderCutoff = 56;
constexpr uint32_t kHeaderFirstMiniTable = 60;
constexpr uint32_t kHeaderMiniTableSectors = 64;
constexpr uint32_t kHeaderFirstLongList = 68;
constexpr uint32_t kHeaderLongListSectors = 72;
constexpr uint32_t kHeaderList = 76;
constexpr uint32_t kHeaderListEntries = 109;
constexpr uint32_t kFileHeaderSize = kHeaderList + 4 * kHeaderListEntries;
static_assert(kFileHeaderSize == 512);

constexpr uint16_t kMinorVersion = 0x003E;
constexpr uint16_t kByteOrder = 0xFFFE;
constexpr uint32_t kSmallSectorShift = 9;   // version 3
constexpr uint32_t kLargeSectorShift = 12;  // version 4
constexpr uint32_t kMiniSectorShift = 6;
constexpr uint32_t kMiniSectorSize = 1u << kMiniSectorShift;
constexpr uint32_t kMiniCutoff = 4096;

// Marks of the sector tables. Everything up to kLastSector is a sector.
constexpr uint32_t kLastSector = 0xFFFFFFFAu;
constexpr uint32_t kLongListSector = 0xFFFFFFFCu;
constexpr uint32_t kTableSector = 0xFFFFFFFDu;
constexpr uint32_t kEndOfChain = 0xFFFFFFFEu;
constexpr uint32_t kFreeSector = 0xFFFFFFFFu;

constexpr uint32_t kEntryName = 0;
constexpr uint32_t kEntryNameSize = 64;
constexpr uint32_t kEntryType = 66;
constexpr uint32_t kEntryColour = 67;
constexpr uint32_t kEntryLeft = 68;
constexpr uint32_t kEntryRight = 72;
constexpr uint32_t kEntryChild = 76;
constexpr uint32_t kEntryStart = 116;
constexpr uint32_t kEntrySize = 120;
constexpr uint32_t kEntryBytes = 128;
static_assert(kEntryBytes == kEntrySize + 8);

constexpr uint8_t kTypeStorage = 1;
constexpr uint8_t kTypeStream = 2;
constexpr uint8_t kTypeRoot = 5;
constexpr uint8_t kRed = 0;
constexpr uint8_t kBlack = 1;
constexpr uint32_t kNoEntry = 0xFFFFFFFFu;

// Units of a name, without its terminator.
constexpr uint32_t kNameUnits = 31;

// From this offset on a file has a range that no sector may lie on. The files written here end before it.
constexpr uint64_t kFileSizeLimit = 0x7FFFFF00u;

}  // namespace tolvenar::platform
