// RecordFilter: the conditions of a query, all of which must hold. It owns
// its conditions.

#ifndef QUOREL_MATERIAL_RECORD_FILTER_H_
#define QUOREL_MATERIAL_RECORD_FILTER_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "quorel/material/filter_condition.h"
#include "quorel/values/object_pool.h"

namespace quorel {

// Rules make a filter for every query, so it comes from the pool.
class RecordFilter : public Pooled {
 public:
  RecordFilter() = default;
  RecordFilter(const RecordFilter &) = delete;
  RecordFilter &operator=(const RecordFilter &) = delete;

  // Takes ownership.
  void addCondition(FilterCondition *condition) { conditions_.emplace_back(condition); }
  std::int32_t getNumOfConditions() const { return static_cast<std::int32_t>(conditions_.size()); }
  // The index must be below getNumOfConditions().
  FilterCondition *getCondition(std::int32_t index) const { return conditions_[index].get(); }

 private:
  std::vector<std::unique_ptr<FilterCondition>, PoolAllocator<std::unique_ptr<FilterCondition>>> conditions_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_RECORD_FILTER_H_
