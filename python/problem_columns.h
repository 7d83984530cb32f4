// ProblemColumns: the problems of many checked rows, gathered column by
// column as a problem frame holds them, without a Python object per row.
//
// The texts of problems repeat from record to record (ids, texts, field
// names, section trails), so each such column keeps the distinct values it
// has met, in order of first appearance, and one code per row. finish()
// makes each distinct value a Python object once (a str, or a tuple for a
// list), as the categories of a pandas Categorical. That keeps the frame
// small to build, to ship between processes and to concatenate.
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
  // A checked row: its label (a position in the input), and what checking
  // it gave. A run that ended in an exception gives an error row before its
  // problems.
  void addOutcome(std::int64_t row, const host::Outcome &outcome);
  // A row that could not be checked; message in UTF-8.
  void addFailure(std::int64_t row, const std::string &message);

  // The columns (GIL held): "row" (int64 array of labels); for each text or
  // list column and "error" a pair (codes, -1 for none, in the integer type
  // that pandas keeps for that many categories; list of the categories, str
  // or tuple); for "type" and "weight" a pair (int32 values, bool mask of
  // missing ones); and "summary" (a dict of the counts records, problems,
  // errors, failed).
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
  // A column of whole numbers (32 bits, as the library gives them) that may
  // be missing.
  struct Numbers {
    std::deque<std::int32_t> values;
    std::deque<bool> missing;
    void add(std::int32_t number) {
      values.push_back(number);
      missing.push_back(false);
    }
    void addNone() {
      values.push_back(0);
      missing.push_back(true);
    }
  };

  void addProblem(std::int64_t row, const host::Problem &problem);
  // An error row: no problem attributes, empty lists.
  void addErrorRow(std::int64_t row, const std::string &message);

  std::deque<std::int64_t> rows_;
  Texts id_, shortText_, longText_, field_, error_;
  Numbers type_, weight_;
  Lists<std::int32_t> fieldIndices_;
  Lists<std::string> accessed_, sections_;
  std::int64_t records_ = 0, problems_ = 0, errorProblems_ = 0, failed_ = 0;
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_PROBLEM_COLUMNS_H_
