// ReplayBuffer: a stream buffer that reads the start of another (a pipe,
// which cannot be read twice) ahead, keeps it to be looked at, and then
// gives it back followed by the rest, so that a reader over it reads the
// stream as it stands.
//
// A failure of the other buffer while the start is read ahead (its
// exception) is kept and thrown where a reader reaches it: after the bytes
// read before it, as a reader of the stream itself would meet it. Reads no
// more than the other buffer holds at a time beyond the start, as a reader
// asks. Does not own the other buffer, which must outlive it.

#ifndef QUOREL_HOST_REPLAY_BUFFER_H_
#define QUOREL_HOST_REPLAY_BUFFER_H_

#include <cstddef>
#include <exception>
#include <streambuf>
#include <string>
#include <vector>

namespace quorel {
namespace host {

class ReplayBuffer : public std::streambuf {
 public:
  // Reads up to size bytes of source ahead: fewer at its end or where it
  // fails.
  ReplayBuffer(std::streambuf *source, std::size_t size);

  ReplayBuffer(const ReplayBuffer &) = delete;
  ReplayBuffer &operator=(const ReplayBuffer &) = delete;

  // The bytes read ahead.
  const std::string &start() const { return start_; }

 protected:
  int_type underflow() override;

 private:
  std::streambuf *source_;
  std::string start_;
  std::exception_ptr failure_;  // of the read ahead, thrown after start_
  bool replayed_ = false;
  std::vector<char> chunk_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_REPLAY_BUFFER_H_
