#include "quorel/host/row_record.h"

namespace quorel {
namespace host {

RowRecord *RowRecord::renewed(std::unique_ptr<RowRecord> *record) {
  if (*record == nullptr || (*record)->needsRenewal()) *record = std::make_unique<RowRecord>();
  return record->get();
}

void RowRecord::setString(FieldDescriptor *field, const char *text) {
  written_ = true;
  SimpleDataRecord::setString(field, text);
}

void RowRecord::setInteger(FieldDescriptor *field, std::int64_t number) {
  written_ = true;
  SimpleDataRecord::setInteger(field, number);
}

void RowRecord::setReal(FieldDescriptor *field, double number) {
  written_ = true;
  SimpleDataRecord::setReal(field, number);
}

void RowRecord::setEmpty(FieldDescriptor *field) {
  written_ = true;
  SimpleDataRecord::setEmpty(field);
}

}  // namespace host
}  // namespace quorel
