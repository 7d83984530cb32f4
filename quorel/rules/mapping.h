// Mapping: for one topic, the name of each field in the data source, keyed by
// the hash of the field's type hierarchy text. The mapping owns copies of the
// stored texts; it is not copied.

#ifndef QUOREL_RULES_MAPPING_H_
#define QUOREL_RULES_MAPPING_H_

#include <string>

#include "quorel/rules/name_map.h"

namespace quorel {

class Mapping {
 public:
  Mapping() = default;
  Mapping(const Mapping &) = delete;
  Mapping &operator=(const Mapping &) = delete;

  // Stores a copy of value under the key's hash; value must not be null.
  void put(const char *key, const char *value);
  // The stored text, or null.
  const char *get(const char *key) const;

 private:
  NameMap<std::string> entries_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_MAPPING_H_
