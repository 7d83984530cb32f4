#include "quorel/model/local_array.h"

#include <cstdarg>

#include "quorel/masks/util.h"
#include "quorel/model/model_messages.h"
#include "quorel/rules/plausi_exception.h"

namespace quorel {

LocalArray::LocalArray(std::int32_t count, ...) {
  va_list args;
  va_start(args, count);
  dimension_ = readIndexList(count, args);
  va_end(args);
}

std::int32_t LocalArray::getSize(RuntimeContext *, const std::int32_t *indices) {
  const std::int32_t *dimension = getDimension();
  if (Util::isValidArrayAccess(dimension, indices)) return dimension[Util::getSizeOf(indices)];
  if (Util::isValidElementAccess(dimension, indices)) return 1;
  throw PlausiException(EXCEPTION_ILLEGAL_ACCESS, messages::kIllegalArrayAccess);
}

std::int32_t LocalArray::getSize(RuntimeContext *context, std::int32_t count, ...) {
  va_list args;
  va_start(args, count);
  IndexList indices = readIndexList(count, args);
  va_end(args);
  return getSize(context, indices.get());
}

LocalVariable *LocalArray::getElement(RuntimeContext *, const std::int32_t *indices) {
  if (!Util::isValidElementAccess(getDimension(), indices)) {
    throw PlausiException(EXCEPTION_ILLEGAL_ACCESS, messages::kIllegalElementAccess);
  }
  return elements_.getOrMake(indices, [] { return std::make_unique<LocalVariable>(); });
}

LocalVariable *LocalArray::getElement(RuntimeContext *context, std::int32_t count, ...) {
  va_list args;
  va_start(args, count);
  IndexList indices = readIndexList(count, args);
  va_end(args);
  return getElement(context, indices.get());
}

}  // namespace quorel
