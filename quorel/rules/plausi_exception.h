// The one exception class of the library and the numbers it carries.
//
// Every operation that cannot do its work throws a PlausiException by value;
// callers catch it by reference. The object owns a copy of its message, so the
// text outlives whatever was passed in, and every copy of the object owns its
// own text as well.

#ifndef QUOREL_RULES_PLAUSI_EXCEPTION_H_
#define QUOREL_RULES_PLAUSI_EXCEPTION_H_

#include <cstdint>
#include <string>

namespace quorel {

// Hosts and rule modules compare these numbers; they never change.
enum ExceptionType : std::int32_t {
  EXCEPTION_GENERAL = 0,
  EXCEPTION_LOAD_LIBRARY = 1,
  EXCEPTION_LOAD_ENTRY = 2,
  EXCEPTION_UNLOAD_ENTRY = 3,
  EXCEPTION_NO_FIELD_CHECK = 4,
  EXCEPTION_NO_SUCH_FIELD = 5,
  EXCEPTION_MATERIAL_ACCESS = 6,
  EXCEPTION_ILLEGAL_ACCESS = 7,
  EXCEPTION_CONVERSION = 8,
  EXCEPTION_ILLEGAL_ARGUMENT = 9,
  EXCEPTION_ITERATION = 10,
  EXCEPTION_DIVISION_BY_ZERO = 11,
};

class PlausiException {
 public:
  // A null message stands for "Keine weiteren Angaben.".
  PlausiException(std::int32_t type = EXCEPTION_GENERAL, const char *message = nullptr);

  ExceptionType getType() const { return type_; }
  // Lives as long as this object.
  const char *getMessage() const { return message_.c_str(); }

 private:
  ExceptionType type_;
  std::string message_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_EXCEPTION_H_
