// The start and stop lines of a log as hosts read them: the level word of
// every level, a time stamp that names the moment of writing, and which lines
// each level lets through.

#include <chrono>
#include <ctime>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "quorel/logging/logger.h"

namespace quorel {
namespace {

const char kStamp[] = R"((\d\d)\.(\d\d)\.(\d{4}) (\d\d):(\d\d):(\d\d)\.(0|[1-9]\d{0,2}))";

// The calendar seconds of a stamp's captures 1 to 6, read as local time.
std::time_t secondsOf(const std::smatch &m, std::size_t first) {
  std::tm t{};
  t.tm_mday = std::stoi(m[first]);
  t.tm_mon = std::stoi(m[first + 1]) - 1;
  t.tm_year = std::stoi(m[first + 2]) - 1900;
  t.tm_hour = std::stoi(m[first + 3]);
  t.tm_min = std::stoi(m[first + 4]);
  t.tm_sec = std::stoi(m[first + 5]);
  t.tm_isdst = -1;
  return std::mktime(&t);
}

TEST(LogHeaderTest, StartLineNamesEveryLevelByItsWord) {
  const char *words[] = {"FATAL", "ERROR", "WARN", "INFO", "TRACE", "DEBUG", ""};
  for (int level = 1; level <= 7; ++level) {
    std::ostringstream out;
    { Logger logger(&out, static_cast<LogLevel>(level)); }
    std::string expected = std::string("START: ") + kStamp + R"( \(Log-Level: )" + words[level - 1] +
                           R"(\)\nSTOP : )" + kStamp;
    EXPECT_TRUE(std::regex_match(out.str(), std::regex(expected))) << level << ": " << out.str();
  }
}

// The seconds of the clock that stamps are read from. std::time may read a
// coarser clock, which lags behind this one by a tick at a second's turn.
std::time_t now() { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); }

TEST(LogHeaderTest, StampsNameTheLocalTimeOfWriting) {
  std::ostringstream out;
  std::time_t before = now();
  { Logger logger(&out, INFO); }
  std::time_t after = now();
  std::smatch m;
  std::string log = out.str();
  ASSERT_TRUE(std::regex_match(log, m, std::regex(std::string("START: ") + kStamp +
                                                  R"( \(Log-Level: INFO\)\nSTOP : )" + kStamp)))
      << log;
  for (std::size_t first : {std::size_t{1}, std::size_t{8}}) {
    std::time_t stamped = secondsOf(m, first);
    EXPECT_LE(before, stamped) << log;
    EXPECT_GE(after, stamped) << log;
  }
}

TEST(LogHeaderTest, EachLevelLetsThroughItsOwnLinesAndTheMoreSevere) {
  const char *prefixes[] = {"FATAL: ", "ERROR: ", "WARN : ", "INFO : ", "TRACE: ", "DEBUG: "};
  for (int level = 0; level <= 6; ++level) {
    std::ostringstream out;
    std::string expected;
    {
      Logger logger(&out, static_cast<LogLevel>(level));
      bool on[] = {logger.isFatalOn(), logger.isErrorOn(), logger.isWarnOn(),
                   logger.isInfoOn(),  logger.isTraceOn(), logger.isDebugOn()};
      logger.fatal() << 1;
      logger.error() << 2;
      logger.warn() << 3;
      logger.info() << 4;
      logger.trace() << 5;
      logger.debug() << 6;
      for (int line = 1; line <= 6; ++line) {
        EXPECT_EQ(line <= level, on[line - 1]) << "level " << level << ", line " << line;
        if (line <= level) expected += "\n" + std::string(prefixes[line - 1]) + std::to_string(line);
      }
    }
    std::string log = out.str();
    if (level == 0) {
      EXPECT_EQ("", log);
      continue;
    }
    // Between the start line and the stop line.
    std::size_t first = log.find('\n');
    std::size_t last = log.rfind('\n');
    EXPECT_EQ(expected, log.substr(first, last - first)) << "level " << level;
  }
}

}  // namespace
}  // namespace quorel
