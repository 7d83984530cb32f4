#include "quorel/rules/plausi_problem.h"

#include <cstdarg>

namespace quorel {

PlausiProblem::PlausiProblem(ProblemType type, std::int32_t weight) : type_(type), weight_(weight) {}

void PlausiProblem::setReferenceFieldIndices(std::int32_t count, ...) {
  va_list args;
  va_start(args, count);
  referenceFieldIndices_ = readIndexList(count, args);
  va_end(args);
}

void PlausiProblem::addAccessedField(FieldDescriptor *field) {
  if (field != nullptr) accessedFields_.push_back(field);
}

void PlausiProblem::addPlausiSection(const char *name) {
  sections_.emplace_back(name != nullptr ? name : "Unbekannter Plausi-Abschnitt");
}

}  // namespace quorel
