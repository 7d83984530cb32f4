// Problem: one finding of a run, copied out of its PlausiContext so that it
// outlives the context and the rule module. Texts stay Windows-1252, as the
// library gave them; front ends convert them where they leave the program.

#ifndef QUOREL_HOST_PROBLEM_H_
#define QUOREL_HOST_PROBLEM_H_

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

struct Problem {
  std::optional<std::string> id;
  ProblemType type = PROBLEM_ERROR;
  std::int32_t weight = 0;
  std::optional<std::string> text;     // the short description
  std::optional<std::string> details;  // the long description
  // The hierarchy text of the reference field, empty when there is none,
  // and the indices that the rule gave with it.
  std::string field;
  std::vector<std::int32_t> fieldIndices;
  // Hierarchy texts of the fields that were read, in order of reading.
  std::vector<std::string> accessed;
  // The section trail, innermost first.
  std::vector<std::string> sections;
};

// The columns of a problem, in order: the keys of a JSON Lines object, the
// columns of a problem table, the columns of a Python problem frame. record
// and line are the Place of the record; failure says why a record could not
// be checked (then the problem's own columns are empty).
constexpr const char *kProblemColumns[] = {"record", "line",          "id",       "type",     "weight",
                                           "text",   "details",       "field",    "field_indices",
                                           "accessed", "sections",    "failure"};
constexpr int kProblemColumnCount = sizeof kProblemColumns / sizeof kProblemColumns[0];

// The hierarchy texts of fields, each worked out once: the problems of
// record after record name the same few fields. A text is kept with the
// field's hierarchy hash and worked out anew when the hash changes (the field
// got new indices). The fields must outlive the keeper or be forgotten with
// it; one thread at a time.
class HierarchyTexts {
 public:
  // The text of field, "" for null; valid until the next call.
  const std::string &of(const FieldDescriptor *field);

 private:
  struct Kept {
    std::int32_t hash;
    std::string text;
  };
  std::unordered_map<const FieldDescriptor *, Kept> kept_;
};

// Sets *problems to every problem of the context, in order, the texts of
// fields from *texts.
void collectProblems(const PlausiContext &context, std::vector<Problem> *problems, HierarchyTexts *texts);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_PROBLEM_H_
