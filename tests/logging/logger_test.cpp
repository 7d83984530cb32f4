#include <cstdio>
#include <fstream>
#include <iomanip>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "quorel/logging/logger.h"
#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {
namespace {

const char kStamp[] = R"(\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\.(0|[1-9]\d{0,2}))";

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// The log without its first (start) and last (stop) line.
std::string body(const std::string &log) {
  std::size_t first = log.find('\n');
  std::size_t last = log.rfind('\n');
  return first == last ? "" : log.substr(first, last - first);
}

TEST(LoggerTest, LevelZeroWritesNothingAtAll) {
  std::ostringstream out;
  {
    Logger logger(&out, OFF);
    logger.fatal() << "x";
    logger.trace() << "y";
    EXPECT_FALSE(logger.isFatalOn());
  }
  EXPECT_EQ("", out.str());
}

TEST(LoggerTest, LevelsSwitchTheirLinesOn) {
  std::ostringstream out;
  Logger error(&out, ERROR);
  EXPECT_TRUE(error.isFatalOn());
  EXPECT_TRUE(error.isErrorOn());
  EXPECT_FALSE(error.isWarnOn());
  Logger trace(&out, TRACE);
  EXPECT_TRUE(trace.isTraceOn());
  EXPECT_FALSE(trace.isDebugOn());
  Logger debug(&out, DEBUG);
  EXPECT_TRUE(debug.isFatalOn() && debug.isErrorOn() && debug.isWarnOn() && debug.isInfoOn() &&
              debug.isTraceOn() && debug.isDebugOn());
}

TEST(LoggerTest, LinesBeginWithTheirBreakAndAPrefixOfSeven) {
  std::ostringstream out;
  {
    Logger logger(&out, INFO);
    logger.warn() << "lost" << 1;
    logger.debug() << "gone";
    logger.info() << "x";
  }
  std::regex expected(std::string("START: ") + kStamp + R"( \(Log-Level: INFO\)\nWARN : lost1\nINFO : x\nSTOP : )" + kStamp);
  EXPECT_TRUE(std::regex_match(out.str(), expected)) << out.str();

  std::ostringstream all;
  {
    Logger logger(&all, DEBUG);
    logger.fatal() << 1;
    logger.error() << 2;
    logger.trace() << 3;
    logger.debug() << 4;
  }
  EXPECT_EQ("\nFATAL: 1\nERROR: 2\nTRACE: 3\nDEBUG: 4", body(all.str()));
}

TEST(LoggerTest, StampIgnoresTheFormatOfTheHostStream) {
  std::ostringstream out;
  out << std::hex << std::left << std::showpos << std::uppercase << std::setfill('*');
  std::ios::fmtflags flags = out.flags();
  {
    Logger logger(&out, INFO);
    EXPECT_EQ(flags, out.flags());
    EXPECT_EQ('*', out.fill());
  }
  std::regex expected(std::string("START: ") + kStamp + R"( \(Log-Level: INFO\)\nSTOP : )" + kStamp);
  EXPECT_TRUE(std::regex_match(out.str(), expected)) << out.str();
}

TEST(LoggerTest, FileTargetIsEmptiedAndAMissingDirectoryIsSilent) {
  std::string path = ::testing::TempDir() + "quorel_logger_test.log";
  { Logger logger(path.c_str(), WARN); logger.warn() << "erste Zeile"; }
  { Logger logger(path.c_str(), WARN); logger.warn() << "zweite"; }
  std::string log = readFile(path);
  EXPECT_EQ(std::string::npos, log.find("erste"));
  EXPECT_EQ("\nWARN : zweite", body(log));
  std::remove(path.c_str());

  Logger nowhere("/nonexistent/dir/x.log", DEBUG);
  nowhere.debug() << "vanishes";
}

class Nested : public Plausi {
 protected:
  Value *performFunctionImpl(RuntimeContext *runtime, const char *) override {
    return runtime->createNilValue();
  }
  void performImpl(RuntimeContext *runtime, const char *) override {
    runtime->startNewSection("Alpha", false);
    runtime->startNewSection("Beta", false);
    runtime->leaveCurrentSection();
    runtime->leaveCurrentSection();
  }
};

TEST(LoggerTest, SectionTraceIndentsByDepth) {
  std::ostringstream out;
  {
    Logger logger(&out, TRACE);
    Nested plausi;
    PlausiContext context(nullptr);
    context.setLogger(&logger);
    plausi.perform(&context);
  }
  EXPECT_EQ(
      "\nTRACE: --> Plausi"
      "\nTRACE:   --> Alpha"
      "\nTRACE:     --> Beta"
      "\nTRACE:     <-- Beta"
      "\nTRACE:   <-- Alpha"
      "\nTRACE: <-- Plausi",
      body(out.str()));
}

}  // namespace
}  // namespace quorel
