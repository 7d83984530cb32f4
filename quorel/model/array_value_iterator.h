// ArrayValueIterator: walks the values of an array, last dimension fastest,
// each dimension over a restriction (a range of indices, a single index; by
// default 0, 1, 2, ...) cut at the size that the array gives for it.
//
// Sizes are asked anew at every advance, so rows may differ in length. The
// first index of every dimension is taken from its restriction unchecked:
// the walk gives at least one value, even over an empty array. next() reads
// the element before it advances, so a field read is noted then. The
// iterator owns copies of its restrictions and the iterators over them; the
// array stays its owner's. It runs once.

#ifndef QUOREL_MODEL_ARRAY_VALUE_ITERATOR_H_
#define QUOREL_MODEL_ARRAY_VALUE_ITERATOR_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "quorel/values/object_pool.h"
#include "quorel/values/value_iterator.h"

namespace quorel {

class FieldArray;
class IndexWalk;
class LocalArray;
class RuntimeContext;
class Variable;

class ArrayValueIterator : public ValueIterator {
 public:
  explicit ArrayValueIterator(RuntimeContext *context);
  ~ArrayValueIterator() override;

  bool hasNext() override;
  // With no check of the end: past it, the last indices are read again.
  Value *next() override;

  // Restricts dimension (from 0) to the indices that value walks; keeps a
  // copy. Call before the first hasNext or next.
  void setRestriction(std::int32_t dimension, Value *value);

 protected:
  virtual std::int32_t *getDimension() = 0;
  virtual std::int32_t getSize(RuntimeContext *context, std::int32_t *indices) = 0;
  virtual Variable *getElement(RuntimeContext *context, std::int32_t *indices) = 0;

 private:
  // The walk of one dimension: over its restriction, or, without one, the
  // counting 0, 1, 2, ... that needs no value made.
  struct Walk {
    std::unique_ptr<IndexWalk> restricted;
    std::int64_t next = 0;
  };

  void initialize();
  // Gives dimension d its first index from a fresh walk.
  void restart(std::int32_t d);
  // The next index of dimension d's walk into index; false at its end.
  bool step(std::int32_t d, std::int32_t *index);
  void advance();

  // A walk over an array is made for nearly every loop of every run: what it
  // keeps comes from the thread's pool, not the heap.
  using Restrictions = std::map<std::int32_t, std::unique_ptr<Value>, std::less<std::int32_t>,
                                PoolAllocator<std::pair<const std::int32_t, std::unique_ptr<Value>>>>;
  using Indices = std::vector<std::int32_t, PoolAllocator<std::int32_t>>;

  RuntimeContext *context_;
  bool initialized_ = false;
  std::int32_t dimensionCount_ = 0;
  Restrictions restrictions_;
  std::vector<Walk, PoolAllocator<Walk>> walks_;
  Indices indices_;  // closed by -1
  Indices outer_;    // the indices before a dimension, closed by -1
  bool more_ = true;
};

// Over the elements of a field array, sized by the run's record.
class FieldArrayValueIterator : public ArrayValueIterator {
 public:
  FieldArrayValueIterator(RuntimeContext *context, FieldArray *array);

 protected:
  std::int32_t *getDimension() override;
  std::int32_t getSize(RuntimeContext *context, std::int32_t *indices) override;
  Variable *getElement(RuntimeContext *context, std::int32_t *indices) override;

 private:
  FieldArray *array_;
};

// Over the elements of a local array, sized by its own dimensions.
class LocalArrayValueIterator : public ArrayValueIterator {
 public:
  LocalArrayValueIterator(RuntimeContext *context, LocalArray *array);

 protected:
  std::int32_t *getDimension() override;
  std::int32_t getSize(RuntimeContext *context, std::int32_t *indices) override;
  Variable *getElement(RuntimeContext *context, std::int32_t *indices) override;

 private:
  LocalArray *array_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_ARRAY_VALUE_ITERATOR_H_
