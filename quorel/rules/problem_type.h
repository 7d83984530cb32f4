// The kinds of a problem. The library reads one number: a problem of type
// PROBLEM_ERROR marks the run as failed. Every other ProblemType and every
// ProblemInfoType passes through unread; rule modules and hosts agree on them.

#ifndef QUOREL_RULES_PROBLEM_TYPE_H_
#define QUOREL_RULES_PROBLEM_TYPE_H_

#include <cstdint>

namespace quorel {

enum ProblemType : std::int32_t {
  PROBLEM_ERROR = 1,
};

enum ProblemInfoType : std::int32_t {
  PROBLEM_INFO_NONE = 0,
};

}  // namespace quorel

#endif  // QUOREL_RULES_PROBLEM_TYPE_H_
