// LocalVariable: a variable of the rule itself. It holds a private copy of
// its value (a NilValue until set) that outlives every run; get hands out a
// copy owned by the context. A nil value cannot be assigned.

#ifndef QUOREL_MODEL_LOCAL_VARIABLE_H_
#define QUOREL_MODEL_LOCAL_VARIABLE_H_

#include <memory>

#include "quorel/model/variable.h"

namespace quorel {

class LocalVariable : public Variable {
 public:
  LocalVariable();
  // Holds value->copy().
  explicit LocalVariable(Value *value);
  virtual ~LocalVariable();

  LocalVariable(const LocalVariable &) = delete;
  LocalVariable &operator=(const LocalVariable &) = delete;

  Value *get(RuntimeContext *context) override;
  void set(RuntimeContext *context, Value *value) override;

 private:
  std::unique_ptr<Value> value_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_LOCAL_VARIABLE_H_
