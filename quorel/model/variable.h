// Variable: a place that gives a value and takes one. Field is such a place
// in the record under check, LocalVariable one of the rule itself.
// Variables are destroyed through their own type, never through this class.

#ifndef QUOREL_MODEL_VARIABLE_H_
#define QUOREL_MODEL_VARIABLE_H_

namespace quorel {

class RuntimeContext;
class Value;

class Variable {
 public:
  // The current value, owned by the context's current section.
  virtual Value *get(RuntimeContext *context) = 0;
  virtual void set(RuntimeContext *context, Value *value) = 0;

 protected:
  Variable() = default;
  Variable(const Variable &) = default;
  Variable &operator=(const Variable &) = default;
  ~Variable() = default;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_VARIABLE_H_
