#include "quorel/host/csv_reader.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "quorel/host/byte_words.h"

namespace quorel {
namespace host {

namespace {

constexpr std::size_t kChunk = 1 << 16;

}  // namespace

char CsvReader::readHeader(std::string_view *line, bool *byteOrderMark) {
  static constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  *byteOrderMark = line->substr(0, kByteOrderMark.size()) == kByteOrderMark;
  if (*byteOrderMark) line->remove_prefix(kByteOrderMark.size());
  return line->find(',') < line->find(';') ? ',' : ';';
}

bool CsvReader::refill() {
  if (ended_) return false;
  base_ += static_cast<std::int64_t>(buffer_.size());
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
  newlineKnown_ = false;
  ended_ = read <= 0;
  return !ended_;
}

bool CsvReader::seek(std::int64_t offset, std::int64_t linesBefore) {
  in_.clear();
  in_.seekg(offset);
  buffer_.clear();
  base_ = offset;
  position_ = 0;
  newlineKnown_ = false;
  again_.clear();
  ended_ = false;
  linesRead_ = linesBefore;
  return static_cast<bool>(in_);
}

const char *CsvReader::lineEnd(const char *begin, const char *end) {
  if (!newlineKnown_ || buffer_.data() + newline_ < begin) {
    const void *newline = std::memchr(begin, '\n', static_cast<std::size_t>(end - begin));
    newline_ = static_cast<std::size_t>((newline != nullptr ? static_cast<const char *>(newline) : end) - buffer_.data());
    newlineKnown_ = true;
  }
  const char *newline = buffer_.data() + newline_;
  const void *carriage = std::memchr(begin, '\r', static_cast<std::size_t>(newline - begin));
  return carriage != nullptr ? static_cast<const char *>(carriage) : newline;
}

bool CsvReader::readLine(std::string_view *text, std::int64_t *number) {
  if (!again_.empty()) {
    *number = again_.front().first;
    spill_ = std::move(again_.front().second);
    again_.pop_front();
    *text = spill_;
    return true;
  }
  lineStart_ = base_ + static_cast<std::int64_t>(position_);
  // Whether the line so far is in spill_, as it ran past a chunk's end.
  bool spilled = false;
  while (true) {
    if (position_ == buffer_.size() && !refill()) {
      // A read error loses the line begun; the end of the input ends it.
      if (failed_ || !spilled) return false;
      *text = spill_;
      break;
    }
    const char *begin = buffer_.data() + position_;
    const char *end = buffer_.data() + buffer_.size();
    const char *stop = lineEnd(begin, end);
    if (!spilled && stop != end && !(*stop == '\r' && stop + 1 == end)) {
      // The whole line and its end lie in this chunk: the common case.
      position_ = static_cast<std::size_t>(stop - buffer_.data()) + 1;
      if (*stop == '\r' && buffer_[position_] == '\n') ++position_;
      *text = std::string_view(begin, static_cast<std::size_t>(stop - begin));
      break;
    }
    if (!spilled) spill_.clear();
    spilled = true;
    if (spill_.size() + static_cast<std::size_t>(stop - begin) > kMaxLineBytes) {
      failure_ = "line " + std::to_string(linesRead_ + 1) + " is longer than " +
                 std::to_string(kMaxLineBytes >> 20) + " MB, which no row of a table is";
      failed_ = ended_ = true;
      position_ = buffer_.size();  // nothing more is read
      std::string().swap(spill_);
      return false;
    }
    spill_.append(begin, stop);
    position_ = static_cast<std::size_t>(stop - buffer_.data());
    if (stop == end) continue;
    ++position_;
    // The '\n' of a "\r\n" may begin the next chunk.
    if (*stop == '\r' && (position_ < buffer_.size() || refill()) && buffer_[position_] == '\n') ++position_;
    if (failed_) return false;
    *text = spill_;
    break;
  }
  *number = ++linesRead_;
  return true;
}

bool CsvReader::nextLine(std::string_view *text, std::int64_t *start) {
  std::int64_t number;
  if (!readLine(text, &number)) return false;
  *start = lineStart_;
  return true;
}

namespace {

// The cell at index n of cells, emptied, its string kept for its capacity.
std::string *cellAt(std::vector<std::string> *cells, std::size_t n) {
  if (n == cells->size()) cells->emplace_back();
  std::string *cell = &(*cells)[n];
  cell->clear();
  return cell;
}

// Puts the length bytes at text into the cell at index n. A cell is mostly
// no longer than the same column's cell of the row before: its bytes are
// then copied over the former ones and the rest cut off, which std::string
// does inline, where assign and append are calls into the library that cost
// several times the copy of a short cell.
void putCell(std::vector<std::string> *cells, std::size_t n, const char *text, std::size_t length) {
  if (n == cells->size()) cells->emplace_back();
  std::string &cell = (*cells)[n];
  if (length <= cell.size()) {
    std::memcpy(&cell[0], text, length);
    cell.erase(length);
  } else {
    cell.assign(text, length);
  }
}

}  // namespace

bool CsvReader::next(std::vector<std::string> *cells) {
  error_.clear();
  blank_ = false;
  nulFree_ = false;
  std::string_view line;
  if (!readLine(&line, &rowLine_)) {
    cells->clear();
    return false;
  }
  if (separator_ == '\0') separator_ = readHeader(&line, &byteOrderMark_);
  blank_ = line.empty();
  // Without a quote the cells are what lies between the separators, found
  // in one pass eight bytes at a time, which also looks for NUL bytes.
  const char *text = line.data();
  std::size_t n = 0, start = 0, i = 0;
  std::uint64_t nul = 0;
  auto cut = [&](std::size_t at) {
    putCell(cells, n++, text + start, at - start);
    start = at + 1;
  };
  for (; i + sizeof(std::uint64_t) <= line.size(); i += sizeof(std::uint64_t)) {
    std::uint64_t word = words::load(text + i);
    if (words::bytesOf(word, '"') != 0) return splitQuoted(line, cells);
    nul |= words::bytesBelow(word, 1);
    for (std::uint64_t at = words::bytesOf(word, separator_); at != 0; at &= at - 1) cut(i + words::firstMarked(at));
  }
  for (; i < line.size(); ++i) {
    if (text[i] == '"') return splitQuoted(line, cells);
    if (text[i] == separator_) cut(i);
    if (text[i] == '\0') nul = 1;
  }
  cut(line.size());
  nulFree_ = nul == 0;
  cells->resize(n);
  return true;
}

bool CsvReader::splitQuoted(std::string_view first, std::vector<std::string> *cells) {
  // Reading on may refill the buffer that the first line lies in.
  std::string &line = joined_;
  line.assign(first);
  // The lines that a quoted cell ran on to, to be read again if it never
  // closes.
  std::vector<std::pair<std::int64_t, std::string>> more;
  std::size_t n = 0;
  std::string *cell = cellAt(cells, n);
  CsvQuotes quotes;
  for (std::size_t i = 0;; ++i) {
    if (i == line.size()) {
      if (!quotes.quoted()) break;
      std::string_view next;
      std::int64_t number = 0;
      bool within = more.size() + 1 < static_cast<std::size_t>(kMaxQuotedLines) && line.size() <= kMaxQuotedBytes;
      if (!within || !readLine(&next, &number)) {
        if (failed_) return false;
        error_ = within ? "a quoted cell begins on this line and is not closed before the end of the file"
                        : "a quoted cell begins on this line and is not closed within " +
                              std::to_string(kMaxQuotedLines) + " lines or " + std::to_string(kMaxQuotedBytes) +
                              " bytes";
        for (auto it = more.rbegin(); it != more.rend(); ++it) again_.push_front(std::move(*it));
        cells->resize(n);
        return true;
      }
      line += '\n';
      line += next;
      more.emplace_back(number, std::string(next));
    }
    char c = line[i];
    switch (quotes.step(c, i + 1 < line.size() && line[i + 1] == '"', separator_)) {
      case CsvQuotes::kByte:
        *cell += c;
        break;
      case CsvQuotes::kQuote:
        *cell += '"';
        ++i;
        break;
      case CsvQuotes::kSeparator:
        cell = cellAt(cells, ++n);
        break;
      case CsvQuotes::kMark:
        break;
    }
  }
  cells->resize(n + 1);
  return true;
}

}  // namespace host
}  // namespace quorel
