// ProblemColumns: the problems of many checked rows, gathered column by
// column as a problem frame holds them, without a Python object per row.
//
// The texts of problems repeat from record to record (ids, texts, field
// names, section trails), so each such column keeps the distinct values it
// has met, in order of first appearance, and one code per row. finish()
// makes each distinct value a Python str once, as the categories of a
// pandas Categorical; a list becomes the text of a JSON array, as a problem
// table holds it, so that the frame goes on as any frame of texts
// (astype(str), to_sql). That keeps the frame small to build, to ship
// between processes and to concatenate.
//
// Columns grow in blocks (std::deque) rather than by doubling and copying:
// a cluster's workers run with a low malloc trim threshold, under which
// every large block is fresh memory, and each page of it costs a fault.
//
// Gathering runs without the GIL, on one thread at a time; finish() needs
// the GIL.

#ifndef QUOREL_PYTHON_PROBLEM_COLUMNS_H_
#define QUOREL_PYTHON_PROBLEM_COLUMNS_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
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
  // A checked row: its label (a position in the input), its place in the
  // source, and what checking it gave. A run that ended in an exception
  // gives a failure row before its problems.
  void addOutcome(std::int64_t row, const host::Place &place, const host::Outcome &outcome);
  // A row that could not be checked; message in UTF-8.
  void addFailure(std::int64_t row, const host::Place &place, const std::string &message);

  // The columns (GIL held), by the names of host::kProblemColumns: "row"
  // (int64 array of labels); for "record", "line" (0 for none), "type" and
  // "weight" a pair (values, int64 or int32, bool mask of missing ones); for
  // each text or list column a pair (codes, -1 for none, in the integer type
  // that pandas keeps for that many categories; list of the categories,
  // str); and "summary" (a dict of the counts records, checked, not_checked,
  // problems, errors).
  pybind11::dict finish() const;

 private:
  // A column of texts by code; none is -1. The texts are Windows-1252 but
  // for the error messages, which are UTF-8 already.
  struct Texts {
    Dictionary<std::string> values;
    std::deque<std::int32_t> codes;
    void add(const std::string &text) { codes.push_back(values.codeOf(text)); }
    void addNone() { codes.push_back(-1); }
  };
  // A column of lists by code.
  template <typename T>
  struct Lists {
    Dictionary<std::vector<T>, ListHash<T>> values;
    std::deque<std::int32_t> codes;
    void add(const std::vector<T> &list) { codes.push_back(values.codeOf(list)); }
  };
  // A column of whole numbers that may be missing.
  template <typename T>
  struct Numbers {
    std::deque<T> values;
    std::deque<bool> missing;
    void add(T number) {
      values.push_back(number);
      missing.push_back(false);
    }
    void addNone() {
      values.push_back(0);
      missing.push_back(true);
    }
  };

  void addPlace(std::int64_t row, const host::Place &place);
  void addProblem(std::int64_t row, const host::Place &place, const host::Problem &problem);
  // A failure row: no problem attributes, empty lists.
  void addFailureRow(std::int64_t row, const host::Place &place, const std::string &message);

  std::deque<std::int64_t> rows_;
  Numbers<std::int64_t> record_, line_;
  Texts id_, text_, details_, field_, failure_;
  Numbers<std::int32_t> type_, weight_;
  Lists<std::int32_t> fieldIndices_;
  Lists<std::string> accessed_, sections_;
  host::Summary summary_;
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_PROBLEM_COLUMNS_H_
