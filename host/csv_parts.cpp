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
  Cutter(CsvReader *lines, std::int64_t blockBytes, std::int64_t fileSize, std::vector<CsvPart> *parts)
      : lines_(lines), block_(blockBytes), fileSize_(fileSize), parts_(parts), nextCut_(blockBytes) {
    parts_->assign(1, CsvPart{0, 0, 0, 0, fileSize});
  }

  void run() {
    std::string_view text;
    std::int64_t start = 0;
    bool header = true;
    while (lines_->nextLine(&text, &start)) {
      ++linesRead_;
      if (header) {
        bool byteOrderMark;
        separator_ = CsvReader::readHeader(&text, &byteOrderMark);
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
    parts_->push_back(CsvPart{start, linesRead_ - 1, rows_, 0, fileSize_});
    nextCut_ = (start / block_ + 1) * block_;
  }

  // Reads on over the lines that a quoted cell of the row runs to. A cell
  // that does not close within CsvReader's limits leaves the row on its
  // first line, and the lines after that one are read again (from the
  // input: such a cell is rare).
  void readQuoted(std::string_view first) {
    CsvQuotes quotes;
    readLine(&quotes, first, separator_);
    if (!quotes.quoted()) return;
    std::int64_t firstLine = linesRead_;
    std::size_t joined = first.size();
    std::string_view text;
    std::int64_t start = 0;
    std::int64_t after = -1;  // where the line after the first begins
    for (int more = 0; quotes.quoted(); ++more) {
      bool within = more + 1 < CsvReader::kMaxQuotedLines && joined <= CsvReader::kMaxQuotedBytes;
      if (!within || !lines_->nextLine(&text, &start)) {
        if (after >= 0) lines_->seek(after, 0);
        linesRead_ = firstLine;
        return;
      }
      if (after < 0) after = start;
      ++linesRead_;
      joined += 1 + text.size();
      readLine(&quotes, text, separator_);
    }
  }

  CsvReader *lines_;  // read for its lines alone
  std::int64_t block_;
  std::int64_t fileSize_;
  std::vector<CsvPart> *parts_;
  std::int64_t nextCut_;
  std::int64_t linesRead_ = 0;  // lines read so far, counted here
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
  CsvReader lines(in);
  Cutter(&lines, blockBytes, size, parts).run();
  if (lines.failed()) {
    *message = fileError("read", file, lines.failure());
    parts->assign(1, CsvPart());
    return false;
  }
  return true;
}

}  // namespace host
}  // namespace quorel
