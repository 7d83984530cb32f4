#include "quorel/rules/plausi_exception.h"

namespace quorel {

PlausiException::PlausiException(std::int32_t type, const char *message)
    : type_(static_cast<ExceptionType>(type)), message_(message != nullptr ? message : "Keine weiteren Angaben.") {}

}  // namespace quorel
