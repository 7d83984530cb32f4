#include "quorel/logging/logger.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "quorel/platform/clock.h"

namespace quorel {

namespace {

const char *levelWord(LogLevel level) {
  switch (level) {
    case FATAL: return "FATAL";
    case ERROR: return "ERROR";
    case WARN: return "WARN";
    case INFO: return "INFO";
    case TRACE: return "TRACE";
    case DEBUG: return "DEBUG";
    default: return "";
  }
}

}  // namespace

Logger::Logger(LogLevel level) { init(&std::cout, level); }

Logger::Logger(std::ostream *target, LogLevel level) { init(target, level); }

Logger::Logger(const char *fileName, LogLevel level) {
  auto file = std::make_unique<std::ofstream>();
  if (fileName != nullptr) file->open(fileName, std::ios::out | std::ios::trunc);
  // An unopened file stream is in a failed state and swallows every write.
  if (!file->is_open()) file->setstate(std::ios::badbit);
  ownedTarget_ = std::move(file);
  init(ownedTarget_.get(), level);
}

void Logger::init(std::ostream *target, LogLevel level) {
  target_ = target;
  // A stream without a buffer is bad from the start: writes to it vanish.
  nullStream_ = std::make_unique<std::ostream>(nullptr);
  level_ = level;
  if (level_ <= OFF) return;
  *target_ << "START: ";
  printTimestamp();
  *target_ << " (Log-Level: " << levelWord(level_) << ")";
}

Logger::~Logger() {
  if (level_ > OFF) {
    *target_ << std::endl << "STOP : ";
    printTimestamp();
    target_->flush();
  }
}

// Built in a buffer and written unformatted, so that whatever flags the
// host left on its stream (hex, left, a fill) don't reach the stamp.
void Logger::printTimestamp() {
  platform::LocalTime now = platform::currentLocalTime();
  const std::tm &t = now.calendar;
  char stamp[96];
  int length = std::snprintf(stamp, sizeof stamp, "%02d.%02d.%04d %02d:%02d:%02d.%d", t.tm_mday, t.tm_mon + 1,
                             t.tm_year + 1900, t.tm_hour, t.tm_min, t.tm_sec, static_cast<int>(now.milliseconds));
  if (length > 0) target_->write(stamp, std::min<std::streamsize>(length, sizeof stamp - 1));
}

std::ostream &Logger::startLine(LogLevel lineLevel, const char *prefix) {
  if (level_ < lineLevel) return *nullStream_;
  *target_ << std::endl << prefix;
  return *target_;
}

std::ostream &Logger::fatal() { return startLine(FATAL, "FATAL: "); }
std::ostream &Logger::error() { return startLine(ERROR, "ERROR: "); }
std::ostream &Logger::warn() { return startLine(WARN, "WARN : "); }
std::ostream &Logger::info() { return startLine(INFO, "INFO : "); }
std::ostream &Logger::trace() { return startLine(TRACE, "TRACE: "); }
std::ostream &Logger::debug() { return startLine(DEBUG, "DEBUG: "); }

}  // namespace quorel
