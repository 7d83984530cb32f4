// NameMap: an ordered map keyed by Util::getHashCode of a name. The name text
// itself is not kept, so two names with the same code are one entry: a later
// put replaces the former value and a lookup finds it under either name. All
// name-keyed registries of the library are built on it.

#ifndef QUOREL_RULES_NAME_MAP_H_
#define QUOREL_RULES_NAME_MAP_H_

#include <cstdint>
#include <map>
#include <utility>

#include "quorel/masks/util.h"

namespace quorel {

template <typename T>
class NameMap {
 public:
  using Entries = std::map<std::int32_t, T>;

  void put(const char *name, T value) { entries_[Util::getHashCode(name)] = std::move(value); }

  // The entry stored under the name's code, or null.
  T *find(const char *name) {
    auto it = entries_.find(Util::getHashCode(name));
    return it == entries_.end() ? nullptr : &it->second;
  }
  const T *find(const char *name) const {
    auto it = entries_.find(Util::getHashCode(name));
    return it == entries_.end() ? nullptr : &it->second;
  }

  typename Entries::iterator begin() { return entries_.begin(); }
  typename Entries::iterator end() { return entries_.end(); }
  typename Entries::const_iterator begin() const { return entries_.begin(); }
  typename Entries::const_iterator end() const { return entries_.end(); }
  std::size_t size() const { return entries_.size(); }
  void clear() { entries_.clear(); }

 private:
  Entries entries_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_NAME_MAP_H_
