// ProblemFormat: how the problems of checked records are written, as
// readable German text or as JSON Lines (one object per problem or failed
// record, then one summary object). Both are UTF-8. Each operation appends
// to a string, so that threads can format their records side by side and a
// writer puts the pieces out in order.

#ifndef QUOREL_HOST_PROBLEM_FORMAT_H_
#define QUOREL_HOST_PROBLEM_FORMAT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quorel/host/problem.h"

namespace quorel {
namespace host {

// The counts of a whole run.
struct Summary {
  std::int64_t records = 0;
  std::int64_t failed = 0;  // records that could not be read or checked
  std::int64_t problems = 0;
  std::int64_t errors = 0;  // problems of type PROBLEM_ERROR
};

class ProblemFormat {
 public:
  virtual ~ProblemFormat() = default;

  // "text" or "json"; null for another name.
  static std::unique_ptr<ProblemFormat> create(const std::string &name);

  // The problems of the record at that position (a line of its file).
  virtual void appendRecord(std::int64_t position, const std::vector<Problem> &problems,
                            std::string *out) const = 0;
  // A record that could not be checked; the message is Windows-1252.
  virtual void appendFailure(std::int64_t position, const std::string &message, std::string *out) const = 0;
  virtual void appendSummary(const Summary &summary, std::string *out) const = 0;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_PROBLEM_FORMAT_H_
