// copyText: puts a text into a string that keeps its memory from one use to
// the next. std::string::assign takes the general way of replace, which
// guards against a source inside the string itself and costs several times
// the copy of a short text; the library's run objects copy texts by the
// million (problem texts, dates, record fields), almost all from elsewhere.

#ifndef QUOREL_VALUES_TEXT_COPY_H_
#define QUOREL_VALUES_TEXT_COPY_H_

#include <cstddef>
#include <functional>

namespace quorel {

// The first length bytes of text into *to, which keeps its capacity; text
// may lie inside *to. Text is std::string or PooledText.
template <typename Text>
void copyText(Text *to, const char *text, std::size_t length) {
  std::less_equal<const char *> notAfter;
  if (notAfter(to->data(), text) && notAfter(text, to->data() + to->size())) {
    to->assign(text, length);
    return;
  }
  to->clear();
  to->append(text, length);
}

}  // namespace quorel

#endif  // QUOREL_VALUES_TEXT_COPY_H_
