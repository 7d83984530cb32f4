#include "quorel/host/csv_row_source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "quorel/host/byte_words.h"
#include "quorel/host/file_error.h"

namespace quorel {
namespace host {

CsvRowSource::CsvRowSource(const std::string &file) : file_(file), reader_(in_) {}

std::unique_ptr<CsvRowSource> CsvRowSource::open(const std::string &file, std::string *message,
                                                 FileEncoding encoding) {
  std::unique_ptr<CsvRowSource> source = openAtStart(file, message, encoding);
  if (source != nullptr && source->watching_ && source->regular_) source->lookAhead();
  return source;
}

std::unique_ptr<CsvRowSource> CsvRowSource::openAtStart(const std::string &file, std::string *message,
                                                        FileEncoding encoding) {
  std::unique_ptr<CsvRowSource> source(new CsvRowSource(file));
  errno = 0;
  source->in_.open(file, std::ios::binary);
  if (!source->in_) {
    *message = fileError("open", file, std::strerror(errno));
    return nullptr;
  }
  std::error_code ignored;
  source->regular_ = std::filesystem::is_regular_file(file, ignored);
  if (!source->regular_) {
    // A pipe cannot be read twice: its start is kept to be looked at.
    source->replay_ = std::make_unique<ReplayBuffer>(source->in_.rdbuf(), kEncodingSample);
    static_cast<std::ios &>(source->in_).rdbuf(source->replay_.get());
  }
  std::string error;
  if (!source->reader_.next(&source->columns_)) {
    *message = source->reader_.failed() ? fileError("read", file, source->reader_.failure()) : file + " has no header row";
    return nullptr;
  }
  source->encoding_ = source->reader_.byteOrderMark() ? FileEncoding::kUtf8 : encoding;
  if (!source->reader_.byteOrderMark()) {
    // A UTF-8 file read as Windows-1252 fails no row, so the rows are
    // watched wherever the start cannot tell; one read as UTF-8 that is
    // not fails each row that shows it.
    std::string sample;
    if (source->regular_) {
      // Read aside, so that the rows are read as ever.
      std::ifstream start(file, std::ios::binary);
      sample.resize(kEncodingSample);
      start.read(&sample[0], static_cast<std::streamsize>(sample.size()));
      sample.resize(static_cast<std::size_t>(std::max<std::streamsize>(start.gcount(), 0)));
    }
    const std::string &begins = source->regular_ ? sample : source->replay_->start();
    source->doubt_ = doubtEncoding(file, begins, encoding);
    source->watching_ = encoding == FileEncoding::kWindows1252 && begins.size() == kEncodingSample &&
                        !words::holdsBeyondAscii(begins);
  }
  if (!source->decode(&source->columns_, &error)) {
    *message = file + ":1: the header: " + error;
    return nullptr;
  }
  return source;
}

std::unique_ptr<CsvRowSource> CsvRowSource::open(const std::string &file, const CsvPart &part,
                                                 std::string *message, FileEncoding encoding) {
  std::unique_ptr<CsvRowSource> source = openAtStart(file, message, encoding);
  if (source == nullptr || part.whole()) return source;
  std::error_code error;
  auto size = static_cast<std::int64_t>(std::filesystem::file_size(file, error));
  if (error || size != part.fileSize) {
    *message = file + " has changed since it was cut into parts (" + std::to_string(part.fileSize) +
               " bytes then, " + (error ? error.message() : std::to_string(size) + " bytes now") + ")";
    return nullptr;
  }
  if (part.byte > 0 && !source->reader_.seek(part.byte, part.lines)) {
    *message = fileError("read", file, "cannot go to byte " + std::to_string(part.byte));
    return nullptr;
  }
  source->records_ = part.rows;
  source->last_ = part.rows + part.count;
  return source;
}

namespace {

// Whether the kEncodingLookAhead bytes after the file's first
// kEncodingSample hold one beyond ASCII; false when they cannot be read,
// which its rows will tell.
bool aheadHoldsBeyondAscii(const std::string &file) {
  std::ifstream in(file, std::ios::binary);
  in.seekg(static_cast<std::streamoff>(kEncodingSample));
  std::string block(1 << 20, '\0');
  for (std::size_t scanned = 0; in && scanned < kEncodingLookAhead; scanned += block.size()) {
    in.read(&block[0], static_cast<std::streamsize>(block.size()));
    auto read = static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0));
    if (words::holdsBeyondAscii(std::string_view(block.data(), read))) return true;
  }
  return false;
}

// Whether the text is ASCII without a NUL, which reads the same in UTF-8
// and Windows-1252.
bool plainAscii(const std::string &text) {
  for (char c : text) {
    if (static_cast<unsigned char>(c) - 1u >= 0x7Fu) return false;
  }
  return true;
}

}  // namespace

