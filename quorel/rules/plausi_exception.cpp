#include "quorel/rules/plausi_exception.h"

namespace quorel {

PlausiException::PlausiException(std::int32_t type, const char *message)
    : type_(type), message_(message != nullptr ? message : "Keine weiteren Angaben.") {}

}  // namespace quorel
