// LocalArray: a dimensioned variable of the rule itself. Its sizes are fixed
// at construction (an entry 0 is a size of 0); its elements are
// LocalVariables, NilValue until set, made on first access and kept, with
// their values, as long as the array lives.

#ifndef QUOREL_MODEL_LOCAL_ARRAY_H_
#define QUOREL_MODEL_LOCAL_ARRAY_H_

#include <cstdint>

#include "quorel/model/element_table.h"
#include "quorel/model/index_list.h"
#include "quorel/model/local_variable.h"

namespace quorel {

class RuntimeContext;

class LocalArray {
 public:
  // Followed by count dimension sizes (int); a count below 1 gives no
  // dimensions.
  explicit LocalArray(std::int32_t count, ...);

  LocalArray(const LocalArray &) = delete;
  LocalArray &operator=(const LocalArray &) = delete;

  std::int32_t *getDimension() const { return dimension_.get(); }

  // Entries of the dimension after indices; 1 when indices select one
  // element; type 7 otherwise. The context is not used.
  std::int32_t getSize(RuntimeContext *context, const std::int32_t *indices);
  std::int32_t getSize(RuntimeContext *context, std::int32_t count, ...);

  // The element of indices; type 7 unless there is one index per dimension.
  LocalVariable *getElement(RuntimeContext *context, const std::int32_t *indices);
  LocalVariable *getElement(RuntimeContext *context, std::int32_t count, ...);

 private:
  IndexList dimension_;
  ElementTable<LocalVariable> elements_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_LOCAL_ARRAY_H_
