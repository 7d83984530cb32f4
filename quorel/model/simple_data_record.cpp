#include "quorel/model/simple_data_record.h"

#include "quorel/masks/text_hash.h"
#include "quorel/masks/util.h"
#include "quorel/model/field_descriptor.h"
#include "quorel/platform/exact_class.h"
#include "quorel/values/number_value.h"
#include "quorel/values/string_value.h"

namespace quorel {

namespace {

constexpr char kSizeSuffix[] = "#";

// The text a setter stores: null stores the empty text.
std::string_view textOrEmpty(const char *text) { return text != nullptr ? text : ""; }

// The value, when it is exactly a Kind and so may take new contents in place
// (a value of another class is replaced as any value is); null otherwise.
template <typename Kind>
Kind *reusable(Value *value) {
  return value != nullptr && isOfExactClass<Kind>(*value) ? static_cast<Kind *>(value) : nullptr;
}

}  // namespace

SimpleDataRecord::SimpleDataRecord() = default;

SimpleDataRecord::~SimpleDataRecord() = default;

std::int32_t SimpleDataRecord::getKeyAsHashCode(FieldDescriptor *field) {
  return field->getHierarchyHash().get();
}

std::int32_t SimpleDataRecord::getKeyForSizeAsHashCode(FieldDescriptor *field,
                                                       const std::int32_t *indices) {
  TextHash key = field->getHierarchyHash();
  key.appendIndices(indices);
  key.append(kSizeSuffix);
  return key.get();
}

Value *SimpleDataRecord::find(std::int32_t key) { return values_.find(key); }

void SimpleDataRecord::store(std::int32_t key, Value *value) {
  // The former value dies here, after the new one is in place.
  values_.put(key, std::unique_ptr<Value>(value));
}

void SimpleDataRecord::storeText(std::int32_t key, std::string_view text) {
  if (StringValue *former = reusable<StringValue>(find(key))) return former->retext(text);
  store(key, new StringValue(std::string(text)));
}

void SimpleDataRecord::storeNumber(std::int32_t key, double number) {
  if (NumberValue *former = reusable<NumberValue>(find(key))) return former->renumber(number);
  store(key, new NumberValue(number));
}

std::int32_t SimpleDataRecord::getSize(FieldDescriptor *field, std::int32_t *indices) {
  Value *size = find(getKeyForSizeAsHashCode(field, indices));
  return size == nullptr ? 0 : static_cast<std::int32_t>(size->asInteger());
}

bool SimpleDataRecord::isEmpty(FieldDescriptor *field) { return find(getKeyAsHashCode(field)) == nullptr; }

const char *SimpleDataRecord::getString(FieldDescriptor *field) {
  Value *value = find(getKeyAsHashCode(field));
  return value == nullptr ? "" : value->asString();
}

std::int64_t SimpleDataRecord::getInteger(FieldDescriptor *field) {
  Value *value = find(getKeyAsHashCode(field));
  return value == nullptr ? 0 : value->asInteger();
}

double SimpleDataRecord::getReal(FieldDescriptor *field) {
  Value *value = find(getKeyAsHashCode(field));
  return value == nullptr ? 0.0 : value->asReal();
}

void SimpleDataRecord::setString(FieldDescriptor *field, const char *text) {
  setByField_ = true;
  storeText(getKeyAsHashCode(field), textOrEmpty(text));
}

void SimpleDataRecord::setInteger(FieldDescriptor *field, std::int64_t number) {
  setByField_ = true;
  storeNumber(getKeyAsHashCode(field), static_cast<double>(number));
}

void SimpleDataRecord::setReal(FieldDescriptor *field, double number) {
  setByField_ = true;
  storeNumber(getKeyAsHashCode(field), number);
}

void SimpleDataRecord::setEmpty(FieldDescriptor *field) {
  setByField_ = true;
  store(getKeyAsHashCode(field), nullptr);
}

DataRecord *SimpleDataRecord::getSubDataRecord(FieldDescriptor *) { return this; }

Value *SimpleDataRecord::getValue(const char *name) { return find(keyOf(name)); }

std::int32_t SimpleDataRecord::keyOf(const char *name) { return Util::getHashCode(name); }

std::int32_t SimpleDataRecord::keyOfSize(const char *name) {
  TextHash key;
  key.append(name);
  key.append(kSizeSuffix);
  return key.get();
}

void SimpleDataRecord::setValueAt(std::int32_t key, const char *text) {
  if (text == nullptr) {
    store(key, nullptr);
  } else {
    storeText(key, text);
  }
}

void SimpleDataRecord::setValueAt(std::int32_t key, std::string_view text) { storeText(key, text); }

void SimpleDataRecord::setValueAt(std::int32_t key, std::int64_t number) {
  storeNumber(key, static_cast<double>(number));
}

void SimpleDataRecord::setValueAt(std::int32_t key, double number) { storeNumber(key, number); }

void SimpleDataRecord::setValue(const char *name, std::int64_t number) { setValueAt(keyOf(name), number); }

void SimpleDataRecord::setValue(const char *name, std::int32_t number) {
  setValue(name, static_cast<std::int64_t>(number));
}

void SimpleDataRecord::setValue(const char *name, double number) { setValueAt(keyOf(name), number); }

void SimpleDataRecord::setValue(const char *name, const char *text) {
  storeText(keyOf(name), textOrEmpty(text));
}

void SimpleDataRecord::setSize(const char *name, std::int32_t size) {
  setValueAt(keyOfSize(name), static_cast<std::int64_t>(size));
}

}  // namespace quorel
