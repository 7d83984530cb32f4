#include "quorel/host/problem.h"

namespace quorel {
namespace host {

namespace {

std::optional<std::string> textOf(const char *text) {
  return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

std::string hierarchyOf(FieldDescriptor *field) { return field != nullptr ? field->getHierarchyText() : ""; }

}  // namespace

void collectProblems(const PlausiContext &context, std::vector<Problem> *problems) {
  for (std::int32_t i = 0; i < context.getNumOfProblems(); ++i) {
    const PlausiProblem &p = *context.getProblem(i);
    Problem problem;
    problem.id = textOf(p.getId());
    problem.type = p.getType();
    problem.weight = p.getWeight();
    problem.text = textOf(p.getShortDescription());
    problem.details = textOf(p.getLongDescription());
    problem.field = hierarchyOf(p.getReferenceField());
    for (const std::int32_t *index = p.getReferenceFieldIndices(); index != nullptr && *index >= 0; ++index) {
      problem.fieldIndices.push_back(*index);
    }
    for (std::int32_t f = 0; f < p.getNumOfAccessedFields(); ++f) {
      problem.accessed.push_back(hierarchyOf(p.getAccessedField(f)));
    }
    for (std::int32_t s = 0; s < p.getNumOfPlausiSections(); ++s) problem.sections.push_back(p.getPlausiSection(s));
    problems->push_back(std::move(problem));
  }
}

}  // namespace host
}  // namespace quorel
