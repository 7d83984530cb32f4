// The cache behind Pattern::matches against compiling at every call: the
// same answers and the same reports, for good and bad patterns, first and
// repeated calls.

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "quorel/pattern/pattern.h"
#include "quorel/pattern/pattern_cache.h"

namespace {

// Runs the whole pattern suite with the capacity named by the environment,
// so that CTest can run it once more compiling at every call.
class CacheCapacityFromEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    if (const char *capacity = std::getenv("QUOREL_TEST_PATTERN_CACHE")) {
      Pattern::setCacheCapacity(std::atoi(capacity));
    }
  }
};

const testing::Environment *const kEnvironment = testing::AddGlobalTestEnvironment(new CacheCapacityFromEnvironment);

struct Outcome {
  bool matched;
  std::string report;
};

Outcome run(const char *pattern, const char *input, std::int32_t flags) {
  testing::internal::CaptureStderr();
  bool matched = Pattern::matches(pattern, input, flags);
  return Outcome{matched, testing::internal::GetCapturedStderr()};
}

TEST(PatternCacheTest, CachedAndUncachedAnswersAndReportsAgree) {
  struct Case {
    const char *pattern;
    const char *input;
    std::int32_t flags;
  };
  const Case cases[] = {
      {"[0-9]{5}", "12345", 0},         {"[0-9]{5}", "1234", 0},        {"(a|ab)c", "abc", 0},
      {"a*+a", "aaa", 0},               {"(?i)ab", "AB", 0},            {"a.c", "a.c", Pattern::Literal},
      {"a.c", "abc", Pattern::Literal}, {"A.C", "a.c", 3},              {"^a$", "a", Pattern::MultiLine},
      {"(a)\\1", "aa", 0},              {"(a)\\1", "ab", 0},            {".", "\n", Pattern::DotAll},
      {".", "\r", Pattern::UnixLines},  {"a)", "a", 0},                 {"((a", "a", 0},
      {"a{1,x}", "a", 0},               {"[a&&b]", "a", 0},             {"{name}", "", 0},
      {"", "", 0},                      {"", "x", 0},                   {"\\p{Alpha}+", "abcXYZ", 0},
      {"(ab)*", "ababab", 0},           {"(?=ab)a.", "ab", 0},          {"[^]", "\xE4", 0},
  };
  std::int32_t saved = Pattern::getCacheCapacity();
  for (const Case &c : cases) {
    Pattern::setCacheCapacity(0);
    Outcome uncached = run(c.pattern, c.input, c.flags);
    Pattern::setCacheCapacity(PatternCache::kDefaultCapacity);
    Outcome first = run(c.pattern, c.input, c.flags);
    Outcome again = run(c.pattern, c.input, c.flags);
    for (const Outcome *cached : {&first, &again}) {
      EXPECT_EQ(uncached.matched, cached->matched) << c.pattern << " on " << c.input;
      EXPECT_EQ(uncached.report, cached->report) << c.pattern;
    }
  }
  // One kept pattern, one text and flags each: the same text under other
  // flags is another pattern.
  EXPECT_TRUE(Pattern::matches("ab", "ab", 0));
  EXPECT_FALSE(Pattern::matches("ab", "AB", 0));
  EXPECT_TRUE(Pattern::matches("ab", "AB", Pattern::CaseInsensitive));
  EXPECT_FALSE(Pattern::matches("ab", "AB", 0));
  Pattern::setCacheCapacity(saved);
}

