// Every export, each with the ground that it needs and what it may answer: what the faults are put under.
//
// A Call is an export on one piece of ground. `done` are the results of a call that went through, or that is refused for what the
// ground is; `failures` are those that tell of a lack of memory, and what becomes of the caller's buffer then.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/stream_builder.h"
#include "support/temp_file.h"
#include "support/test_array.h"
#include "support/variants.h"

namespace tolvenar::testing {

// What a host holds around one call. The pool starts unset and ends so.
struct Ground {
  Ground();
  ~Ground();
  Ground(const Ground&) = delete;
  Ground& operator=(const Ground&) = delete;

  const std::string& Path() const { return path; }

  // Releases all that the host's variables and arrays name. What is live then and was not before is lost to it.
  void Release();

  TempFolder folder{"/dev/shm"};  // in memory, where there is such a place: a disk would take its time
  const std::string path = folder.File("file");
  uint32_t buffer = 0;
  uint32_t size = 0;
  uint32_t table = 0;
  uint32_t block = 0;
  uint32_t position = 0;
  BSTR text = nullptr;
  std::unique_ptr<TestArray> array;
  std::unique_ptr<TestArray> array2;
  int32_t items = 0;  // handles in `array`, from index 0 on
  Variants cells;
};

// What a failure leaves of the buffer.
enum class Leaves {
  kNone,            // the variable is 0
  kUnchanged,       // handle, size and bytes as they were
  kKept,            // handle and bytes as they were, the size perhaps not
  kLive,            // the variable names a live block
  kReleased,        // released, and the variable is 0
  kStale,           // released, and the variable still names it
  kLiveOrReleased,  // one of kLive and kReleased
  kAny,             // the export says nothing of it
};

struct Failure {
  int32_t result;
  Leaves leaves;
};

struct Call {
  std::string name;
  std::string label;
  std::function<void(Ground&)> prepare;
  std::function<int32_t(Ground&)> run;
  std::set<int32_t> done;
  std::vector<Failure> failures;
};

// The calls by topic, and all of them.
std::vector<Call> FileCalls();
std::vector<Call> ReferenceCalls();
std::vector<Call> EditCalls();
std::vector<Call> SheetCalls();
std::vector<Call> StyleCalls();
std::vector<Call> QueryCalls();
std::vector<Call> ChartCalls();
std::vector<Call> GraphCalls();
std::vector<Call> PoolCalls();
const std::vector<Call>& AllCalls();

// Grounds.
void Nothing(Ground& ground);
// `filler` bytes of a record without meaning stand in the second sheet.
StreamBuilder TwoSheetBook(uint8_t version, uint32_t filler = 0);
void OpenStream(Ground& ground, const StreamBuilder& stream, uint8_t version);
void OpenBook(Ground& ground);       // TwoSheetBook of BIFF8 in a block with plenty of room, located
void OpenTightBook(Ground& ground);  // the same, in the smallest block that holds it
void OpenBookBiff5(Ground& ground);

}  // namespace tolvenar::testing
