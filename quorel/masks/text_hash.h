// TextHash: Util::getHashCode of a text that is never written out, built
// from its pieces as they are known. Besides the code it keeps 31 to the
// power of the text's length, so that the code of a text joins the code of
// its continuation: code(a + b) = code(a) * 31^length(b) + code(b), wrapping
// at 32 bits like the code itself. A field's hierarchy text and the keys of
// a record are hashed this way, with no string made on the way.
//
// A plain value; the empty text is the default.

#ifndef QUOREL_MASKS_TEXT_HASH_H_
#define QUOREL_MASKS_TEXT_HASH_H_

#include <cstdint>

namespace quorel {

class TextHash {
 public:
  // The byte counts as a signed 8-bit number, as in Util::getHashCode.
  void append(char byte) {
    code_ = code_ * 31u + static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(byte)));
    power_ *= 31u;
  }
  // A null text appends nothing.
  void append(const char *text) {
    if (text == nullptr) return;
    for (; *text != '\0'; ++text) append(*text);
  }
  void append(const TextHash &continuation) {
    code_ = code_ * continuation.power_ + continuation.code_;
    power_ *= continuation.power_;
  }
  // The index list as Util::getIndicesAsString writes it, "[2][0]".
  void appendIndices(const std::int32_t *indices);

  std::int32_t get() const { return static_cast<std::int32_t>(code_); }

 private:
  // Unsigned arithmetic gives the 32-bit wrap without undefined behaviour.
  std::uint32_t code_ = 0;
  std::uint32_t power_ = 1;
};

}  // namespace quorel

#endif  // QUOREL_MASKS_TEXT_HASH_H_
