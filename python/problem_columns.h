// ProblemColumns: the problems of many checked rows, gathered as a problem
// frame holds them, without a Python object per row.
//
// Rules report the same problem, all but its place, from record to record.
// So each problem is kept as its place and the code of its kind (every
// attribute of the problem but the place), and each distinct kind once, in
// order of first appearance: a compare of a problem's texts, read where its
// run left them, with the kind last met under its id (and one hash of them
// all where that is not it), rather than a copy, or one per column.
// finish() turns the kinds into the columns: each text or list column keeps
// the distinct values of the kinds, in order of first appearance, as the
// categories of a pandas Categorical, and each is made a Python str once;
// a list becomes the text of a JSON array, as a problem table holds it, so
// that the frame goes on as any frame of texts (astype(str), to_sql). That
// keeps the frame small to build, to ship between processes and to
// concatenate.
//
// A row of the input keeps its label and place once, whatever the number of
// its problems.
//
// Rows grow in blocks (std::deque) rather than by doubling and copying: a
// cluster's workers run with a low malloc trim threshold, under which every
// large block is fresh memory, and each page of it costs a fault.
//
// Gathering runs without the GIL, on one thread at a time; finish() needs
// the GIL.

#ifndef QUOREL_PYTHON_PROBLEM_COLUMNS_H_
#define QUOREL_PYTHON_PROBLEM_COLUMNS_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <pybind11/pybind11.h>

#include "quorel/host/checker.h"
#include "quorel/host/problem.h"
#include "quorel/host/row_source.h"
#include "quorel/host/summary.h"

namespace quorel {
namespace python {

// The distinct keys met so far, each with its code: 0, 1, ... in order of
// first appearance.
template <typename Key, typename Hash = std::hash<Key>>
class Dictionary {
 public:
  std::int32_t codeOf(const Key &key) {
    auto found = codes_.try_emplace(key, static_cast<std::int32_t>(keys_.size()));
    if (found.second) keys_.push_back(&found.first->first);
    return found.first->second;
  }
  // By code; the keys stay put while the dictionary grows.
  const std::vector<const Key *> &keys() const { return keys_; }

 private:
  std::unordered_map<Key, std::int32_t, Hash> codes_;
  std::vector<const Key *> keys_;
};

// Hashes a list by its entries.
template <typename T>
struct ListHash {
  std::size_t operator()(const std::vector<T> &list) const {
    std::size_t hash = list.size();
    for (const T &entry : list) hash = hash * 1000003u ^ std::hash<T>()(entry);
    return hash;
  }
};

class ProblemColumns {
 public:
  // A problem's attributes, each read once from where its run left them,
  // to be hashed and compared with the kinds; valid while the problem is.
  struct Read {
    void from(const host::FoundProblem &problem);

    std::optional<std::string_view> id, text, details;
    ProblemType type = PROBLEM_ERROR;
    std::int32_t weight = 0;
    std::string_view field;
    std::vector<std::int32_t> indices;
    std::vector<std::string_view> accessed, sections;
  };

  // A checked row: its label (a position in the input), its place in the
  // source, and what checking it gave. A run that ended in an exception
  // gives a failure row before its problems.
  void addOutcome(std::int64_t row, const host::Place &place, const host::Outcome &outcome);
  // A row that could not be checked; message in UTF-8.
  void addFailure(std::int64_t row, const host::Place &place, const std::string &message);

  // Moves the rows that part gathered to the end of these, and leaves part
  // without rows but with its kinds, to gather the next rows of the same
  // input. A part is appended to one frame only: it remembers the code here
  // of each of its kinds. The kinds of several parts are not merged, so a
  // kind may have several codes here; finish() gives the same columns all
  // the same, since each column keeps the distinct values in order of first
  // appearance, and a kind enters here at its first row.
  void append(ProblemColumns *part);

  // The columns (GIL held), by the names of host::kProblemColumns: "row"
  // (int64 array of labels); for "record", "line" (0 for none), "type" and
  // "weight" a pair (values, int64 or int32, bool mask of missing ones); for
  // each text or list column a pair (codes, -1 for none, in the integer type
  // that pandas keeps for that many categories; list of the categories,
  // str); and "summary" (a dict of the counts records, checked, not_checked,
  // problems, errors).
  pybind11::dict finish() const;

 private:
  // The code of the problem's kind, or of the failure rows' kind (no
  // problem attributes, empty lists).
  std::int32_t kindOf(const host::FoundProblem &problem);
  std::int32_t failureKind();
  // A new code for the kind (null for the failure rows').
  std::int32_t addKind(const host::Problem *kind);

  // A row of the input with problems or a failure, and so rows of the frame.
  struct Source {
    std::int64_t label;
    std::int64_t record;
    std::int64_t line;  // 0 for none
    std::int32_t rows;
    std::int32_t failure;  // the code of the failure's message, for its first row; -1 for none
  };

  // A row of the input whose rows of the frame follow, rows of them.
  void addSource(std::int64_t label, const host::Place &place, std::size_t rows, std::int32_t failure);

  std::deque<Source> sources_;
  std::deque<std::int32_t> kinds_;  // by row of the frame
  // The kinds by code, the failure rows' one null; it has a code once a
  // failure row is met. A problem is hashed and compared where its run
  // left it, and copied only as a new kind: each hash leads to the first
  // kind of that hash, and each kind to the next of the same hash (or -1).
  std::deque<host::Problem> kindStore_;
  std::vector<const host::Problem *> kindList_;
  std::unordered_map<std::size_t, std::int32_t> firstOfHash_;
  std::vector<std::int32_t> nextOfHash_;
  // The kind last met under a hash of the id alone: most problems of an id
  // are of one kind, which is tried first and spares hashing every text.
  std::unordered_map<std::size_t, std::int32_t> lastOfId_;
  std::int32_t failureKind_ = -1;
  Read read_;  // the problem at hand, in memory kept from problem to problem
  // The messages of failure rows (UTF-8).
  Dictionary<std::string> messages_;
  host::Summary summary_;
  // As a part: the code of each kind in the frame it is appended to, -1
  // before its first row there.
  std::vector<std::int32_t> codesThere_;
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_PROBLEM_COLUMNS_H_
