// Summary: the counts of a whole run, gathered record by record (by each
// thread into its own, then merged), so that records in = records checked +
// records not checked, and so that a reader sees at once which problems are
// frequent: per problem id the number of problems and of records that have
// it.

#ifndef QUOREL_HOST_SUMMARY_H_
#define QUOREL_HOST_SUMMARY_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "quorel/host/problem.h"

namespace quorel {
namespace host {

struct Summary {
  struct IdCounts {
    std::int64_t problems = 0;
    std::int64_t records = 0;  // records with at least one problem of the id
    // The number (records) of the last record that counted here, so that
    // a record counts once per id.
    std::int64_t lastRecord = 0;
  };

  std::int64_t records = 0;      // read, checked or not
  std::int64_t notChecked = 0;   // could not be read or checked
  std::int64_t problems = 0;
  std::int64_t errors = 0;       // problems of type PROBLEM_ERROR
  // By problem id (Windows-1252); a problem without an id counts under "".
  // Ordered, so that an id is looked up without a copy of it.
  std::map<std::string, IdCounts, std::less<>> ids;

  std::int64_t checked() const { return records - notChecked; }

  // A record with the problems found in it, errorCount of them of type 1.
  // A record whose check failed is not checked, but the problems found
  // before the failure count all the same.
  void add(const std::vector<Problem> &found, std::int32_t errorCount, bool checked);
  void add(const FoundProblems &found, std::int32_t errorCount, bool checked);
  // The same without the counts by id, for a front end that counts its
  // problems by id in its own way: problemCount problems were found.
  void count(std::size_t problemCount, std::int32_t errorCount, bool checked);
  void merge(const Summary &other);

  // The ids with their counts, most problems first, then by id.
  std::vector<std::pair<std::string, IdCounts>> byId() const;

 private:
  template <typename Problems>
  void addRecord(const Problems &found, std::int32_t errorCount, bool checked);
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_SUMMARY_H_
