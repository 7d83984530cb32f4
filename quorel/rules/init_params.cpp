#include "quorel/rules/init_params.h"

#include "quorel/values/value.h"

namespace quorel {

void InitParams::set(const char *name, Value *value) { entries_.put(name, value); }

Value *InitParams::get(const char *name) const {
  Value *const *value = entries_.find(name);
  return value != nullptr ? *value : nullptr;
}

void InitParams::clear() {
  for (auto &entry : entries_) delete entry.second;
  entries_.clear();
}

}  // namespace quorel
