// Logger: the log writer of a run. A level fixed at construction, a target
// stream and six operations that hand out a stream for one line.
//
// Each line is preceded by its line break rather than followed by one, so the
// last line waits, unended, until the next line or the destructor. Lines above
// the level go to a null stream and vanish. At a level above OFF the
// constructor writes a start line and the destructor a stop line, both with a
// local timestamp in milliseconds.
//
// The logger owns its target only when it opened it from a file name; a given
// stream must outlive the logger. One logger serves one thread at a time.

#ifndef QUOREL_LOGGING_LOGGER_H_
#define QUOREL_LOGGING_LOGGER_H_

#include <cstdint>
#include <memory>
#include <ostream>

namespace quorel {

enum LogLevel : std::int32_t {
  OFF = 0,
  FATAL = 1,
  ERROR = 2,
  WARN = 3,
  INFO = 4,
  TRACE = 5,
  DEBUG = 6,
};

class Logger {
 public:
  // Writes to the process's standard output.
  explicit Logger(LogLevel level);
  // Writes to the given stream, which stays the caller's.
  Logger(std::ostream *target, LogLevel level);
  // Writes to a new file, emptied if it exists. A file that cannot be opened
  // gives a logger whose output vanishes; nothing is thrown.
  Logger(const char *fileName, LogLevel level);
  ~Logger();

  Logger(const Logger &) = delete;
  Logger &operator=(const Logger &) = delete;

  LogLevel getLevel() const { return level_; }

  bool isFatalOn() const { return level_ >= FATAL; }
  bool isErrorOn() const { return level_ >= ERROR; }
  bool isWarnOn() const { return level_ >= WARN; }
  bool isInfoOn() const { return level_ >= INFO; }
  bool isTraceOn() const { return level_ >= TRACE; }
  bool isDebugOn() const { return level_ >= DEBUG; }

  // Start a line of that level and give the stream to write its text on.
  std::ostream &fatal();
  std::ostream &error();
  std::ostream &warn();
  std::ostream &info();
  std::ostream &trace();
  std::ostream &debug();

 private:
  void init(std::ostream *target, LogLevel level);
  void printTimestamp();
  std::ostream &startLine(LogLevel lineLevel, const char *prefix);

  std::unique_ptr<std::ostream> ownedTarget_;
  std::ostream *target_;
  std::unique_ptr<std::ostream> nullStream_;
  LogLevel level_;
};

}  // namespace quorel

#endif  // QUOREL_LOGGING_LOGGER_H_
