#include "quorel/values/plausi_object.h"

namespace quorel {

PlausiObject::~PlausiObject() = default;

}  // namespace quorel
