#include "quorel/rules/plausi_problem.h"

#include <cstdarg>

namespace quorel {

PlausiProblem::PlausiProblem(ProblemType type, std::int32_t weight) : type_(type), weight_(weight) {}

void PlausiProblem::setReferenceFieldIndices(std::int32_t count, ...) {
  if (count < 1) {
    referenceFieldIndices_.reset();
    return;
  }
  auto indices = std::make_unique<std::int32_t[]>(static_cast<std::size_t>(count) + 1);
  va_list args;
  va_start(args, count);
  for (std::int32_t i = 0; i < count; ++i) indices[i] = va_arg(args, int);
  va_end(args);
  indices[count] = -1;
  referenceFieldIndices_ = std::move(indices);
}

void PlausiProblem::addAccessedField(FieldDescriptor *field) {
  if (field != nullptr) accessedFields_.push_back(field);
}

void PlausiProblem::addPlausiSection(const char *name) {
  sections_.emplace_back(name != nullptr ? name : "Unbekannter Plausi-Abschnitt");
}

}  // namespace quorel
