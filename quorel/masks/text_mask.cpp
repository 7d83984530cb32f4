// Text masks: a text tested position by position against a mask.

#include <cstring>

#include "quorel/masks/mask_messages.h"
#include "quorel/masks/util.h"

namespace quorel {

namespace {

bool isAlignment(char c) { return c == 'L' || c == 'M' || c == 'R'; }

bool isFill(char c) {
  return c != '\0' && c != '\\' && c != 'c' && c != 'Z' && c != 'z' && c != '.' && !isAlignment(c);
}

// Whether the value's character fits one position of the mask.
bool fits(char element, bool escaped, char c) {
  if (escaped) return c == element;
  switch (element) {
    case '@': return c == ' ';
    case 'Z': return !Util::isLowerCase(c);
    case 'z': return !Util::isUpperCase(c);
    default: return c == element;
  }
}

}  // namespace

void Util::stringToString(const char *value, const char *mask) {
  if (value == nullptr || mask == nullptr || *mask == '\0') return;
  const char *m = mask;
  if (isAlignment(*m)) {
    ++m;
    if (isFill(*m)) ++m;
  }
  const std::size_t length = std::strlen(value);
  // Every position advances, also behind the end of the value, so the
  // position is also the count of positions read.
  std::size_t position = 0;
  std::size_t minimal = 0;
  for (; *m != '\0'; ++m) {
    char element = *m;
    if (element == '.') {
      minimal = position;
      continue;
    }
    bool escaped = element == '\\';
    if (escaped) {
      if (m[1] == '\0') break;  // a backslash at the very end is ignored
      element = *++m;
    }
    // A 'c' takes any character; other positions test one while the value
    // lasts.
    bool any = element == 'c' && !escaped;
    if (!any && position < length && !fits(element, escaped, value[position])) {
      mask_messages::fail(mask_messages::kValueDoesNotFitMask);
    }
    ++position;
  }
  if (position < length) mask_messages::fail(mask_messages::kMaximalLength);
  if (length < minimal) mask_messages::fail(mask_messages::kMinimalLength);
}

}  // namespace quorel
