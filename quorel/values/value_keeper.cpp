#include "quorel/values/value_keeper.h"

namespace quorel {

ValueKeeper::ValueKeeper() = default;

ValueKeeper::~ValueKeeper() = default;

Value *ValueKeeper::keep(std::unique_ptr<Value> value) {
  values_.push_back(std::move(value));
  return values_.back().get();
}

}  // namespace quorel
