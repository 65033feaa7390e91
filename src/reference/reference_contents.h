// "Contents", the directory of a ReferenceFile, as images in pool blocks. (The layout stands in reference_file.h.)
//
// The count is that of the header; the ids are those that the walk meets. Where the two differ the count rules: ids beyond it are dropped,
// missing ones are 0. A count of less than 0 is taken for 0.
#pragma once

#include <cstdint>

namespace tolvenar {

struct StmFFile;

constexpr char kContentsStream[] = "Contents";

constexpr int16_t kContentsDone = 0;
constexpr int16_t kContentsNotOpened = -11;
constexpr int16_t kContentsEmpty = -12;
constexpr int16_t kContentsNoBlock = -13;
constexpr int16_t kContentsNotRead = -15;
constexpr int16_t kContentsNoList = -16;
constexpr int16_t kContentsNoImage = -18;
constexpr int16_t kContentsNotMade = -20;
constexpr int16_t kContentsNotWritten = -21;

// Reads the stream into a pool block, *image. Result: 0; -11, -12, -13, -15 with no block held.
int16_t ReadContents(StmFFile* file, uint32_t* image, uint32_t* size);

// Turns the image into that with a new id at its end, the lowest that is free, or without `id`. Result: 0; -16, *image stays allocated;
// -18, the image is released and the list of ids stays allocated.
int16_t AddNewId(uint32_t* image, uint32_t* size, int32_t* id);
int16_t DropId(uint32_t* image, uint32_t* size, uint32_t id);

// Replaces the stream by the image and releases that. Result: 0; -20, -21.
int16_t WriteContents(StmFFile* file, uint32_t* image, uint32_t size);

}  // namespace tolvenar
