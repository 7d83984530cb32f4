#include "quorel/masks/util.h"

namespace quorel {

std::int32_t Util::getHashCode(const char *text) {
  if (text == nullptr) return 0;
  // Unsigned arithmetic gives the 32-bit wrap without undefined behaviour.
  std::uint32_t hash = 0;
  for (const char *p = text; *p != '\0'; ++p) {
    hash = hash * 31u + static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(*p)));
  }
  return static_cast<std::int32_t>(hash);
}

}  // namespace quorel
