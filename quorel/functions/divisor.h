// The divisor test that division and MODULO share.

#ifndef QUOREL_FUNCTIONS_DIVISOR_H_
#define QUOREL_FUNCTIONS_DIVISOR_H_

namespace quorel {

class Value;

// "Division durch 0." (type 11).
[[noreturn]] void throwDivisionByZero();

// Fails with "Division durch 0." when b is not usable or equals the number 0
// (within the tolerance of numbers; a range of zeros counts as 0).
void checkDivisor(Value *b);

}  // namespace quorel

#endif  // QUOREL_FUNCTIONS_DIVISOR_H_
