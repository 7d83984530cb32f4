// Problem: one finding of a run, copied out of its PlausiContext so that it
// outlives the context and the rule module. Texts stay Windows-1252, as the
// library gave them; front ends convert them where they leave the program.
//
// FoundProblems reads the findings of a run where the context keeps them,
// for a front end that writes them out before the next run: no text is
// copied. FoundProblem and StoredProblem read one finding, in place or
// copied, through the same operations, so that code written against them
// (a format, the counts) takes either.

#ifndef QUOREL_HOST_PROBLEM_H_
#define QUOREL_HOST_PROBLEM_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
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

// A form that a writer gives a Windows-1252 text (UTF-8, a JSON string),
// appended to *out. Forms are told apart by their address.
using TextForm = void (*)(std::string *out, std::string_view text);

// The hierarchy texts of fields, each worked out once: the problems of
// record after record name the same few fields. A text is kept with the
// field's hierarchy hash and worked out anew when the hash changes (the field
// got new indices), and so are the forms that writers give it. The fields
// must outlive the keeper or be forgotten with it; one thread at a time.
class HierarchyTexts {
 public:
  HierarchyTexts() = default;
  HierarchyTexts(const HierarchyTexts &) = delete;
  HierarchyTexts &operator=(const HierarchyTexts &) = delete;

  // The text of field, "" for null; valid until the text of the same field
  // is asked for again.
  const std::string &of(const FieldDescriptor *field);
  // The same in the form, "" for null; valid as long.
  const std::string &of(const FieldDescriptor *field, TextForm form);

 private:
  struct Kept {
    std::int32_t hash;
    std::string text;
    std::vector<std::pair<TextForm, std::string>> forms;
  };
  // The entry of a field, its text up to date.
  Kept &keptOf(const FieldDescriptor *field);

  // The fields asked for last, each in a place by its address: the problems
  // of a module name the same few fields, and finding one here costs less
  // than hashing it into kept_, whose entries stay put.
  struct Recent {
    const FieldDescriptor *field = nullptr;
    Kept *kept = nullptr;
  };
  static constexpr std::size_t kRecent = 64;

  std::unordered_map<const FieldDescriptor *, Kept> kept_;
  std::array<Recent, kRecent> recent_;
};

// A Problem read through the operations of FoundProblem. A text of a field
// in a form is made anew each time, valid until the next one.
class StoredProblem {
 public:
  explicit StoredProblem(const Problem &problem) : p_(problem) {}

  std::optional<std::string_view> id() const { return view(p_.id); }
  ProblemType type() const { return p_.type; }
  std::int32_t weight() const { return p_.weight; }
  std::optional<std::string_view> text() const { return view(p_.text); }
  std::optional<std::string_view> details() const { return view(p_.details); }
  std::string_view field() const { return p_.field; }
  std::string_view field(TextForm form) const { return formed(p_.field, form); }
  std::size_t indexCount() const { return p_.fieldIndices.size(); }
  std::int32_t index(std::size_t i) const { return p_.fieldIndices[i]; }
  std::size_t accessedCount() const { return p_.accessed.size(); }
  std::string_view accessed(std::size_t i) const { return p_.accessed[i]; }
  std::string_view accessed(std::size_t i, TextForm form) const { return formed(p_.accessed[i], form); }
  std::size_t sectionCount() const { return p_.sections.size(); }
  std::string_view section(std::size_t i) const { return p_.sections[i]; }

 private:
  static std::optional<std::string_view> view(const std::optional<std::string> &text) {
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
  }
  std::string_view formed(std::string_view text, TextForm form) const {
    formed_.clear();
    form(&formed_, text);
    return formed_;
  }

  const Problem &p_;
  mutable std::string formed_;
};

// A PlausiProblem as a Problem would hold it: the reference field's text ""
// when there is none. The texts of fields, and their forms, come from a
// HierarchyTexts, each valid until that field's text is asked for again; the
// others as long as the problem.
class FoundProblem {
 public:
  FoundProblem(const PlausiProblem &problem, HierarchyTexts *texts) : p_(problem), texts_(texts) {}

  std::optional<std::string_view> id() const { return view(p_.getId()); }
  ProblemType type() const { return p_.getType(); }
  std::int32_t weight() const { return p_.getWeight(); }
  std::optional<std::string_view> text() const { return view(p_.getShortDescription()); }
  std::optional<std::string_view> details() const { return view(p_.getLongDescription()); }
  std::string_view field() const { return texts_->of(p_.getReferenceField()); }
  std::string_view field(TextForm form) const { return texts_->of(p_.getReferenceField(), form); }
  std::size_t indexCount() const;
  std::int32_t index(std::size_t i) const { return p_.getReferenceFieldIndices()[i]; }
  std::size_t accessedCount() const { return static_cast<std::size_t>(p_.getNumOfAccessedFields()); }
  std::string_view accessed(std::size_t i) const {
    return texts_->of(p_.getAccessedField(static_cast<std::int32_t>(i)));
  }
  std::string_view accessed(std::size_t i, TextForm form) const {
    return texts_->of(p_.getAccessedField(static_cast<std::int32_t>(i)), form);
  }
  std::size_t sectionCount() const { return static_cast<std::size_t>(p_.getNumOfPlausiSections()); }
  std::string_view section(std::size_t i) const;

 private:
  static std::optional<std::string_view> view(const char *text) {
    return text != nullptr ? std::optional<std::string_view>(text) : std::nullopt;
  }

  const PlausiProblem &p_;
  HierarchyTexts *texts_;
};

// Problems held as copies, read as StoredProblem.
class StoredProblems {
 public:
  explicit StoredProblems(const std::vector<Problem> &problems) : problems_(problems) {}

  std::size_t size() const { return problems_.size(); }
  StoredProblem operator[](std::size_t i) const { return StoredProblem(problems_[i]); }

 private:
  const std::vector<Problem> &problems_;
};

// The problems of a context's run, in order, read where the context keeps
// them. Valid until the context runs again or is reset; the context and the
// HierarchyTexts stay the caller's. Made without a context, it holds none.
class FoundProblems {
 public:
  FoundProblems() = default;
  FoundProblems(const PlausiContext &context, HierarchyTexts *texts) : context_(&context), texts_(texts) {}

  std::size_t size() const {
    return context_ != nullptr ? static_cast<std::size_t>(context_->getNumOfProblems()) : 0;
  }
  FoundProblem operator[](std::size_t i) const {
    return FoundProblem(*context_->getProblem(static_cast<std::int32_t>(i)), texts_);
  }

 private:
  const PlausiContext *context_ = nullptr;
  HierarchyTexts *texts_ = nullptr;
};

// Makes *problem a copy of the found one, in the memory it holds.
void copyProblem(const FoundProblem &found, Problem *problem);
// Sets *problems to copies of the found problems, in order.
void collectProblems(const FoundProblems &found, std::vector<Problem> *problems);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_PROBLEM_H_
