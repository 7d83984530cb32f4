#include "quorel/rules/plausi.h"

#include <cstring>

#include "quorel/model/field.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/mapping.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/classification.h"

namespace quorel {

namespace {

// Puts value into slot; what the slot held before is kept in replaced. The
// same object registered twice stays one object.
template <typename Owner>
void replaceOwned(Owner &slot, Owner value, std::vector<Owner> &replaced) {
  if (slot.get() == value.get()) {
    value.release();
    return;
  }
  if (slot) replaced.push_back(std::move(slot));
  slot = std::move(value);
}

template <typename Owner>
void putOwned(NameMap<Owner> &map, const char *name, Owner value, std::vector<Owner> &replaced) {
  Owner *slot = map.find(name);
  if (slot == nullptr) {
    map.put(name, std::move(value));
  } else {
    replaceOwned(*slot, std::move(value), replaced);
  }
}

}  // namespace

void Plausi::TopicDeleter::operator()(Topic *topic) const {
  delete topic->getTypeDescriptor();
  delete topic;
}

Plausi::Plausi() = default;

// Releases in a fixed order: materials, the root topic, the classifications,
// the mapping, the material mappings.
Plausi::~Plausi() {
  materials_.clear();
  rootTopic_.reset();
  classificationsByValue_.clear();
  classificationsByCode_.clear();
  mapping_.reset();
  materialMappings_.clear();
}

Value *Plausi::getClassificationByCode(const char *code) {
  std::unique_ptr<Classification> *entry = classificationsByCode_.find(code);
  return entry != nullptr && *entry ? static_cast<Value *>(entry->get()) : &invalidValue_;
}

Value *Plausi::getClassificationByValue(const char *value) {
  Classification **entry = classificationsByValue_.find(value);
  return entry != nullptr && *entry != nullptr ? static_cast<Value *>(*entry) : &invalidValue_;
}

void Plausi::perform(PlausiContext *context) {
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
  OwnedTopic *entry = materials_.find(name);
  return entry != nullptr && *entry ? static_cast<MaterialDescriptor *>(entry->get()) : nullptr;
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
  putOwned(classificationsByCode_, code, std::unique_ptr<Classification>(classification),
           replacedClassifications_);
  if (value != nullptr) classificationsByValue_.put(value, classification);
}

void Plausi::setMapping(Mapping *mapping) {
  replaceOwned(mapping_, std::unique_ptr<Mapping>(mapping), replacedMappings_);
}

void Plausi::setMappingForMaterial(const char *name, Mapping *mapping) {
  putOwned(materialMappings_, name, std::unique_ptr<Mapping>(mapping), replacedMappings_);
}

Mapping *Plausi::getMappingForMaterial(const char *name) const {
  const std::unique_ptr<Mapping> *entry = materialMappings_.find(name);
  return entry != nullptr ? entry->get() : nullptr;
}

void Plausi::setMaterial(const char *name, Topic *topic) {
  putOwned(materials_, name, OwnedTopic(topic), replacedTopics_);
}

void Plausi::setRootTopic(Topic *topic) { replaceOwned(rootTopic_, OwnedTopic(topic), replacedTopics_); }

}  // namespace quorel
