// A stream read through a ReplayBuffer reads as the stream itself: the
// start kept ahead, every byte after it, and a failure where it happened.

#include "quorel/host/replay_buffer.h"

#include <algorithm>
#include <cerrno>
#include <ios>
#include <istream>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/host/csv_reader.h"

namespace {

using quorel::host::CsvReader;
using quorel::host::ReplayBuffer;

// Gives its text a few bytes at a time, as a pipe does, and then fails
// with the exception a file buffer throws on a read error.
class FailingSource : public std::streambuf {
 public:
  FailingSource(std::string text, std::size_t step) : text_(std::move(text)), step_(step) {}

 protected:
  int_type underflow() override {
    if (at_ >= text_.size()) {
      throw std::ios_base::failure("basic_filebuf::underflow error reading the file",
                                   std::error_code(EIO, std::system_category()));
    }
    std::size_t size = std::min(step_, text_.size() - at_);
    setg(&text_[at_], &text_[at_], &text_[at_] + size);
    at_ += size;
    return traits_type::to_int_type(*gptr());
  }

 private:
  std::string text_;
  std::size_t step_;
  std::size_t at_ = 0;
};

std::string text(int lines) {
  std::string out = "Name;Ort\n";
  for (int i = 0; i < lines; ++i) out += "Name " + std::to_string(i) + ";Ort\n";
  return out;
}

// The rows and failure a CsvReader reads from the buffer.
std::string rowsOf(std::streambuf *buffer) {
  std::istream in(buffer);
  CsvReader reader(in);
  std::string out;
  for (std::vector<std::string> row; reader.next(&row);) out += row[0] + "|";
  return out + (reader.failed() ? "failed: " + reader.failure() : "ended");
}

TEST(ReplayBufferTest, TheStartIsKeptAndTheStreamReadsAsItself) {
  const std::string whole = text(20000);
  for (std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{100}, whole.size(), whole.size() + 5}) {
    std::stringbuf source(whole);
    ReplayBuffer replay(&source, size);
    EXPECT_EQ(whole.substr(0, size), replay.start());
    std::stringbuf plain(whole);
    EXPECT_EQ(rowsOf(&plain), rowsOf(&replay)) << size;
  }
}

TEST(ReplayBufferTest, AFailureIsMetAfterTheBytesReadBeforeIt) {
  const std::string cut = text(300);
  // While the start is read ahead, just after it, and well beyond it.
  for (std::size_t size : {cut.size() + 100, cut.size(), cut.size() / 3}) {
    FailingSource plain(cut, 7), failing(cut, 7);
    ReplayBuffer replay(&failing, size);
    std::string rows = rowsOf(&replay);
    EXPECT_EQ(rowsOf(&plain), rows) << size;
    EXPECT_NE(std::string::npos, rows.find("Name 299|failed: Input/output error")) << rows;
  }
}

}  // namespace
