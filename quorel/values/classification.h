// Classification: a coded value, a code with a readable value text and, in a
// hierarchical code list, child classifications.
//
// In conversions and comparisons a classification is its code: each
// comparison is handed to the code with the level rule applied anew. In
// contains it stands for the set of its leaves: a classification with
// children contains what one of its children contains, never its own code.
// The code and the children are owned copies; copy() is deep.

#ifndef QUOREL_VALUES_CLASSIFICATION_H_
#define QUOREL_VALUES_CLASSIFICATION_H_

#include <memory>
#include <vector>

#include "quorel/rules/nullable_text.h"
#include "quorel/values/value.h"

namespace quorel {

class Classification : public Value {
 public:
  // Keeps code->copy() and a copy of the value text, which may be null.
  Classification(Value *code, const char *value);
  ~Classification() override;

  Value *getCode() const { return code_.get(); }
  const char *getValue() const { return value_.get(); }
  // Appends a copy of the child, which must be complete.
  void addClassification(Classification *child);

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
  std::unique_ptr<Value> code_;
  NullableText value_;
  std::vector<std::unique_ptr<Classification>> children_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_CLASSIFICATION_H_
