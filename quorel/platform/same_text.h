// sameText: whether two texts are equal, compared where they are used. The
// texts so compared (masks, patterns, date texts) are a few bytes long, and
// for them a call into the C library costs more than the comparison.

#ifndef QUOREL_PLATFORM_SAME_TEXT_H_
#define QUOREL_PLATFORM_SAME_TEXT_H_

namespace quorel {

// Both texts end in a NUL; equal as strcmp would find them.
inline bool sameText(const char *a, const char *b) {
  for (; *a == *b; ++a, ++b) {
    if (*a == '\0') return true;
  }
  return false;
}

}  // namespace quorel

#endif  // QUOREL_PLATFORM_SAME_TEXT_H_
