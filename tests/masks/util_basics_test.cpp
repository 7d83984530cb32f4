#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "quorel/masks/util.h"
#include "test_support.h"

namespace quorel {
namespace {

TEST(IndexListTest, HashesCountsAndAccessKinds) {
  std::int32_t oneTwo[] = {1, 2, -1};
  std::int32_t zero[] = {0, -1};
  std::int32_t zeroZero[] = {0, 0, -1};
  std::int32_t empty[] = {-1};
  EXPECT_EQ(33, Util::getHashCode(oneTwo));
  EXPECT_EQ(0, Util::getHashCode(zero));
  EXPECT_EQ(0, Util::getHashCode(zeroZero));
  EXPECT_EQ(0, Util::getHashCode(empty));
  EXPECT_EQ(0, Util::getSizeOf(static_cast<const std::int32_t *>(nullptr)));
  EXPECT_EQ(2, Util::getSizeOf(oneTwo));

  std::int32_t dims[] = {3, 4, -1};
  std::int32_t three[] = {0, 0, 0, -1};
  EXPECT_FALSE(Util::isValidArrayAccess(empty, empty));
  EXPECT_TRUE(Util::isValidElementAccess(nullptr, empty));
  EXPECT_TRUE(Util::isValidArrayAccess(dims, empty));
  EXPECT_TRUE(Util::isValidArrayAccess(dims, zero));
  EXPECT_FALSE(Util::isValidElementAccess(dims, zero));
  EXPECT_TRUE(Util::isValidElementAccess(dims, oneTwo));
  EXPECT_FALSE(Util::isValidArrayAccess(dims, three));
  EXPECT_FALSE(Util::isValidElementAccess(dims, three));
}

TEST(IndexListTest, TextFormsBothWays) {
  char text[32];
  Util::getIndicesAsString(text, nullptr);
  EXPECT_STREQ("", text);
  std::int32_t twelve[] = {12, -1};
  Util::getIndicesAsString(text, twelve);
  EXPECT_STREQ("[12]", text);

  std::int32_t target[8];
  Util::getStringAsIndices(target, "[1][2]");
  EXPECT_EQ(1, target[0]);
  EXPECT_EQ(2, target[1]);
  EXPECT_EQ(-1, target[2]);
  Util::getStringAsIndices(target, "");
  EXPECT_EQ(-1, target[0]);
  for (const char *bad : {"[]", "1", "[1", "[1]x", "[1]]", "[", "[1][", "[3000000000]"}) {
    expectFailure([&] { Util::getStringAsIndices(target, bad); }, EXCEPTION_ILLEGAL_ARGUMENT,
                  "Fehlerhafte Indexangabe.");
  }
  expectFailure([&] { Util::getStringAsIndices(target, "[a]"); }, EXCEPTION_CONVERSION,
                "Die Zahl enth\xE4" "lt ung\xFC" "ltige Zeichen.");
  // A long index text is refused, never copied past a buffer.
  std::string longIndex = "[" + std::string(200, '1') + "]";
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { Util::getStringAsIndices(target, longIndex.c_str()); }).getType());
}

TEST(CompareTest, NumbersWithinTheToleranceAndDatesByField) {
  EXPECT_EQ(0, Util::compareNumbers(1.0, 1.0 + 1e-16));
  EXPECT_EQ(-1, Util::compareNumbers(1.0, 1.000001));
  EXPECT_EQ(1, Util::compareNumbers(1.000001, 1.0));
  EXPECT_EQ(0, Util::compareNumbers(1e-16, 3e-16));
  EXPECT_EQ(-1, Util::compareNumbers(1e16, 1e16 + 2));
  EXPECT_EQ(-1, Util::compareNumbers(std::nan(""), 1.0));

  std::tm a{}, b{};
  a.tm_year = b.tm_year = 120;
  a.tm_wday = 5;  // ignored
  EXPECT_EQ(0, Util::compareDate(&a, &b));
  b.tm_sec = 1;
  EXPECT_EQ(-1, Util::compareDate(&a, &b));
  a.tm_mon = 1;
  EXPECT_EQ(1, Util::compareDate(&a, &b));
}

TEST(CaseTest, GermanTablesAreNotEachOthersNegation) {
  EXPECT_TRUE(Util::isUpperCase('\xC4'));
  EXPECT_TRUE(Util::isUpperCase('1'));
  EXPECT_TRUE(Util::isUpperCase(' '));
  EXPECT_FALSE(Util::isUpperCase('\xDF'));
  EXPECT_FALSE(Util::isUpperCase('a'));
  EXPECT_TRUE(Util::isLowerCase('\xDF'));
  EXPECT_TRUE(Util::isLowerCase('1'));
  EXPECT_FALSE(Util::isLowerCase('\xC4'));
  EXPECT_FALSE(Util::isLowerCase('Q'));
}

TEST(SubstringTest, BoundsAreClamped) {
  char text[16];
  Util::substring(text, "abcdef", 2, 0);
  EXPECT_STREQ("cdef", text);
  Util::substring(text, "abc", 1, 10);
  EXPECT_STREQ("bc", text);
  Util::substring(text, "abc", 5, 1);
  EXPECT_STREQ("", text);
  Util::substring(text, "abc", -3, 2);
  EXPECT_STREQ("ab", text);
  Util::substring(text, nullptr, 0, 1);
  EXPECT_STREQ("", text);
  Util::substring(text, "abc]def", ']');
  EXPECT_STREQ("abc", text);
  Util::substring(text, "abc", ']');
  EXPECT_STREQ("abc", text);
  Util::substring(text, nullptr, ']');
  EXPECT_STREQ("", text);
}

}  // namespace
}  // namespace quorel
