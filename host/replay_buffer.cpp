#include "quorel/host/replay_buffer.h"

#include <algorithm>

namespace quorel {
namespace host {

namespace {

constexpr std::size_t kChunk = 1 << 16;

// Up to most bytes of what source holds now, at least one unless it has
// ended: a pipe's reader gets each line as it comes, not once a chunk is
// full. Throws what source throws.
std::streamsize readHeld(std::streambuf *source, char *into, std::size_t most) {
  if (source->sgetc() == std::streambuf::traits_type::eof()) return 0;
  std::streamsize held = std::max<std::streamsize>(source->in_avail(), 1);
  return source->sgetn(into, std::min<std::streamsize>(held, static_cast<std::streamsize>(most)));
}

}  // namespace

ReplayBuffer::ReplayBuffer(std::streambuf *source, std::size_t size) : source_(source), chunk_(kChunk) {
  try {
    while (start_.size() < size) {
      std::streamsize read = readHeld(source_, chunk_.data(), std::min(kChunk, size - start_.size()));
      if (read <= 0) break;
      start_.append(chunk_.data(), static_cast<std::size_t>(read));
    }
  } catch (...) {
    failure_ = std::current_exception();
  }
}

ReplayBuffer::int_type ReplayBuffer::underflow() {
  if (!replayed_) {
    replayed_ = true;
    if (!start_.empty()) {
      setg(&start_[0], &start_[0], &start_[0] + start_.size());
      return traits_type::to_int_type(*gptr());
    }
  }
  if (failure_) {
    std::exception_ptr failure = failure_;
    failure_ = nullptr;
    std::rethrow_exception(failure);
  }
  std::streamsize read = readHeld(source_, chunk_.data(), chunk_.size());
  if (read <= 0) return traits_type::eof();
  setg(chunk_.data(), chunk_.data(), chunk_.data() + read);
  return traits_type::to_int_type(*gptr());
}

}  // namespace host
}  // namespace quorel
