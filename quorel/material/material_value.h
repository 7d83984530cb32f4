// MaterialValue: one field of one record of a query into a material. The
// field is read from the record on first use, once, without noting a field
// access; from then on the value behaves exactly as the value read, with the
// level rule applied afresh with that value on the left. The value read is
// owned by the MaterialValue, so it stays valid as long as the MaterialValue
// does, whichever section was current when it was read.

#ifndef QUOREL_MATERIAL_MATERIAL_VALUE_H_
#define QUOREL_MATERIAL_MATERIAL_VALUE_H_

#include <memory>

#include "quorel/values/value.h"

namespace quorel {

class DataRecord;
class Field;
class RuntimeContext;

class MaterialValue : public Value {
 public:
  MaterialValue(RuntimeContext *context, Field *field, DataRecord *record);
  ~MaterialValue() override;

  bool isNil() override;
  bool isValid() override;
  bool isRange() override;
  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  std::tm *asDate() override;
  ValueIterator *asRange() override;
  OperatorLevel getOperatorLevel() override;
  // A copy of the value read, of its kind.
  Value *copy() override;

 protected:
  bool eqImpl(Value *other) override;
  bool neImpl(Value *other) override;
  bool gtImpl(Value *other) override;
  bool geImpl(Value *other) override;
  bool ltImpl(Value *other) override;
  bool leImpl(Value *other) override;
  bool containsImpl(Value *other) override;

 private:
  Value *getInnerValue();

  RuntimeContext *context_;
  Field *field_;
  DataRecord *record_;
  std::unique_ptr<Value> inner_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_MATERIAL_VALUE_H_
