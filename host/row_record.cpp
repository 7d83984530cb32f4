#include "quorel/host/row_record.h"

namespace quorel {
namespace host {

SimpleDataRecord *renewedRecord(std::unique_ptr<SimpleDataRecord> *record) {
  if (*record == nullptr || (*record)->isSetByField()) *record = std::make_unique<SimpleDataRecord>();
  return record->get();
}

}  // namespace host
}  // namespace quorel
