// The guarded read that Field and FeatureField share: an empty field reads
// as an InvalidValue, a conversion failure (type 8) as an InconvertibleValue
// carrying its message, any other failure passes on. At debug level each
// outcome leaves a line "<who>::get(<hierarchy>) => ...".

#ifndef QUOREL_MODEL_FIELD_READ_H_
#define QUOREL_MODEL_FIELD_READ_H_

#include <cstdint>
#include <typeinfo>

#include "quorel/logging/logger.h"
#include "quorel/model/data_record.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

namespace quorel {

class FieldDescriptor;

// What make() reads a non-empty field through. The library's own record has
// already found the field's value while it answered whether the field is
// empty, and the getters read that value as the record would; any other
// record is asked through its getters.
class FieldSource {
 public:
  FieldSource(DataRecord *record, FieldDescriptor *field, Value *stored)
      : record_(record), field_(field), stored_(stored) {}

  const char *getString() const { return stored_ != nullptr ? stored_->asString() : record_->getString(field_); }
  std::int64_t getInteger() const {
    return stored_ != nullptr ? stored_->asInteger() : record_->getInteger(field_);
  }
  double getReal() const { return stored_ != nullptr ? stored_->asReal() : record_->getReal(field_); }

 private:
  DataRecord *record_;
  FieldDescriptor *field_;
  Value *stored_;
};

namespace field_read {

// The debug lines of the outcomes, for a logger that takes them.
void logEmpty(RuntimeContext *context, const char *who, FieldDescriptor *field);
void logValue(RuntimeContext *context, const char *who, FieldDescriptor *field, Value *value);
void logInconvertible(RuntimeContext *context, const char *who, FieldDescriptor *field,
                      const PlausiException &failure);

// A value that make() failed to give.
[[noreturn]] void refuseMissingValue();

}  // namespace field_read

// locate() finds the record that holds the field; make(source) builds the
// value of a non-empty field from a FieldSource on it. Both run inside the guard. They are
// template parameters, and the debug level is asked here, so that a read
// costs no call it does not need.
template <typename Locate, typename Make>
Value *readField(RuntimeContext *context, const char *who, FieldDescriptor *field, Locate locate, Make make) {
  bool debugging = context->getLogger()->isDebugOn();
  try {
    DataRecord *record = locate();
    // The exact class only: a subclass may answer the getters otherwise.
    Value *stored = nullptr;
    bool empty;
    if (typeid(*record) == typeid(SimpleDataRecord)) {
      stored = static_cast<SimpleDataRecord *>(record)->getStoredValue(field);
      empty = stored == nullptr;
    } else {
      empty = record->isEmpty(field);
    }
    if (empty) {
      Value *result = context->createInvalidValue();
      if (debugging) field_read::logEmpty(context, who, field);
      return result;
    }
    Value *result = make(FieldSource(record, field, stored));
    if (result == nullptr) field_read::refuseMissingValue();
    if (debugging) field_read::logValue(context, who, field, result);
    return result;
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) throw;
    Value *result = context->createInconvertibleValue(e.getMessage());
    if (debugging) field_read::logInconvertible(context, who, field, e);
    return result;
  }
}

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_READ_H_
