#include "quorel/host/csv_parts.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "quorel/host/csv_reader.h"
#include "quorel/host/file_error.h"

namespace quorel {
namespace host {

namespace {

constexpr std::size_t kChunk = 1 << 20;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

// The lines of a file as CsvReader ends them, with the offset of each, read
// through a buffer; seek goes back to a line read before.
class LineWalk {
 public:
  explicit LineWalk(std::ifstream *in) : in_(in) {}

  // The next line without its end, valid until the next call, and where it
  // begins; false at the end of the file or on a failure.
  bool next(std::string_view *text, std::int64_t *start) {
    while (true) {
      std::size_t end = lineEnd();
      // A '\r' last in the buffer may be half of a "\r\n".
      bool complete = end != std::string::npos && (buffer_[end] == '\n' || end + 1 < buffer_.size() || ended_);
      if (complete || (ended_ && at_ < buffer_.size())) {
        if (end == std::string::npos) end = buffer_.size();
        *text = std::string_view(buffer_).substr(at_, end - at_);
        *start = base_ + static_cast<std::int64_t>(at_);
        at_ = end + (end < buffer_.size() ? 1 : 0);
        if (end < buffer_.size() && buffer_[end] == '\r' && at_ < buffer_.size() && buffer_[at_] == '\n') ++at_;
        return true;
      }
      if (ended_ || !fill()) return false;
    }
  }

  // Reads on from offset, where a line begins.
  void seek(std::int64_t offset) {
    newlineKnown_ = false;
    if (offset >= base_ && offset <= base_ + static_cast<std::int64_t>(buffer_.size())) {
      at_ = static_cast<std::size_t>(offset - base_);
      return;
    }
    in_->clear();
    in_->seekg(offset);
    buffer_.clear();
    base_ = offset;
    at_ = 0;
    ended_ = false;
  }

  bool failed() const { return in_->bad(); }

 private:
  // The first '\r' or '\n' from at_ on, or npos. Where the next '\n' is
  // stays known, so that a file of lone "\r" ends is not searched to the
  // buffer's end for each line.
  std::size_t lineEnd() {
    if (!newlineKnown_ || newline_ < at_) {
      const void *found = std::memchr(buffer_.data() + at_, '\n', buffer_.size() - at_);
      newline_ = found != nullptr ? static_cast<std::size_t>(static_cast<const char *>(found) - buffer_.data())
                                  : buffer_.size();
      newlineKnown_ = true;
    }
    const void *carriage = std::memchr(buffer_.data() + at_, '\r', newline_ - at_);
    if (carriage != nullptr) return static_cast<std::size_t>(static_cast<const char *>(carriage) - buffer_.data());
    return newline_ < buffer_.size() ? newline_ : std::string::npos;
  }

  // Appends the next chunk. What lies more than four chunks before the line
  // being read is dropped: a quoted cell goes back at most about one chunk
  // as a rule, and further back the file is read again.
  bool fill() {
    newlineKnown_ = false;
    if (at_ > kChunk * 4) {
      buffer_.erase(0, at_);
      base_ += static_cast<std::int64_t>(at_);
      at_ = 0;
    }
    std::size_t size = buffer_.size();
    buffer_.resize(size + kChunk);
    in_->read(&buffer_[size], static_cast<std::streamsize>(kChunk));
    std::streamsize read = in_->gcount();
    buffer_.resize(size + static_cast<std::size_t>(read > 0 ? read : 0));
    if (read < static_cast<std::streamsize>(kChunk)) ended_ = true;
    return read > 0 || at_ < buffer_.size();
  }

  std::ifstream *in_;
  std::string buffer_;
  std::int64_t base_ = 0;  // the offset of buffer_[0]
  std::size_t at_ = 0;     // where the next line begins in buffer_
  std::size_t newline_ = 0;  // the first '\n' at or after at_, or the buffer's end
  bool newlineKnown_ = false;
  bool ended_ = false;
};

// Follows the quotes of a row over a line of it.
void readLine(CsvQuotes *quotes, std::string_view text, char separator) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (quotes->step(text[i], i + 1 < text.size() && text[i + 1] == '"', separator) == CsvQuotes::kQuote) ++i;
  }
}

// Walks the rows of a file as CsvReader reads them and cuts parts at the
// first row to begin at or after each multiple of the block size.
class Cutter {
 public:
  Cutter(LineWalk *walk, std::int64_t blockBytes, std::int64_t fileSize, std::vector<CsvPart> *parts)
      : walk_(walk), block_(blockBytes), fileSize_(fileSize), parts_(parts), nextCut_(blockBytes) {
    parts_->assign(1, CsvPart{0, 0, 0, 0, fileSize});
  }

  void run() {
    std::string_view text;
    std::int64_t start = 0;
    bool header = true;
    while (walk_->next(&text, &start)) {
      ++lines_;
      if (header) {
        if (text.substr(0, 3) == kByteOrderMark) text.remove_prefix(3);
        separator_ = text.find(',') < text.find(';') ? ',' : ';';
      } else if (text.empty()) {
        continue;
      } else if (start >= nextCut_) {
        cut(start);
      }
      if (text.find('"') != std::string_view::npos) readQuoted(text);
      if (!header) ++rows_;
      header = false;
    }
    parts_->back().count = rows_ - parts_->back().rows;
  }

 private:
  void cut(std::int64_t start) {
    parts_->back().count = rows_ - parts_->back().rows;
    parts_->push_back(CsvPart{start, lines_ - 1, rows_, 0, fileSize_});
    nextCut_ = (start / block_ + 1) * block_;
  }

  // Reads on over the lines that a quoted cell of the row runs to. A cell
  // that does not close within CsvReader's limits leaves the row on its
  // first line, and the lines after that one are read again.
  void readQuoted(std::string_view first) {
    CsvQuotes quotes;
    readLine(&quotes, first, separator_);
    if (!quotes.quoted()) return;
    std::int64_t firstLine = lines_;
    std::size_t joined = first.size();
    std::string_view text;
    std::int64_t start = 0;
    std::int64_t after = -1;  // where the line after the first begins
    for (int more = 0; quotes.quoted(); ++more) {
      bool within = more + 1 < CsvReader::kMaxQuotedLines && joined <= CsvReader::kMaxQuotedBytes;
      if (!within || !walk_->next(&text, &start)) {
        if (after >= 0) walk_->seek(after);
        lines_ = firstLine;
        return;
      }
      if (after < 0) after = start;
      ++lines_;
      joined += 1 + text.size();
      readLine(&quotes, text, separator_);
    }
  }

  LineWalk *walk_;
  std::int64_t block_;
  std::int64_t fileSize_;
  std::vector<CsvPart> *parts_;
  std::int64_t nextCut_;
  std::int64_t lines_ = 0;  // lines read so far
  std::int64_t rows_ = 0;   // rows begun so far, the header not among them
  char separator_ = ';';
};

}  // namespace

bool splitCsvFile(const std::string &file, std::int64_t blockBytes, std::vector<CsvPart> *parts,
                  std::string *message) {
  parts->assign(1, CsvPart());
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return true;
  auto size = static_cast<std::int64_t>(std::filesystem::file_size(file, error));
  if (error || blockBytes <= 0 || size <= blockBytes) return true;
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    *message = fileError("open", file, std::strerror(errno));
    return false;
  }
  LineWalk walk(&in);
  Cutter(&walk, blockBytes, size, parts).run();
  if (walk.failed()) {
    *message = fileError("read", file, std::strerror(errno != 0 ? errno : EIO));
    parts->assign(1, CsvPart());
    return false;
  }
  return true;
}

}  // namespace host
}  // namespace quorel
