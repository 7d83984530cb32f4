#include "quorel/model/index_list.h"

#include <charconv>

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

void appendIndicesAsText(std::string *text, const std::int32_t *list) {
  if (list == nullptr) return;
  for (; *list >= 0; ++list) {
    char digits[12];
    std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, *list);
    text->push_back('[');
    text->append(digits, end.ptr);
    text->push_back(']');
  }
}

}  // namespace quorel