TEST(PatternCacheTest, KeepsTheMostRecentlyUsedWithinItsCapacity) {
  PatternCache cache;
  cache.setCapacity(2);
  EXPECT_TRUE(cache.matches("a", "a", 0));
  EXPECT_TRUE(cache.matches("b", "b", 0));
  EXPECT_TRUE(cache.matches("a", "a", 0));  // a is now the most recent
  EXPECT_TRUE(cache.matches("c", "c", 0));  // b goes
  EXPECT_EQ(2, cache.size());
  std::string reports[2];
  for (std::string &report : reports) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(cache.matches("(", "", 0));
    report = testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(2, cache.size());  // a bad pattern is never kept: it reports every time
  EXPECT_FALSE(reports[1].empty());
  EXPECT_EQ(reports[0], reports[1]);
  cache.setCapacity(1);
  EXPECT_EQ(1, cache.size());
  cache.setCapacity(-5);
  EXPECT_EQ(0, cache.capacity());
  EXPECT_EQ(0, cache.size());
  EXPECT_TRUE(cache.matches("a+", "aaa", 0));
  EXPECT_EQ(0, cache.size());
}

// A text that comes back at the address of another is still its own pattern,
// and a pattern once dropped is found at no address.
TEST(PatternCacheTest, AnAddressIsOnlyAGuess) {
  PatternCache cache;
  char first[8] = "a+";
  char second[8] = "b+";
  EXPECT_TRUE(cache.matches(first, "aa", 0));
  EXPECT_TRUE(cache.matches(second, "bb", 0));
  std::strcpy(first, "b+");  // at the address of "a+" now the text of second
  EXPECT_FALSE(cache.matches(first, "aa", 0));
  EXPECT_TRUE(cache.matches(first, "bb", 0));
  std::strcpy(first, "[0-9]");
  EXPECT_TRUE(cache.matches(first, "7", 0));
  EXPECT_FALSE(cache.matches(first, "7", Pattern::Literal));  // same text and address, other flags
  EXPECT_TRUE(cache.matches(first, "[0-9]", Pattern::Literal));
  cache.setCapacity(1);  // drops all but the last
  EXPECT_EQ(1, cache.size());
  std::strcpy(second, "c+");
  EXPECT_TRUE(cache.matches(second, "cc", 0));
  EXPECT_FALSE(cache.matches(second, "bb", 0));
  std::strcpy(first, "b+");
  EXPECT_TRUE(cache.matches(first, "bb", 0));
  EXPECT_TRUE(cache.matches(second, "cc", 0));
  EXPECT_EQ(1, cache.size());
}

// Destructors that run after the thread's cache is gone still get answers
// (and the reports of bad patterns), as if there were no cache.
class MatchesWhenDestroyed {
 public:
  explicit MatchesWhenDestroyed(int *answers) : answers_(answers) {}
  ~MatchesWhenDestroyed() {
    *answers_ = Pattern::matches("[0-9]{5}", "12345", 0) && !Pattern::matches("[0-9]{5}", "1234", 0) ? 1 : 2;
  }

 private:
  int *answers_;
};

TEST(PatternCacheTest, AThreadLocalDestroyedAfterTheCacheStillMatches) {
  int answers = 0;
  std::thread([&answers] {
    // Made before the thread's first match, so destroyed after its cache.
    thread_local MatchesWhenDestroyed late(&answers);
    EXPECT_TRUE(Pattern::matches("[0-9]{5}", "54321", 0));
  }).join();
  EXPECT_EQ(1, answers);
}

TEST(PatternCacheDeathTest, AStaticDestroyedAfterMainStillMatches) {
  EXPECT_EXIT(
      {
        static int answers = 0;
        struct Report {
          ~Report() { std::_Exit(answers); }
        };
        static Report report;  // destroyed last: says what the matcher answered
        static MatchesWhenDestroyed late(&answers);
        Pattern::matches("[a-z]+", "abc", 0);  // the main thread's cache comes into being
        std::exit(0);
      },
      testing::ExitedWithCode(1), "");
}

TEST(PatternCacheTest, EachThreadHasItsOwnCapacity) {
  std::int32_t saved = Pattern::getCacheCapacity();
  Pattern::setCacheCapacity(3);
  std::int32_t otherThreads = -1;
  std::thread([&] { otherThreads = Pattern::getCacheCapacity(); }).join();
  EXPECT_EQ(PatternCache::kDefaultCapacity, otherThreads);
  EXPECT_EQ(3, Pattern::getCacheCapacity());
  Pattern::setCacheCapacity(saved);
}

}  // namespace
