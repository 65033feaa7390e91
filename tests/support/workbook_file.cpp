// Compound files for tests, through the library's own storage layer.
#include "support/workbook_file.h"

#include "workbook/stm_file.h"

namespace tolvenar::testing {

namespace {

bool PutStream(StmFFile* file, const std::string& name, const Bytes& bytes) {
  StmFItemHolder stream;
  uint32_t moved = 0;
  if (file->CreateStream(name.c_str(), &stream.item, true) != kStmDone) return false;
  const uint32_t count = static_cast<uint32_t>(bytes.size());
  if (stream.item->Write(bytes.data(), count, &moved) != kStmDone || moved != count) return false;
  return stream.item->Close() == kStmDone && file->Close() == kStmDone;
}

}  // namespace

bool WriteWorkbook(const std::string& path, const std::string& name, const Bytes& bytes) {
  StmFFile file;
  return file.Create(path.c_str(), true) == kStmDone && PutStream(&file, name, bytes);
}

bool AddStream(const std::string& path, const std::string& name, const Bytes& bytes) {
  StmFFile file;
  return file.Open(path.c_str()) == kStmDone && PutStream(&file, name, bytes);
}

std::optional<Bytes> ReadStream(const std::string& path, const std::string& name) {
  StmFFile file;
  StmFItemHolder stream;
  if (file.Open(path.c_str()) != kStmDone) return std::nullopt;
  if (file.OpenStream(name.c_str(), &stream.item) != kStmDone) return std::nullopt;
  Bytes bytes(stream.item->GetSize());
  uint32_t moved = 0;
  if (!bytes.empty()) stream.item->Read(bytes.data(), static_cast<uint32_t>(bytes.size()), &moved);
  bytes.resize(moved);
  return bytes;
}

}  // namespace tolvenar::testing
