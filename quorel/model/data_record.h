// DataRecord: the boundary between the library and the data it checks. The
// host implements it over whatever holds its records, or uses
// SimpleDataRecord. The record is asked per field, with the FieldDescriptor
// as the question; array elements arrive as descriptors with indices.
//
// Every access first walks getSubDataRecord over the field's parents, root
// first, and then calls the field operation on the record reached. A read
// asks isEmpty before any get. Texts handed in are valid for the call only;
// a text handed out need only live until the next call on the record.
//
// The order of the operations is part of the interface. Records are
// destroyed through their own type, never through this class.

#ifndef QUOREL_MODEL_DATA_RECORD_H_
#define QUOREL_MODEL_DATA_RECORD_H_

#include <cstdint>

namespace quorel {

class FieldDescriptor;

class DataRecord {
 public:
  // Entries of the field's dimension declared 0, after the outer indices.
  virtual std::int32_t getSize(FieldDescriptor *field, std::int32_t *indices) = 0;
  virtual bool isEmpty(FieldDescriptor *field) = 0;
  virtual const char *getString(FieldDescriptor *field) = 0;
  virtual void setString(FieldDescriptor *field, const char *text) = 0;
  virtual std::int64_t getInteger(FieldDescriptor *field) = 0;
  virtual void setInteger(FieldDescriptor *field, std::int64_t number) = 0;
  virtual double getReal(FieldDescriptor *field) = 0;
  virtual void setReal(FieldDescriptor *field, double number) = 0;
  virtual void setEmpty(FieldDescriptor *field) = 0;
  // The record holding the fields of a parent topic; stays this record's.
  virtual DataRecord *getSubDataRecord(FieldDescriptor *field) = 0;

 protected:
  DataRecord() = default;
  DataRecord(const DataRecord &) = default;
  DataRecord &operator=(const DataRecord &) = default;
  ~DataRecord() = default;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_DATA_RECORD_H_
