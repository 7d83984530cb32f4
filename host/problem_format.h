// ProblemFormat: how the problems of checked records are written, as
// readable text or as JSON Lines. Both are UTF-8; the words of the format
// are English, the texts of the library and of the rules stay as they are.
//
// Text gives a record's problems under its place ("line 3: error PER-02
// (weight 8): ..."), a record that could not be checked as "line 4: not
// checked: why", and at the end a table of the problem ids (problems,
// records that have them, their share of all records) and the counts.
// JSON Lines gives one object per problem or record not checked, each with
// every key of kProblemColumns in that order, then one summary object.
//
// Each operation appends to a string, so that threads can format their
// records side by side and a writer puts the pieces out in order.

#ifndef QUOREL_HOST_PROBLEM_FORMAT_H_
#define QUOREL_HOST_PROBLEM_FORMAT_H_

#include <memory>
#include <string>
#include <vector>

#include "quorel/host/problem.h"
#include "quorel/host/row_source.h"
#include "quorel/host/summary.h"

namespace quorel {
namespace host {

class ProblemFormat {
 public:
  virtual ~ProblemFormat() = default;

  // "text" or "json"; null for another name.
  static std::unique_ptr<ProblemFormat> create(const std::string &name);

  // The problems of the record at that place, copied or read where their
  // run left them; both give the same bytes.
  virtual void appendRecord(const Place &place, const std::vector<Problem> &problems, std::string *out) const = 0;
  virtual void appendRecord(const Place &place, const FoundProblems &problems, std::string *out) const = 0;
  // A record that could not be checked; the message is Windows-1252.
  virtual void appendFailure(const Place &place, const std::string &message, std::string *out) const = 0;
  virtual void appendSummary(const Summary &summary, std::string *out) const = 0;
};

// The counts in words: "5 records: 3 checked, 2 not checked; 1 problem, 1
// error".
std::string countsText(const Summary &summary);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_PROBLEM_FORMAT_H_
