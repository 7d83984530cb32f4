// The record that a host fills from one row after another, the same columns
// each time (see RecordLayout::fill), instead of making a record per row.
// It stays the library's own SimpleDataRecord, which runs read by their
// shortest way, until a run sets a field of it: the fields so set are not
// the next row's, and a fresh record takes its place.

#ifndef QUOREL_HOST_ROW_RECORD_H_
#define QUOREL_HOST_ROW_RECORD_H_

#include <memory>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

// The record to fill with the next row: *record, or a fresh one if there is
// none or a run set a field of it.
SimpleDataRecord *renewedRecord(std::unique_ptr<SimpleDataRecord> *record);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_ROW_RECORD_H_
