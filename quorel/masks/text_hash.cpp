#include "quorel/masks/text_hash.h"

namespace quorel {

void TextHash::appendIndices(const std::int32_t *indices) {
  if (indices == nullptr) return;
  for (; *indices >= 0; ++indices) {
    // The decimal digits of a non-negative entry, as %d writes them.
    char digits[10];
    int count = 0;
    std::int32_t rest = *indices;
    do {
      digits[count++] = static_cast<char>('0' + rest % 10);
      rest /= 10;
    } while (rest > 0);
    append('[');
    while (count > 0) append(digits[--count]);
    append(']');
  }
}

}  // namespace quorel
