#include "quorel/rules/plausi.h"

#include <cstring>

#include "quorel/model/field.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/platform/exact_class.h"
#include "quorel/rules/mapping.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/release_once.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/classification.h"

namespace quorel {

Plausi::Plausi() = default;

Plausi::~Plausi() {
  ReleaseOnce release;
  for (auto &entry : materials_) release.withType(entry.second);
  release.withType(rootTopic_);
  for (auto &entry : classificationsByCode_) release(entry.second);
  release(mapping_);
  for (auto &entry : materialMappings_) release(entry.second);
}

Value *Plausi::getClassificationByCode(const char *code) {
  Classification **entry = classificationsByCode_.find(code);
  return entry != nullptr && *entry != nullptr ? static_cast<Value *>(*entry) : &invalidValue_;
}

Value *Plausi::getClassificationByValue(const char *value) {
  Classification **entry = classificationsByValue_.find(value);
  return entry != nullptr && *entry != nullptr ? static_cast<Value *>(*entry) : &invalidValue_;
}

void Plausi::perform(PlausiContext *context) {
  DataRecord *record = context->getDataRecord();
  if (record != nullptr && isOfExactClass<SimpleDataRecord>(*record)) {
    static_cast<SimpleDataRecord *>(record)->prefetch();
  }
  RuntimeContext runtime(context, this);
  performImpl(&runtime, context->getFlow());
}

Value *Plausi::performFunction(const char *name, PlausiContext *context) {
  RuntimeContext runtime(context, this);
  // The result may die with the run's sections; the copy does not.
  return performFunctionImpl(&runtime, name)->copy();
}

void Plausi::performFieldCheck(const char *name, PlausiContext *context) {
  RuntimeContext runtime(context, this);
  if (!rootTopic_) throw PlausiException(EXCEPTION_NO_SUCH_FIELD, name);
  FieldDescriptor *field = rootTopic_->getField(&runtime, name);
  // The type's hierarchy has no indices: all elements share one check.
  std::string key = field->getTypeDescriptor()->getHierarchyText();
  FieldCheckProc *procedure = fieldCheckProcs_.find(key.c_str());
  if (procedure == nullptr || *procedure == nullptr) {
    throw PlausiException(EXCEPTION_NO_FIELD_CHECK, key.c_str());
  }
  // A path that ends on a nested topic reaches the procedure as null.
  (*procedure)(&runtime, dynamic_cast<Field *>(field));
}

MaterialDescriptor *Plausi::getMaterial(const char *name) {
  Topic **entry = materials_.find(name);
  return entry != nullptr && *entry != nullptr ? static_cast<MaterialDescriptor *>(*entry) : nullptr;
}

std::int32_t Plausi::getNumOfMaterials() const {
  std::int32_t count = 0;
  for (const auto &entry : materials_) count += entry.second != nullptr ? 1 : 0;
  return count;
}

MaterialDescriptor *Plausi::getMaterialAt(std::int32_t index) const {
  if (index < 0) return nullptr;
  for (const auto &entry : materials_) {
    if (entry.second != nullptr && index-- == 0) return static_cast<MaterialDescriptor *>(entry.second);
  }
  return nullptr;
}

bool Plausi::isKnownFlow(const char *flow) const {
  const char *const *flows = getFlows();
  if (flows == nullptr) return true;
  if (flow == nullptr) return false;
  for (; *flows != nullptr; ++flows) {
    if (std::strcmp(*flows, flow) == 0) return true;
  }
  return false;
}

void Plausi::setFieldCheckProc(const char *typeHierarchy, FieldCheckProc procedure) {
  fieldCheckProcs_.put(typeHierarchy, procedure);
}

void Plausi::registerClassification(Classification *classification, const char *code, const char *value) {
  classificationsByCode_.put(code, classification);
  if (value != nullptr) classificationsByValue_.put(value, classification);
}

void Plausi::setMapping(Mapping *mapping) { mapping_ = mapping; }

void Plausi::setMappingForMaterial(const char *name, Mapping *mapping) { materialMappings_.put(name, mapping); }

Mapping *Plausi::getMappingForMaterial(const char *name) const {
  Mapping *const *entry = materialMappings_.find(name);
  return entry != nullptr ? *entry : nullptr;
}

void Plausi::setMaterial(const char *name, Topic *topic) { materials_.put(name, topic); }

void Plausi::setRootTopic(Topic *topic) { rootTopic_ = topic; }

}  // namespace quorel
