// The texts that run objects keep their copies in: short texts inside the
// object and long ones in the pool, a text moving between the two as it is
// replaced, a text put from inside itself, NUL bytes, copies, and the absent
// text of a NullableText.

#include <string>

#include <gtest/gtest.h>

#include "quorel/rules/nullable_text.h"
#include "quorel/values/owned_text.h"

namespace quorel {
namespace {

template <std::size_t N>
std::string held(const OwnedText<N> &text) {
  return std::string(text.data(), text.size());
}

TEST(OwnedTextTest, KeepsAPrivateCopyAcrossReplacements) {
  OwnedText<9> text;
  EXPECT_STREQ("", text.c_str());
  // Up and down across the inside room (8 bytes and the end), and to a
  // longer block than the one kept.
  for (std::size_t length : {0, 1, 8, 9, 300, 7, 8, 9, 301, 0, 1000}) {
    std::string source(length, static_cast<char>('a' + length % 26));
    text.assign(source.data(), source.size());
    source.assign(length, '?');  // the copy is the text's own
    EXPECT_EQ(std::string(length, static_cast<char>('a' + length % 26)), held(text)) << length;
    EXPECT_EQ('\0', text.c_str()[length]) << length;
  }

  // Bytes as they stand, a NUL among them; copies are separate.
  OwnedText<9> bytes(std::string("a\0b", 3).data(), 3);
  OwnedText<9> copy(bytes);
  bytes.assign("zz", 2);
  EXPECT_EQ(std::string("a\0b", 3), held(copy));
  copy = bytes;
  EXPECT_EQ("zz", held(copy));
}

TEST(OwnedTextTest, TakesAPieceOfItself) {
  // Every length of the short copies, each piece shifted by 1 to 3 bytes.
  std::string letters = "abcdefghijklmnopqrstuvwxyz";
  for (std::size_t length = 0; length <= 20; ++length) {
    for (std::size_t shift = 1; shift <= 3; ++shift) {
      OwnedText<32> text(letters.data(), length + shift);
      text.assign(text.data() + shift, length);
      EXPECT_EQ(letters.substr(shift, length), held(text)) << length << " " << shift;
    }
  }
  for (const std::string &whole : {std::string("abcdefg"), std::string(40, 'x') + "tail"}) {
    OwnedText<9> text(whole.data(), whole.size());
    text.assign(text.data() + 2, whole.size() - 2);
    EXPECT_EQ(whole.substr(2), held(text));
    // Growing from its own bytes: the former block goes after the copy.
    OwnedText<9> grown(whole.data(), 5);
    grown.assign(grown.data(), 5);
    EXPECT_EQ(whole.substr(0, 5), held(grown));
  }
}

TEST(OwnedTextTest, NullableTextIsAbsentUntilSetAndKeepsItsTextOnNull) {
  BasicNullableText<9> text;
  EXPECT_EQ(nullptr, text.get());
  EXPECT_EQ(0u, text.size());
  text.set("Regel Alter");
  text.set(nullptr);
  EXPECT_STREQ("Regel Alter", text.get());
  EXPECT_EQ(11u, text.size());
  text.clear();
  EXPECT_FALSE(text.isSet());
  EXPECT_EQ(nullptr, text.get());
  EXPECT_EQ(0u, text.size());
  text.set("", 0);
  EXPECT_STREQ("", text.get());
}

}  // namespace
}  // namespace quorel
