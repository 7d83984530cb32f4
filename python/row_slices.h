// RowSlices: checks the rows of one input on one or more threads, a slice of
// rows at a time, and gathers their problems into one ProblemColumns in the
// input's order: the frame comes out as one thread checking row after row
// would make it.
//
// The caller says how a slice is filled (one thread at a time, in the
// input's order) and how its rows become records and are checked (all
// threads at once, each with its own record and host::Checker). The slices
// gather into parts of their own, which are appended to the frame in order;
// with one thread the rows gather into the frame directly.
//
// The checkers are the caller's; each is used by one thread of a run, and
// outlives the run. Runs without the GIL; a fill step that needs it takes
// it.

#ifndef QUOREL_PYTHON_ROW_SLICES_H_
#define QUOREL_PYTHON_ROW_SLICES_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "quorel/host/checker.h"
#include "quorel/host/row_record.h"
#include "quorel/host/row_source.h"
#include "problem_columns.h"

namespace quorel {
namespace python {

class RowSlices {
 public:
  // What the rows of a slice are checked with on one thread.
  class Rows {
   public:
    // The record for the next row: the last row's, whose every column the
    // filling sets or empties, or a fresh one after a run set a field of it.
    SimpleDataRecord *record() { return host::renewedRecord(&record_); }
    // Where a row that cannot be filled says why.
    std::string *error() { return &error_; }
    // Checks the record filled for the row.
    void check(std::int64_t label, const host::Place &place);
    // A row that could not be checked; message in UTF-8.
    void fail(std::int64_t label, const host::Place &place, const std::string &message) {
      gather_->addFailure(label, place, message);
    }

   private:
    friend class RowSlices;

    host::Checker *checker_ = nullptr;
    std::mutex *logMutex_ = nullptr;
    ProblemColumns *gather_ = nullptr;
    std::unique_ptr<SimpleDataRecord> record_;
    std::string error_;
    host::Outcome outcome_;
  };

  // Fills the slot with the next slice of the input; false when the input
  // ends with it (the slice may then be empty). Called by one thread at a
  // time. An exception stops the run and is thrown on by run().
  using Fill = std::function<bool(std::size_t slot)>;
  // Checks the rows of the slot's slice, each through rows.
  using Work = std::function<void(std::size_t slot, Rows *rows)>;

  // One thread per checker, the calling one first; the rows gather into
  // frame. logMutex, when given, is held while a run writes its log.
  RowSlices(std::vector<host::Checker *> checkers, std::mutex *logMutex, ProblemColumns *frame);

  RowSlices(const RowSlices &) = delete;
  RowSlices &operator=(const RowSlices &) = delete;

  // The slots that slices are filled into: 0 to slots() - 1.
  std::size_t slots() const { return threads_.size() * slotsPerThread_; }

  // Fills and checks slices until the input ends. May run again on more of
  // the input (the next chunk of a frame), whose rows follow in the frame.
  // When at most `slices` slices follow, no more threads than that start.
  void run(const Fill &fill, const Work &work, std::size_t slices = SIZE_MAX);

 private:
  std::vector<Rows> threads_;
  std::size_t slotsPerThread_;
  ProblemColumns *frame_;
  // Per slot, the part its slice gathers into; none with one thread. Kept
  // from run to run, with their kinds.
  std::vector<std::unique_ptr<ProblemColumns>> parts_;
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_ROW_SLICES_H_
