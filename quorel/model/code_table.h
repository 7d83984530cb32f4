// CodeTable: owned objects keyed by a 32-bit hash code, in one array with
// open addressing and linear probing, as SimpleDataRecord keeps its fields.
// A lookup costs a multiplication and, at a load of at most one half, one
// or two slots; no entry is a node of its own.
//
// The table owns what it holds. Nothing is ordered; the table is never
// walked.

#ifndef QUOREL_MODEL_CODE_TABLE_H_
#define QUOREL_MODEL_CODE_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace quorel {

template <typename T>
class CodeTable {
 public:
  // The object under code, or null.
  T *find(std::int32_t code) const {
    if (slots_.empty()) return nullptr;
    for (std::size_t i = home(code);; i = next(i)) {
      const Slot &slot = slots_[i];
      if (!slot.object) return nullptr;
      if (slot.code == code) return slot.object.get();
    }
  }

  // Puts object under code, or removes the entry when object is null, and
  // gives back what was there before, for the caller to destroy.
  std::unique_ptr<T> put(std::int32_t code, std::unique_ptr<T> object) {
    if (!object) return remove(code);
    if ((count_ + 1) * 2 > slots_.size()) grow();
    std::size_t i = home(code);
    while (slots_[i].object && slots_[i].code != code) i = next(i);
    Slot &slot = slots_[i];
    if (!slot.object) ++count_;
    slot.code = code;
    std::swap(slot.object, object);
    return object;
  }

  // Asks the processor to bring the table and every object into the cache,
  // each in one request that needs no answer, so that the fetches overlap
  // instead of waiting one by one as lookups find them.
  void prefetch() const {
    for (const Slot &slot : slots_) {
      if (slot.object) __builtin_prefetch(slot.object.get());
    }
  }

 private:
  // An empty slot holds no object.
  struct Slot {
    std::int32_t code = 0;
    std::unique_ptr<T> object;
  };

  // 16 slots at first.
  static constexpr int kFirstBits = 4;

  // Fibonacci hashing: the top bits of the product spread neighbouring codes.
  std::size_t home(std::int32_t code) const {
    return static_cast<std::size_t>((static_cast<std::uint32_t>(code) * 2654435769u) >> (32 - bits_));
  }
  std::size_t next(std::size_t i) const { return (i + 1) & (slots_.size() - 1); }

  void grow() {
    std::vector<Slot> former = std::move(slots_);
    bits_ = former.empty() ? kFirstBits : bits_ + 1;
    slots_ = std::vector<Slot>(std::size_t{1} << bits_);
    for (Slot &slot : former) {
      if (!slot.object) continue;
      std::size_t i = home(slot.code);
      while (slots_[i].object) i = next(i);
      slots_[i] = std::move(slot);
    }
  }

  std::unique_ptr<T> remove(std::int32_t code) {
    if (slots_.empty()) return nullptr;
    std::size_t hole = home(code);
    while (slots_[hole].object && slots_[hole].code != code) hole = next(hole);
    std::unique_ptr<T> removed = std::move(slots_[hole].object);
    if (!removed) return nullptr;
    --count_;
    // Shift back the entries after the hole whose probe passed over it, so
    // that every lookup still reaches its entry without a gap.
    for (std::size_t i = next(hole); slots_[i].object; i = next(i)) {
      std::size_t wanted = home(slots_[i].code);
      bool passesHole = hole <= i ? (wanted <= hole || wanted > i) : (wanted <= hole && wanted > i);
      if (passesHole) {
        slots_[hole] = std::move(slots_[i]);
        hole = i;
      }
    }
    return removed;
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
  int bits_ = 0;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_CODE_TABLE_H_
