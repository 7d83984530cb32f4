#include "quorel/model/index_list.h"

#include <vector>

#include "quorel/masks/util.h"

namespace quorel {

namespace {

IndexList allocate(std::int32_t count) {
  IndexList list(new std::int32_t[static_cast<std::size_t>(count) + 1]);
  list[count] = -1;
  return list;
}

}  // namespace

IndexList copyIndexList(const std::int32_t *list) {
  std::int32_t count = Util::getSizeOf(list);
  if (count == 0) return nullptr;
  IndexList copy = allocate(count);
  for (std::int32_t i = 0; i < count; ++i) copy[i] = list[i];
  return copy;
}

IndexList readIndexList(std::int32_t count, va_list args) {
  if (count < 1) return nullptr;
  IndexList list = allocate(count);
  for (std::int32_t i = 0; i < count; ++i) list[i] = va_arg(args, int);
  return list;
}

std::string indicesAsText(const std::int32_t *list) {
  std::int32_t count = Util::getSizeOf(list);
  if (count == 0) return std::string();
  // "[-2147483648]" is the longest entry.
  std::vector<char> text(static_cast<std::size_t>(count) * 13 + 1);
  Util::getIndicesAsString(text.data(), list);
  return std::string(text.data());
}

}  // namespace quorel
