#include "quorel/host/buffered_writer.h"

#include <unistd.h>

#include <cerrno>

namespace quorel {
namespace host {

BufferedWriter::BufferedWriter(int fd, std::size_t capacity) : fd_(fd), capacity_(capacity) {
  buffer_.reserve(capacity);
}

BufferedWriter::~BufferedWriter() { flush(); }

void BufferedWriter::write(std::string_view text) {
  if (buffer_.size() + text.size() > capacity_) {
    flush();
    // A piece larger than the buffer goes out as it is, without a copy.
    if (text.size() >= capacity_) {
      writeAll(text);
      return;
    }
  }
  buffer_ += text;
}

bool BufferedWriter::flush() {
  writeAll(buffer_);
  buffer_.clear();
  return !failed_;
}

bool BufferedWriter::writeAll(std::string_view text) {
  while (!failed_ && !text.empty()) {
    ssize_t written = ::write(fd_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      failed_ = true;
      break;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return !failed_;
}

}  // namespace host
}  // namespace quorel
