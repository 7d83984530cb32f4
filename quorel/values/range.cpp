#include "quorel/values/range.h"

#include "quorel/values/transient_walk.h"
#include "quorel/values/value_messages.h"

namespace quorel {

bool Range::isNil() { return false; }
bool Range::isValid() { return true; }
bool Range::isRange() { return true; }
std::tm *Range::asDate() { messages::refuseConversion(messages::kRangeToDate); }
OperatorLevel Range::getOperatorLevel() { return RANGE_LEVEL; }

bool Range::compareElements(Value *other, Comparison op) {
  TransientWalk mine(this);
  if (other->isRange()) {
    TransientWalk theirs(other);
    while (mine.hasNext() && theirs.hasNext()) {
      Value *y = theirs.next();
      Value *x = mine.next();
      if (!(x->*op)(y)) return false;
    }
    // Ranges of different lengths stand in no relation.
    return !mine.hasNext() && !theirs.hasNext();
  }
  while (mine.hasNext()) {
    if (!(mine.next()->*op)(other)) return false;
  }
  return true;
}

bool Range::eqImpl(Value *other) { return compareElements(other, &Value::eq); }
bool Range::neImpl(Value *other) { return compareElements(other, &Value::ne); }
bool Range::gtImpl(Value *other) { return compareElements(other, &Value::gt); }
bool Range::geImpl(Value *other) { return compareElements(other, &Value::ge); }
bool Range::ltImpl(Value *other) { return compareElements(other, &Value::lt); }
bool Range::leImpl(Value *other) { return compareElements(other, &Value::le); }

}  // namespace quorel
