#include "quorel/host/csv_reader.h"

#include <algorithm>
#include <exception>

namespace quorel {
namespace host {

namespace {

constexpr std::size_t kChunk = 1 << 16;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

}  // namespace

bool CsvReader::refill() {
  if (ended_) return false;
  std::streamsize read = 0;
  try {
    // What the stream holds already, so that a failure of the next read
    // costs nothing that was read before it.
    std::streambuf *stream = in_.rdbuf();
    if (stream->sgetc() != std::char_traits<char>::eof()) {
      std::streamsize held = std::min<std::streamsize>(stream->in_avail(), kChunk);
      buffer_.resize(static_cast<std::size_t>(std::max<std::streamsize>(held, 1)));
      read = stream->sgetn(&buffer_[0], static_cast<std::streamsize>(buffer_.size()));
    }
  } catch (const std::exception &e) {
    // "basic_filebuf::underflow error reading the file: Input/output error":
    // the system's reason is the last part.
    std::string what = e.what();
    std::size_t colon = what.rfind(": ");
    failure_ = colon == std::string::npos ? what : what.substr(colon + 2);
    failed_ = true;
  }
  buffer_.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
  position_ = 0;
  ended_ = read <= 0;
  return !ended_;
}

bool CsvReader::readLine(std::string *text, std::int64_t *number) {
  text->clear();
  if (!again_.empty()) {
    *number = again_.front().first;
    *text = std::move(again_.front().second);
    again_.pop_front();
    return true;
  }
  bool started = false;
  while (true) {
    if (position_ == buffer_.size() && !refill()) {
      // A read error loses the line begun; the end of the input ends it.
      if (failed_ || !started) return false;
      break;
    }
    started = true;
    const char *begin = buffer_.data() + position_;
    const char *end = buffer_.data() + buffer_.size();
    const char *stop = begin;
    while (stop != end && *stop != '\n' && *stop != '\r') ++stop;
    text->append(begin, stop);
    position_ = static_cast<std::size_t>(stop - buffer_.data());
    if (stop == end) continue;
    ++position_;
    if (*stop == '\r' && (position_ < buffer_.size() || refill()) && buffer_[position_] == '\n') ++position_;
    if (failed_) return false;
    break;
  }
  *number = ++linesRead_;
  return true;
}

bool CsvReader::next(std::vector<std::string> *cells) {
  cells->clear();
  error_.clear();
  std::string line;
  if (!readLine(&line, &rowLine_)) return false;
  if (separator_ == '\0') {
    if (line.compare(0, 3, kByteOrderMark) == 0) {
      byteOrderMark_ = true;
      line.erase(0, 3);
    }
    std::size_t semicolon = line.find(';');
    std::size_t comma = line.find(',');
    separator_ = comma < semicolon ? ',' : ';';
  }
  // The lines that a quoted cell ran on to, to be read again if it never
  // closes.
  std::vector<std::pair<std::int64_t, std::string>> more;
  std::string cell;
  bool quoted = false;
  bool atStart = true;
  for (std::size_t i = 0;; ++i) {
    if (i == line.size()) {
      if (!quoted) break;
      std::pair<std::int64_t, std::string> next;
      bool within = more.size() + 1 < static_cast<std::size_t>(kMaxQuotedLines) && line.size() <= kMaxQuotedBytes;
      if (!within || !readLine(&next.second, &next.first)) {
        if (failed_) return false;
        error_ = within ? "a quoted cell begins on this line and is not closed before the end of the file"
                        : "a quoted cell begins on this line and is not closed within " +
                              std::to_string(kMaxQuotedLines) + " lines or " + std::to_string(kMaxQuotedBytes) +
                              " bytes";
        for (auto it = more.rbegin(); it != more.rend(); ++it) again_.push_front(std::move(*it));
        return true;
      }
      line += '\n';
      line += next.second;
      more.push_back(std::move(next));
    }
    char c = line[i];
    if (quoted) {
      if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
        cell += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        cell += c;
      }
    } else if (c == separator_) {
      cells->push_back(cell);
      cell.clear();
      atStart = true;
    } else if (c == '"' && atStart) {
      quoted = true;
      atStart = false;
    } else {
      cell += c;
      atStart = false;
    }
  }
  cells->push_back(cell);
  return true;
}

}  // namespace host
}  // namespace quorel
