#include "quorel/rules/mapping.h"

namespace quorel {

void Mapping::put(const char *key, const char *value) { entries_.put(key, value); }

const char *Mapping::get(const char *key) const {
  const std::string *text = entries_.find(key);
  return text != nullptr ? text->c_str() : nullptr;
}

}  // namespace quorel
