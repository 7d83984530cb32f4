// BufferedWriter: output to a file descriptor through one buffer, written
// out with write(2) in large pieces. Not for several threads at once; the
// descriptor stays the caller's.

#ifndef QUOREL_HOST_BUFFERED_WRITER_H_
#define QUOREL_HOST_BUFFERED_WRITER_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace quorel {
namespace host {

class BufferedWriter {
 public:
  explicit BufferedWriter(int fd, std::size_t capacity = 1 << 16);
  // Flushes what is left.
  ~BufferedWriter();

  BufferedWriter(const BufferedWriter &) = delete;
  BufferedWriter &operator=(const BufferedWriter &) = delete;

  void write(std::string_view text);
  // Writes out the buffer; false once a write has failed (the output is
  // then incomplete, and later output is dropped).
  bool flush();

 private:
  bool writeAll(std::string_view text);

  int fd_;
  std::size_t capacity_;
  std::string buffer_;
  bool failed_ = false;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_BUFFERED_WRITER_H_
