// InitParams: named start values that the host hands to a run. The values
// stay the caller's until clear(), which deletes them. Not copied.

#ifndef QUOREL_RULES_INIT_PARAMS_H_
#define QUOREL_RULES_INIT_PARAMS_H_

#include "quorel/rules/name_map.h"

namespace quorel {

class Value;

class InitParams {
 public:
  InitParams() = default;
  InitParams(const InitParams &) = delete;
  InitParams &operator=(const InitParams &) = delete;

  // Replaces the entry of the name's hash; a former value is dropped, not deleted.
  void set(const char *name, Value *value);
  // The value, or null for a name never set.
  Value *get(const char *name) const;
  // Deletes every stored value and empties the map.
  void clear();

 private:
  NameMap<Value *> entries_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_INIT_PARAMS_H_
