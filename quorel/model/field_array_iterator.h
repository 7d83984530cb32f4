// FieldArrayIterator: walks the elements of a FieldArray that exist by the
// record's sizes, row by row, last dimension fastest, giving the Field
// objects rather than their values. Empty arrays and empty rows are skipped.
// Sizes are asked of the run's record as the walk goes, so rows may differ
// in length. The array stays its owner's.

#ifndef QUOREL_MODEL_FIELD_ARRAY_ITERATOR_H_
#define QUOREL_MODEL_FIELD_ARRAY_ITERATOR_H_

#include <cstdint>
#include <vector>

namespace quorel {

class Field;
class FieldArray;
class RuntimeContext;

class FieldArrayIterator {
 public:
  FieldArrayIterator(RuntimeContext *context, FieldArray *array);
  ~FieldArrayIterator();

  FieldArrayIterator(const FieldArrayIterator &) = delete;
  FieldArrayIterator &operator=(const FieldArrayIterator &) = delete;

  bool hasNext() const { return hasNext_; }
  // The element at the current indices; call only while hasNext().
  Field *next();

 private:
  // Moves dimension d to its next element, carrying into the outer
  // dimensions when d is used up; -1 stands before a dimension's first.
  void incrementIndex(std::int32_t d);

  RuntimeContext *context_;
  FieldArray *array_;
  std::int32_t dimensionCount_;
  std::vector<std::int32_t> indices_;  // closed by -1
  bool hasNext_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_ARRAY_ITERATOR_H_
