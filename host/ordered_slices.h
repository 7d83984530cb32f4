// OrderedSlices: work on a stream cut into slices, done on several threads,
// with what the slices gave handed on in the stream's order.
//
// Each thread in turn fills a slice from the stream (one thread at a time,
// since a source is read front to back), works on it (all threads at once),
// and when its slice is the next one due, hands it on together with any
// later slices already done (one thread at a time). No thread waits at a
// batch's end for a slower one, and none stays idle while the next slice due
// is still being worked on, as long as it has a free slot.
//
// The caller owns what a slice holds, in an array of threads x
// slotsPerThread slots; this class only says which slot a step is about.
// Thread t fills and works on its own slots alone, t * slotsPerThread up to
// (t + 1) * slotsPerThread, so what a slot holds stays with one thread (its
// cache, its allocator) from one slice to the next. At most all slots are
// under way at once, so memory stays flat however long the stream is. A
// slot is filled again only after it was handed on. The steps must not
// throw.

#ifndef QUOREL_HOST_ORDERED_SLICES_H_
#define QUOREL_HOST_ORDERED_SLICES_H_

#include <cstddef>
#include <functional>

namespace quorel {
namespace host {

class OrderedSlices {
 public:
  // Slots per thread that keep every thread busy: with a few slices under
  // way each, none waits for a slot while a slower slice is still due to be
  // handed on.
  static constexpr std::size_t kSlotsPerThread = 4;

  struct Steps {
    // Fills the slot with the next slice; false when the stream ends with
    // this slice (which may then be empty). Not called again after false.
    std::function<bool(std::size_t slot)> fill;
    // Works on the slot's slice on thread `thread` (0 to threads - 1), the
    // slot's owner: state kept per thread may be used without locking.
    std::function<void(std::size_t thread, std::size_t slot)> work;
    // Hands on what the slot's slice gave; false stops the run: no further
    // slice is begun or handed on (one being filled or worked on ends).
    std::function<bool(std::size_t slot)> handOn;
  };

  // Runs the steps over the whole stream on `threads` threads (at least 1),
  // the calling one (thread 0) among them, and returns once all have ended;
  // false when handOn stopped the run. slotsPerThread is at least 1.
  static bool run(std::size_t threads, std::size_t slotsPerThread, const Steps &steps);
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_ORDERED_SLICES_H_
