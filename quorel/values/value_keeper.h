// ValueKeeper: owns the values that walks made and handed out, until the
// keeper goes.
//
// A walk that makes the values it delivers (the numbers of a sequence) gives
// them to a keeper, since consumers never destroy what they receive and may
// use it after the iterator is gone. Who keeps the keeper decides how long
// they live: a sequence shares one with its iterators; a walk that rule code
// makes through the RuntimeContext has one in the section that owns it; a
// walk inside the library keeps one beside itself. Never copied.

#ifndef QUOREL_VALUES_VALUE_KEEPER_H_
#define QUOREL_VALUES_VALUE_KEEPER_H_

#include <memory>
#include <vector>

#include "quorel/values/plausi_object.h"
#include "quorel/values/value.h"

namespace quorel {

class ValueKeeper : public PlausiObject {
 public:
  ValueKeeper();
  ~ValueKeeper() override;

  ValueKeeper(const ValueKeeper &) = delete;
  ValueKeeper &operator=(const ValueKeeper &) = delete;

  // Takes the value over and gives it back.
  Value *keep(std::unique_ptr<Value> value);

 private:
  std::vector<std::unique_ptr<Value>> values_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_KEEPER_H_
