#include "quorel/functions/divisor.h"

#include "quorel/rules/plausi_exception.h"
#include "quorel/values/number_value.h"

namespace quorel {

void throwDivisionByZero() { throw PlausiException(EXCEPTION_DIVISION_BY_ZERO, "Division durch 0."); }

void checkDivisor(Value *b) {
  if (!b->isUsable()) throwDivisionByZero();
  NumberValue zero(0.0);
  if (b->eq(&zero)) throwDivisionByZero();
}

}  // namespace quorel
