// RowRecord: a SimpleDataRecord that a host fills from one row after
// another, the same columns each time (see RecordLayout::fill), instead of
// making a record per row. It notes whether a run wrote into it (a rule that
// sets a field): the fields so written are not the row's, so such a record
// must not be filled again, and needsRenewal() says so.

#ifndef QUOREL_HOST_ROW_RECORD_H_
#define QUOREL_HOST_ROW_RECORD_H_

#include <cstdint>
#include <memory>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

class RowRecord : public SimpleDataRecord {
 public:
  // A record made afresh if there is none or the last run wrote into it;
  // *record otherwise.
  static RowRecord *renewed(std::unique_ptr<RowRecord> *record);

  bool needsRenewal() const { return written_; }

  void setString(FieldDescriptor *field, const char *text) override;
  void setInteger(FieldDescriptor *field, std::int64_t number) override;
  void setReal(FieldDescriptor *field, double number) override;
  void setEmpty(FieldDescriptor *field) override;

 private:
  bool written_ = false;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_ROW_RECORD_H_
