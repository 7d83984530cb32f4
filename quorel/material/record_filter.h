// RecordFilter: the conditions of a query, all of which must hold. It owns
// its conditions.

#ifndef QUOREL_MATERIAL_RECORD_FILTER_H_
#define QUOREL_MATERIAL_RECORD_FILTER_H_

#include <cstdint>
#include <memory>

#include "quorel/material/filter_condition.h"
#include "quorel/rules/inline_list.h"
#include "quorel/values/object_pool.h"

namespace quorel {

// Rules make a filter for every query, so it comes from the pool, and holds
// the few conditions of a query in itself.
class RecordFilter : public Pooled {
 public:
  RecordFilter() = default;
  ~RecordFilter() {
    for (std::size_t i = 0; i < conditions_.size(); ++i) delete conditions_[i];
  }
  RecordFilter(const RecordFilter &) = delete;
  RecordFilter &operator=(const RecordFilter &) = delete;

  // Takes ownership.
  void addCondition(FilterCondition *condition) {
    std::unique_ptr<FilterCondition> owned(condition);
    conditions_.push_back(owned.get());
    owned.release();
  }
  std::int32_t getNumOfConditions() const { return static_cast<std::int32_t>(conditions_.size()); }
  // The index must be below getNumOfConditions().
  FilterCondition *getCondition(std::int32_t index) const { return conditions_[static_cast<std::size_t>(index)]; }

 private:
  InlineList<FilterCondition *, 2> conditions_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_RECORD_FILTER_H_
