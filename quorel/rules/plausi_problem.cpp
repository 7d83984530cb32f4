#include "quorel/rules/plausi_problem.h"

#include <cstdarg>
#include <cstring>

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
  addPlausiSection(name, name != nullptr ? std::strlen(name) : 0);
}

void PlausiProblem::addPlausiSection(const char *name, std::size_t length) {
  if (name == nullptr) {
    static constexpr char kUnknown[] = "Unbekannter Plausi-Abschnitt";
    name = kUnknown;
    length = sizeof kUnknown - 1;
  }
  if (sectionCount_ == sections_.size()) sections_.emplace_back();
  sections_[sectionCount_++].set(name, length);
}

void PlausiProblem::renew(ProblemType type, std::int32_t weight) {
  type_ = type;
  weight_ = weight;
  for (NullableText *text : {&id_, &shortDescription_, &longDescription_, &correctionInfo_, &referenceTopic_,
                             &exception_, &fieldDisplayName_, &fieldMask_, &fieldValueSpace_}) {
    text->clear();
  }
  referenceField_ = nullptr;
  referenceFieldIndices_.reset();
  accessedFields_.clear();
  sectionCount_ = 0;
  infoType_ = PROBLEM_INFO_NONE;
  fieldType_ = FieldTypeText;
  fieldLength_ = 0;
}

}  // namespace quorel
