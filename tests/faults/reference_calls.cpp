// Calls: reference files, references in memory, and the stamp in a workbook.
#include "faults/calls.h"
#include "faults/fault_seam.h"
#include "support/workbook_file.h"
#include "tolvenar/tolvenar.h"
#include "workbook/biff_version.h"

namespace tolvenar::testing {

namespace {

const Bytes kReference = {0xFF, 0x10, 4, 0, 8, 0, 0, 0, 0xDA, 0x10, 4, 0, 0, 0, 0, 0,
                          0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};
const Bytes kContents = {0xFF, 0x10, 4, 0, 1,    0,    0, 0, 0xFD, 0x10, 4, 0,
                         1,    0,    0, 0, 0xFE, 0x10, 4, 0, 0,    0,    0, 0};

// A file with reference 1.
void ReferenceFile(Ground& g) {
  ASSERT_TRUE(WriteWorkbook(g.Path(), "Contents", kContents));
  ASSERT_TRUE(AddStream(g.Path(), "1       ", kReference));
}

void OpenReference(Ground& g) {
  g.buffer = StreamBuilder().Raw(kReference).Load(&g.size);
}

void OpenReferenceWithFile(Ground& g) {
  ReferenceFile(g);
  OpenReference(g);
}

void OpenStamped(Ground& g) {
  OpenBook(g);
  ASSERT_EQ(::XLInsertReference(&g.buffer, g.table, &g.size, 7), 0);
}

// A stamped workbook on disk, and the generation that is looked for.
void StampedFile(Ground& g) {
  OpenStamped(g);
  ASSERT_EQ(::XLSaveFile(g.Path().c_str(), &g.buffer, &g.table, &g.size), 0);
  g.Release();
}

int32_t Delete(Ground& g, uint32_t id) {
  return ::XLDeleteReference(g.Path().c_str(), id);
}
int32_t Read(Ground& g, int32_t id) {
  return ::XLReadReference(g.Path().c_str(), &g.buffer, &g.size, id);
}
int32_t Save(Ground& g) {
  return ::XLSaveReference(g.Path().c_str(), &g.buffer, &g.size, 1);
}
int32_t Stamp(Ground& g) {
  return ::XLInsertReference(&g.buffer, g.table, &g.size, 7);
}
int32_t GetStamp(Ground& g) {
  return ::XLGetReference(g.Path().c_str());
}

using enum Leaves;

}  // namespace

std::vector<Call> ReferenceCalls() {
  const auto create = [](Ground& g) { return ::XLCreateReference(g.Path().c_str()); };
  const auto uncommitted_stamp = [](Ground& g) {
    const Fault fault(Fault::kCommit, 0);
    return GetStamp(g);
  };
  const auto uncommitted_read = [](Ground& g) {
    const Fault fault(Fault::kCommit, 0);
    return Read(g, 1);
  };
  const auto refused_save = [](Ground& g) {
    const Fault fault(Fault::kCreateStream, 0);
    return Save(g);
  };
  const std::vector<Failure> directory = {{-13, kNone}, {-16, kNone}, {-18, kNone}, {-22, kNone}};
  const std::vector<Failure> reading = {{5, kNone}, {-10, kNone}};
  const std::vector<Failure> saving = {{4, kUnchanged}, {6, kUnchanged}, {-22, kLive}};
  const std::vector<Failure> stamping = {{4, kLiveOrReleased}};
  const std::vector<Failure> stamp_reading = {{-5, kNone}, {-10, kNone}};
  // clang-format off
  return {
      {"XLCreateReference", "", ReferenceFile, create, {2}, directory},
      {"XLDeleteReference", "", ReferenceFile, [](Ground& g) { return Delete(g, 1); }, {0}, directory},
      {"XLDeleteReference", "WithoutStream", ReferenceFile, [](Ground& g) { return Delete(g, 9); }, {-24}, directory},
      {"XLReadReference", "", ReferenceFile, [](Ground& g) { return Read(g, 1); }, {0}, reading},
      {"XLReadReference", "WithoutStream", ReferenceFile, [](Ground& g) { return Read(g, 9); }, {102}, reading},
      {"XLReadReference", "Uncommitted", ReferenceFile, uncommitted_read, {105}, reading},
      {"XLSaveReference", "", OpenReferenceWithFile, Save, {0}, saving},
      {"XLSaveReference", "WithoutFile", OpenReference, Save, {101}, saving},
      {"XLSaveReference", "StreamRefused", OpenReferenceWithFile, refused_save, {103}, saving},
      {"XLRefreshReference", "", OpenReference, [](Ground& g) { return ::XLRefreshReference(&g.buffer, &g.size); }, {0}, {{4, kUnchanged}, {6, kUnchanged}}},
      {"XLInsertReference", "", OpenBook, Stamp, {0}, stamping},
      {"XLInsertReference", "Tight", OpenTightBook, Stamp, {0}, stamping},
      {"XLInsertReference", "Again", OpenStamped, Stamp, {0}, {{4, kUnchanged}}},
      {"XLUnbindReference", "", OpenStamped, [](Ground& g) { return ::XLUnbindReference(g.buffer, g.table); }, {0}, {}},
      {"XLGetReference", "", StampedFile, GetStamp, {7}, stamp_reading},
      {"XLGetReference", "Uncommitted", StampedFile, uncommitted_stamp, {-9}, {{-5, kNone}}},
      {"XLDestroyFString", "", OpenReference, [](Ground& g) { return ::XLDestroyFString(&g.buffer); }, {0}, {}},
  };
  // clang-format on
}

}  // namespace tolvenar::testing
