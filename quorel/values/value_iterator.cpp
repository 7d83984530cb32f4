#include "quorel/values/value_iterator.h"

namespace quorel {

void ValueIterator::keepDeliveredIn(ValueKeeper *) {}

}  // namespace quorel
