#include "quorel/host/problem.h"

namespace quorel {
namespace host {

namespace {

void assign(std::optional<std::string> *target, const char *text) {
  if (text == nullptr) {
    target->reset();
  } else if (*target) {
    (*target)->assign(text);
  } else {
    target->emplace(text);
  }
}

}  // namespace

const std::string &HierarchyTexts::of(const FieldDescriptor *field) {
  static const std::string kNone;
  if (field == nullptr) return kNone;
  std::int32_t hash = field->getHierarchyHash().get();
  auto found = kept_.find(field);
  if (found == kept_.end()) {
    found = kept_.emplace(field, Kept{hash, field->getHierarchyText()}).first;
  } else if (found->second.hash != hash) {
    found->second = Kept{hash, field->getHierarchyText()};
  }
  return found->second.text;
}

void collectProblems(const PlausiContext &context, std::vector<Problem> *problems, HierarchyTexts *texts) {
  // Runs follow each other by the thousand: the problems of the former run
  // lend their memory to those of this one.
  problems->resize(static_cast<std::size_t>(context.getNumOfProblems()));
  for (std::int32_t i = 0; i < context.getNumOfProblems(); ++i) {
    const PlausiProblem &p = *context.getProblem(i);
    Problem &problem = (*problems)[static_cast<std::size_t>(i)];
    assign(&problem.id, p.getId());
    problem.type = p.getType();
    problem.weight = p.getWeight();
    assign(&problem.text, p.getShortDescription());
    assign(&problem.details, p.getLongDescription());
    problem.field.assign(texts->of(p.getReferenceField()));
    problem.fieldIndices.clear();
    for (const std::int32_t *index = p.getReferenceFieldIndices(); index != nullptr && *index >= 0; ++index) {
      problem.fieldIndices.push_back(*index);
    }
    problem.accessed.resize(static_cast<std::size_t>(p.getNumOfAccessedFields()));
    for (std::int32_t f = 0; f < p.getNumOfAccessedFields(); ++f) {
      problem.accessed[static_cast<std::size_t>(f)].assign(texts->of(p.getAccessedField(f)));
    }
    problem.sections.resize(static_cast<std::size_t>(p.getNumOfPlausiSections()));
    for (std::int32_t s = 0; s < p.getNumOfPlausiSections(); ++s) {
      const char *name = p.getPlausiSection(s);  // null for a section opened without a name
      problem.sections[static_cast<std::size_t>(s)].assign(name != nullptr ? name : "");
    }
  }
}

}  // namespace host
}  // namespace quorel
