#include "quorel/platform/case_compare.h"

namespace quorel {
namespace platform {

namespace {

int foldAsciiLetter(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? c - 'A' + 'a' : c;
}

}  // namespace

int compareIgnoringCase(const char *a, const char *b, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    int ca = foldAsciiLetter(static_cast<unsigned char>(a[i]));
    int cb = foldAsciiLetter(static_cast<unsigned char>(b[i]));
    if (ca != cb || ca == 0) return ca - cb;
  }
  return 0;
}

int compareIgnoringCase(const char *a, const char *b) {
  return compareIgnoringCase(a, b, static_cast<std::size_t>(-1));
}

}  // namespace platform
}  // namespace quorel
