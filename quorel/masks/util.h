// Util: stateless helpers for hashing, index lists, tolerant comparison and
// the conversion of text through masks. Every operation is static; output
// buffers belong to the caller.

#ifndef QUOREL_MASKS_UTIL_H_
#define QUOREL_MASKS_UTIL_H_

#include <cstdint>

namespace quorel {

class Util {
 public:
  Util() = delete;

  // hash = hash * 31 + byte over the text, each byte taken as signed 8-bit,
  // wrapping at 32 bits. Null and "" give 0. Every name-keyed map of the
  // library keys on this code alone.
  static std::int32_t getHashCode(const char *text);
};

}  // namespace quorel

#endif  // QUOREL_MASKS_UTIL_H_
