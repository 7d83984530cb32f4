#include "quorel/material/material.h"

#include "quorel/logging/logger.h"
#include "quorel/material/data_record_set.h"
#include "quorel/material/material_access.h"
#include "quorel/material/material_value.h"
#include "quorel/model/material_descriptor.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/iterator_iterator.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/transient_walk.h"
#include "quorel/values/value_set.h"

namespace quorel {

namespace {

// Shared by a material and its copies; the count lives in the pool too.
template <typename T>
std::shared_ptr<T> shareFromPool(T *object) {
  return std::shared_ptr<T>(object, std::default_delete<T>(), PoolAllocator<T>());
}

}  // namespace

Material::Material(RuntimeContext *context, MaterialDescriptor *material, RecordFilter *filter,
                   FieldSet *fields)
    : Material(context, material, shareFromPool(filter), shareFromPool(fields)) {}

Material::Material(RuntimeContext *context, MaterialDescriptor *material, std::shared_ptr<RecordFilter> filter,
                   std::shared_ptr<FieldSet> fields)
    : context_(context), material_(material), fields_(std::move(fields)), filter_(std::move(filter)) {}

Material::~Material() = default;

namespace {

MaterialAccess *availableAccess(RuntimeContext *context, MaterialDescriptor *material) {
  MaterialAccess *access = context->getMaterialAccess();
  if (access == nullptr || !access->isMaterialAvailable(material)) {
    throw PlausiException(EXCEPTION_MATERIAL_ACCESS, material->getMaterialName());
  }
  return access;
}

}  // namespace

void Material::readRecords(DataRecordSet *records) {
  availableAccess(context_, material_)->readRecords(records, material_, filter_.get(), fields_.get());
  Logger *logger = context_->getLogger();
  if (logger->isDebugOn()) {
    logger->debug() << "Material::asRange() => records = " << records->getNumOfDataRecords();
  }
}

ValueIterator *Material::walk(std::vector<std::unique_ptr<Value>> *keep) {
  auto walk = std::make_unique<IteratorIterator>();
  DataRecordSet records;
  readRecords(&records);
  for (std::int32_t r = 0; r < records.getNumOfDataRecords(); ++r) {
    for (std::int32_t f = 0; f < fields_->getNumOfFields(); ++f) {
      Field *field = fields_->getField(f);
      DataRecord *record = records.getDataRecord(r);
      Value *value;
      if (keep == nullptr) {
        value = context_->createMaterialValue(field, record);
      } else {
        keep->push_back(std::make_unique<MaterialValue>(context_, field, record));
        value = keep->back().get();
      }
      // Reads the field now; a field that could not be read refuses here.
      walk->addIterator(value->asRange());
    }
  }
  return walk.release();
}

ValueIterator *Material::asRange() { return walk(nullptr); }

Value *Material::getFirstValue() {
  if (firstValue_ != nullptr) return firstValue_;
  // The walk of asRange, with its values kept here rather than in the
  // current section, since the first value is kept for good. A walk that
  // fails keeps nothing, and the next call queries again.
  std::vector<std::unique_ptr<Value>> values;
  Value *first = nullptr;
  {
    std::unique_ptr<ValueIterator> elements(walk(&values));
    if (elements->hasNext()) first = elements->next();
  }
  if (first == nullptr) {
    values.push_back(std::make_unique<NilValue>());
    first = values.back().get();
  }
  firstQuery_ = std::move(values);
  firstValue_ = first;
  return firstValue_;
}

const char *Material::asString() { return getFirstValue()->asString(); }
std::int64_t Material::asInteger() { return getFirstValue()->asInteger(); }
double Material::asReal() { return getFirstValue()->asReal(); }
bool Material::asBool() { return getFirstValue()->asBool(); }

Value *Material::copy() { return new Material(context_, material_, filter_, fields_); }

bool Material::containsImpl(Value *other) {
  ValueSet values;
  {
    TransientWalk walk(other);
    while (walk.hasNext()) values.addValue(walk.next());
  }
  if (values.getNumOfValues() != fields_->getNumOfFields()) {
    throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT,
                          "Fehler beim Materialzugriff: Anzahl der Werte stimmt nicht mit der Anzahl der "
                          "Felder \xFC" "berein.");
  }
  return availableAccess(context_, material_)->containsValues(material_, filter_.get(), fields_.get(), &values);
}

}  // namespace quorel
