#include "quorel/host/csv_parts.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "quorel/host/file_error.h"

namespace quorel {
namespace host {

namespace {

constexpr std::size_t kChunk = 1 << 20;

// Walks the lines of a file, as CsvReader ends them, and cuts parts.
class Cutter {
 public:
  Cutter(std::int64_t blockBytes, std::int64_t fileSize, std::vector<CsvPart> *parts)
      : block_(blockBytes), fileSize_(fileSize), parts_(parts), nextCut_(blockBytes) {
    parts_->assign(1, CsvPart{0, 0, 0, 0, fileSize});
  }

  // Takes the next bytes of the file; false at a quote, after which the
  // file is not cut.
  bool take(const char *bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i, ++at_) {
      char c = bytes[i];
      if (c == '\n' && lastWasReturn_) {
        // The second byte of a "\r\n".
        lastWasReturn_ = false;
        lineStart_ = at_ + 1;
        continue;
      }
      lastWasReturn_ = false;
      if (c == '"') return false;
      if (c == '\n' || c == '\r') {
        endLine();
        lastWasReturn_ = c == '\r';
        lineStart_ = at_ + 1;
      } else if (at_ == lineStart_ && lines_ > 0 && at_ >= nextCut_) {
        cut();
      }
    }
    return true;
  }

  // The file has ended.
  void finish() {
    if (at_ > lineStart_) endLine();
    parts_->back().count = rows_ - parts_->back().rows;
  }

 private:
  void endLine() {
    // The header is no row, nor is an empty line.
    if (lines_ > 0 && at_ > lineStart_) ++rows_;
    ++lines_;
  }

  void cut() {
    parts_->back().count = rows_ - parts_->back().rows;
    parts_->push_back(CsvPart{at_, lines_, rows_, 0, fileSize_});
    nextCut_ = (at_ / block_ + 1) * block_;
  }

  std::int64_t block_;
  std::int64_t fileSize_;
  std::vector<CsvPart> *parts_;
  std::int64_t nextCut_;
  std::int64_t at_ = 0;         // the offset of the next byte
  std::int64_t lineStart_ = 0;  // where the line being read began
  std::int64_t lines_ = 0;      // lines ended so far
  std::int64_t rows_ = 0;       // rows among them
  bool lastWasReturn_ = false;
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
  Cutter cutter(blockBytes, size, parts);
  std::string chunk(kChunk, '\0');
  while (in) {
    in.read(&chunk[0], static_cast<std::streamsize>(chunk.size()));
    std::streamsize read = in.gcount();
    if (read <= 0) break;
    if (!cutter.take(chunk.data(), static_cast<std::size_t>(read))) {
      parts->assign(1, CsvPart());
      return true;
    }
  }
  if (in.bad()) {
    *message = fileError("read", file, std::strerror(errno != 0 ? errno : EIO));
    return false;
  }
  cutter.finish();
  return true;
}

}  // namespace host
}  // namespace quorel
