// The guarded read that Field and FeatureField share: an empty field reads
// as an InvalidValue, a conversion failure (type 8) as an InconvertibleValue
// carrying its message, any other failure passes on. At debug level each
// outcome leaves a line "<who>::get(<hierarchy>) => ...".

#ifndef QUOREL_MODEL_FIELD_READ_H_
#define QUOREL_MODEL_FIELD_READ_H_

#include <cstdint>

#include "quorel/logging/logger.h"
#include "quorel/masks/util.h"
#include "quorel/model/data_record.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/platform/exact_class.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/string_value.h"
#include "quorel/values/value.h"

namespace quorel {

class FieldDescriptor;

// What make() reads a non-empty field through. The library's own record has
// already found the field's value while it answered whether the field is
// empty, and the getters read that value as the record would; any other
// record is asked through its getters.
//
// A number read from a text of the library's own record that is no number
// does not throw, as the record's getter would: a check meets many faulty
// values, and a throw costs far more than the reading. The read answers
// false and keeps the message, which readField turns into the value that
// the getter's failure gives.
class FieldSource {
 public:
  FieldSource(DataRecord *record, FieldDescriptor *field, Value *stored)
      : record_(record), field_(field), stored_(stored) {}

  const char *getString() const { return stored_ != nullptr ? stored_->asString() : record_->getString(field_); }
  bool readInteger(std::int64_t *number) {
    if (holdsOwnText()) return kept(Util::readInteger(stored_->asString(), nullptr, number));
    *number = stored_ != nullptr ? stored_->asInteger() : record_->getInteger(field_);
    return true;
  }
  bool readReal(double *number) {
    if (holdsOwnText()) return kept(Util::readReal(stored_->asString(), nullptr, number));
    *number = stored_ != nullptr ? stored_->asReal() : record_->getReal(field_);
    return true;
  }
  // The message of a read that answered false, or null.
  const char *failure() const { return failure_; }

 private:
  // A StringValue reads its number as Util does; a subclass may not.
  bool holdsOwnText() const { return stored_ != nullptr && isOfExactClass<StringValue>(*stored_); }
  bool kept(const char *failure) {
    failure_ = failure;
    return failure == nullptr;
  }

  DataRecord *record_;
  FieldDescriptor *field_;
  Value *stored_;
  const char *failure_ = nullptr;
};

namespace field_read {

// The debug lines of the outcomes, for a logger that takes them.
void logEmpty(RuntimeContext *context, const char *who, FieldDescriptor *field);
void logValue(RuntimeContext *context, const char *who, FieldDescriptor *field, Value *value);
// A field whose conversion failed with the message: its InconvertibleValue,
// logged at debug level.
Value *inconvertible(RuntimeContext *context, const char *who, FieldDescriptor *field, const char *message,
                     bool debugging);

// A value that make() failed to give.
[[noreturn]] void refuseMissingValue();

}  // namespace field_read

// locate() finds the record that holds the field; make(source) builds the
// value of a non-empty field from a FieldSource on it, or answers null after
// a read of the source failed. Both run inside the guard. They are
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
    if (isOfExactClass<SimpleDataRecord>(*record)) {
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
    FieldSource source(record, field, stored);
    Value *result = make(source);
    if (const char *failure = source.failure()) {
      return field_read::inconvertible(context, who, field, failure, debugging);
    }
    if (result == nullptr) field_read::refuseMissingValue();
    if (debugging) field_read::logValue(context, who, field, result);
    return result;
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) throw;
    return field_read::inconvertible(context, who, field, e.getMessage(), debugging);
  }
}

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_READ_H_
