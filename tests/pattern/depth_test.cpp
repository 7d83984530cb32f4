// Patterns nested deeply, compiled and matched on threads with big and small
// stacks: every valid pattern compiles wherever its match would run, and no
// nesting overflows the stack.

#include <pthread.h>

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "quorel/pattern/pattern.h"

namespace {

// Runs body on a new thread whose stack holds stackSize bytes.
void onThread(std::size_t stackSize, std::function<void()> body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, stackSize);
  pthread_t thread;
  auto run = [](void *argument) -> void * {
    (*static_cast<std::function<void()> *>(argument))();
    return nullptr;
  };
  ASSERT_EQ(0, pthread_create(&thread, &attributes, run, &body));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

std::string nested(int depth, const char *open, const char *inner, const char *close) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += open;
  text += inner;
  for (int i = 0; i < depth; ++i) text += close;
  return text;
}

// Compiles without a report.
bool compilesQuietly(const std::string &pattern) {
  testing::internal::CaptureStderr();
  std::unique_ptr<Pattern> compiled(Pattern::compile(pattern.c_str(), 0));
  std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ("", written.substr(0, 200));
  return compiled != nullptr;
}

TEST(PatternDepthTest, DeeplyNestedClassesCompileAndMatch) {
  std::string classes = nested(20000, "[", "a", "]");
  EXPECT_TRUE(compilesQuietly(classes));
  EXPECT_TRUE(Pattern::matches(classes.c_str(), "a", 0));
  EXPECT_FALSE(Pattern::matches(classes.c_str(), "b", 0));
  // Intersections nest the same way: [a-z&&[a-m&&[...]]].
  std::string intersections = nested(5000, "[a-z&&", "[c]", "]");
  EXPECT_TRUE(Pattern::matches(intersections.c_str(), "c", 0));
  EXPECT_FALSE(Pattern::matches(intersections.c_str(), "d", 0));

  bool onSmallStack = false;
  onThread(256 * 1024, [&] {
    std::string thousand = nested(1000, "[", "x", "]");
    onSmallStack = Pattern::matches(thousand.c_str(), "x", 0);
  });
  EXPECT_TRUE(onSmallStack);
}

TEST(PatternDepthTest, UnclosedClassesReportOncePerLevel) {
  std::string open(3000, '[');
  testing::internal::CaptureStderr();
  std::unique_ptr<Pattern> compiled(Pattern::compile(open.c_str(), 0));
  std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(nullptr, compiled);
  std::size_t reports = 0;
  for (std::size_t at = written.find("Syntax Error"); at != std::string::npos;
       at = written.find("Syntax Error", at + 1)) {
    ++reports;
  }
  EXPECT_EQ(3000u, reports);
}

TEST(PatternDepthTest, LargeClassesCompile) {
  std::string digits = "[";
  for (int i = 0; i < 40000; ++i) digits += "\\d";
  digits += "]";
  EXPECT_TRUE(Pattern::matches(digits.c_str(), "7", 0));
  EXPECT_FALSE(Pattern::matches(digits.c_str(), "x", 0));
}

TEST(PatternDepthTest, GroupsAndAlternativesCompileOnSmallStacks) {
  bool alternatives = false;
  bool groups = false;
  onThread(128 * 1024, [&] {
    alternatives = Pattern::matches("(a)|b", "b", 0);
    std::string deep = nested(2000, "(", "a", ")");
    groups = Pattern::matches(deep.c_str(), "a", 0);
  });
  EXPECT_TRUE(alternatives);
  EXPECT_TRUE(groups);

  // On the main thread, nesting far beyond its stack.
  EXPECT_TRUE(compilesQuietly(nested(40000, "(", "a", ")+")));
  std::string deep = nested(40000, "(?:", "a", ")");
  EXPECT_TRUE(Pattern::matches(deep.c_str(), "a", 0));
  EXPECT_FALSE(Pattern::matches(deep.c_str(), "aa", 0));
  std::string bars;
  for (int i = 0; i < 40000; ++i) bars += "x|";
  bars += "a";
  EXPECT_TRUE(Pattern::matches(bars.c_str(), "a", 0));
  EXPECT_FALSE(Pattern::matches(bars.c_str(), "y", 0));
}

}  // namespace
