#include "quorel/values/value_messages.h"

#include "quorel/rules/plausi_exception.h"

namespace quorel {
namespace messages {

void refuseConversion(const char *message) { throw PlausiException(EXCEPTION_CONVERSION, message); }

}  // namespace messages
}  // namespace quorel
