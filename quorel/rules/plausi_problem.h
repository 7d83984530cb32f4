// PlausiProblem: one finding of a run, a plain record that rule code fills and
// the host reads. It keeps private copies of all texts, of the index list and
// of the section names. FieldDescriptor pointers are references into the
// topics of the Plausi, which must outlive the problem's readers.
//
// Made by PlausiContext::createProblem and owned by that context; not copied.
// A context that begins the next record keeps its problems' memory and hands
// it to the problems of that record (see PlausiContext::reset).

#ifndef QUOREL_RULES_PLAUSI_PROBLEM_H_
#define QUOREL_RULES_PLAUSI_PROBLEM_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "quorel/model/field_type.h"
#include "quorel/model/index_list.h"
#include "quorel/rules/nullable_text.h"
#include "quorel/rules/problem_type.h"

namespace quorel {

class FieldDescriptor;

class PlausiProblem {
 public:
  PlausiProblem(ProblemType type, std::int32_t weight);

  PlausiProblem(const PlausiProblem &) = delete;
  PlausiProblem &operator=(const PlausiProblem &) = delete;

  ProblemType getType() const { return type_; }
  std::int32_t getWeight() const { return weight_; }

  // Text setters copy a non-null argument and ignore null; getters give the
  // stored text or null.
  void setId(const char *text) { id_.set(text); }
  const char *getId() const { return id_.get(); }
  void setShortDescription(const char *text) { shortDescription_.set(text); }
  const char *getShortDescription() const { return shortDescription_.get(); }
  void setLongDescription(const char *text) { longDescription_.set(text); }
  const char *getLongDescription() const { return longDescription_.get(); }
  void setCorrectionInfo(const char *text) { correctionInfo_.set(text); }
  const char *getCorrectionInfo() const { return correctionInfo_.get(); }
  void setReferenceTopic(const char *text) { referenceTopic_.set(text); }
  const char *getReferenceTopic() const { return referenceTopic_.get(); }

  void setReferenceField(FieldDescriptor *field) { referenceField_ = field; }
  FieldDescriptor *getReferenceField() const { return referenceField_; }

  // Stores count indices followed by -1; a count below 1 stores null.
  void setReferenceFieldIndices(std::int32_t count, ...);
  std::int32_t *getReferenceFieldIndices() const { return referenceFieldIndices_.get(); }

  // Null is ignored; repeats are kept.
  void addAccessedField(FieldDescriptor *field);
  std::int32_t getNumOfAccessedFields() const { return static_cast<std::int32_t>(accessedFields_.size()); }
  FieldDescriptor *getAccessedField(std::int32_t index) const { return accessedFields_[index]; }

  // Null becomes "Unbekannter Plausi-Abschnitt".
  void addPlausiSection(const char *name);
  // The same for a name whose length the caller knows (a null name's is
  // not read).
  void addPlausiSection(const char *name, std::size_t length);
  std::int32_t getNumOfPlausiSections() const { return static_cast<std::int32_t>(sectionCount_); }
  const char *getPlausiSection(std::int32_t index) const { return sections_[index].get(); }
  std::size_t getPlausiSectionLength(std::int32_t index) const { return sections_[index].size(); }

  void setException(const char *text) { exception_.set(text); }
  const char *getException() const { return exception_.get(); }
  bool isExceptionOccured() const { return exception_.isSet(); }

  void setInfoType(ProblemInfoType type) { infoType_ = type; }
  ProblemInfoType getInfoType() const { return infoType_; }
  void setFieldType(FieldType type) { fieldType_ = type; }
  FieldType getFieldType() const { return fieldType_; }
  void setFieldDisplayName(const char *text) { fieldDisplayName_.set(text); }
  const char *getFieldDisplayName() const { return fieldDisplayName_.get(); }
  void setFieldMask(const char *text) { fieldMask_.set(text); }
  const char *getFieldMask() const { return fieldMask_.get(); }
  void setFieldLength(std::int32_t length) { fieldLength_ = length; }
  std::int32_t getFieldLength() const { return fieldLength_; }
  void setFieldValueSpace(const char *text) { fieldValueSpace_.set(text); }
  const char *getFieldValueSpace() const { return fieldValueSpace_.get(); }

 private:
  friend class PlausiContext;

  // Makes this a new problem of the given type and weight, with the memory
  // of the former one.
  void renew(ProblemType type, std::int32_t weight);

  ProblemType type_;
  std::int32_t weight_;
  NullableText id_;
  NullableText shortDescription_;
  NullableText longDescription_;
  NullableText correctionInfo_;
  NullableText referenceTopic_;
  FieldDescriptor *referenceField_ = nullptr;
  IndexList referenceFieldIndices_;
  std::vector<FieldDescriptor *> accessedFields_;
  // The first sectionCount_ names are this problem's; those after them keep
  // memory for the next problem made in this one's place.
  std::vector<NullableText> sections_;
  std::size_t sectionCount_ = 0;
  NullableText exception_;
  ProblemInfoType infoType_ = PROBLEM_INFO_NONE;
  FieldType fieldType_ = FieldTypeText;
  NullableText fieldDisplayName_;
  NullableText fieldMask_;
  std::int32_t fieldLength_ = 0;
  NullableText fieldValueSpace_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_PROBLEM_H_
