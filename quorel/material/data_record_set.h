// DataRecordSet: the records a query found, in the order of the walk. The
// records stay the MaterialAccess's and must live as long as the run. A
// query makes one for every walk: the few records it finds as a rule lie in
// the set itself, more in a block of the thread's pool.

#ifndef QUOREL_MATERIAL_DATA_RECORD_SET_H_
#define QUOREL_MATERIAL_DATA_RECORD_SET_H_

#include <cstdint>

#include "quorel/rules/inline_list.h"

namespace quorel {

class DataRecord;

class DataRecordSet {
 public:
  void addDataRecord(DataRecord *record) { records_.push_back(record); }
  std::int32_t getNumOfDataRecords() const { return static_cast<std::int32_t>(records_.size()); }
  // The index must be below getNumOfDataRecords().
  DataRecord *getDataRecord(std::int32_t index) const { return records_[static_cast<std::size_t>(index)]; }

 private:
  InlineList<DataRecord *, 4> records_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_DATA_RECORD_SET_H_