void CsvRowSource::lookAhead() {
  if (!aheadHoldsBeyondAscii(file_)) return;
  std::string ignored;
  std::unique_ptr<CsvRowSource> ahead = openAtStart(file_, &ignored, encoding_);
  if (ahead == nullptr) return;
  Row row;
  while (ahead->watching_ && ahead->next(&row)) {
  }
  if (ahead->lateDoubt_.message.empty()) return;
  doubt_ = ahead->lateDoubt_;
  // Found already: the rows need no watch for it. Where the bytes looked at
  // held none beyond ASCII, the watch goes on past them.
  watching_ = false;
}

bool CsvRowSource::decode(std::vector<std::string> *cells, std::string *error) const {
  if (encoding_ != FileEncoding::kUtf8) return true;
  std::string text;
  for (std::size_t i = 0; i < cells->size(); ++i) {
    if (plainAscii((*cells)[i])) continue;
    std::size_t offset = 0;
    if (!fromUtf8((*cells)[i], &text, &offset)) {
      // The column's own name is Windows-1252 by now (the header's cells are
      // decoded before any row).
      *error = (i < columns_.size() && cells != &columns_ ? "column " + columns_[i] : "cell " + std::to_string(i + 1)) +
               ": " + fromUtf8Fault((*cells)[i], offset);
      return false;
    }
    (*cells)[i].swap(text);
  }
  return true;
}

bool CsvRowSource::next(Row *row) {
  if (ended_ || records_ == last_) return false;
  row->error.clear();
  row->nulFree = false;
  do {
    if (!reader_.next(&row->cells)) {
      ended_ = true;
      if (!reader_.failed()) return false;
      row->cells.clear();
      row->place = {records_ + 1, reader_.linesRead() + 1};
      // The name is the file system's, in UTF-8; the error is a library text.
      row->error = "cannot read " + messageText(file_) + " after line " + std::to_string(reader_.linesRead()) + ": " +
                   reader_.failure();
      return true;
    }
  } while (reader_.blank());
  row->place = {++records_, reader_.line()};
  row->error = reader_.error();
  row->nulFree = reader_.nulFree();
  if (row->error.empty() && row->cells.size() != columns_.size()) {
    row->error = "the row has " + std::to_string(row->cells.size()) + (row->cells.size() == 1 ? " cell" : " cells") +
                 ", the header " + std::to_string(columns_.size());
  }
  if (row->error.empty()) decode(&row->cells, &row->error);
  if (watching_) watchEncoding(*row);
  return true;
}

void CsvRowSource::watchEncoding(const Row &row) {
  bool beyondAscii = false;
  for (auto cell = row.cells.begin(); cell != row.cells.end() && !beyondAscii; ++cell) {
    beyondAscii = words::holdsBeyondAscii(*cell);
  }
  if (!beyondAscii) return;
  watching_ = false;
  std::string text;
  for (const std::string &cell : row.cells) text += (text.empty() ? "" : ";") + cell;
  lateDoubt_ = doubtEncoding(file_, text, encoding_, row.place.line);
}

namespace {

// The doubt, if any, followed by the words that choose the encoding that fits.
std::string advice(const EncodingDoubt &doubt, const std::string &howToChoose, const char *between) {
  if (doubt.message.empty()) return std::string();
  std::string how = howToChoose;
  std::size_t at = how.find("ENCODING");
  if (at != std::string::npos) how.replace(at, 8, doubt.fits);
  return doubt.message + between + how;
}

}  // namespace

std::string encodingAdvice(const RowSource &source, const std::string &howToChoose) {
  auto *file = dynamic_cast<const CsvRowSource *>(&source);
  return file != nullptr ? advice(file->encodingDoubt(), howToChoose, ": pass ") : std::string();
}

std::string lateEncodingAdvice(const RowSource &source, const std::string &howToChoose) {
  auto *file = dynamic_cast<const CsvRowSource *>(&source);
  return file != nullptr ? advice(file->lateEncodingDoubt(), howToChoose,
                                  "; its rows from that line on were read that way: pass ")
                         : std::string();
}

}  // namespace host
}  // namespace quorel
