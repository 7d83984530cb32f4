// SimpleDataRecord: the library's own record, a flat store of values keyed
// by the hash of a field's hierarchy text ("Root.Liste[2]"), in a hash table
// of those codes. Array sizes lie
// under the text of the array, the outer indices and "#" ("Root.Liste[2]#").
//
// Only hash codes are kept: two texts with the same code are one field.
// Numbers are held as NumberValue (integers pass through a double), texts as
// StringValue; the record owns them until they are replaced, emptied or the
// record dies. Values handed out stay valid until that key changes: a text
// that replaces a text may reuse the former value for the new one.

#ifndef QUOREL_MODEL_SIMPLE_DATA_RECORD_H_
#define QUOREL_MODEL_SIMPLE_DATA_RECORD_H_

#include <cstdint>
#include <string_view>

#include "quorel/model/code_table.h"
#include "quorel/model/data_record.h"

namespace quorel {

class Value;

class SimpleDataRecord : public DataRecord {
 public:
  SimpleDataRecord();
  virtual ~SimpleDataRecord();

  SimpleDataRecord(const SimpleDataRecord &) = delete;
  SimpleDataRecord &operator=(const SimpleDataRecord &) = delete;

  std::int32_t getSize(FieldDescriptor *field, std::int32_t *indices) override;
  bool isEmpty(FieldDescriptor *field) override;
  // On an empty field the getters answer "", 0 and 0.0.
  const char *getString(FieldDescriptor *field) override;
  void setString(FieldDescriptor *field, const char *text) override;
  std::int64_t getInteger(FieldDescriptor *field) override;
  void setInteger(FieldDescriptor *field, std::int64_t number) override;
  double getReal(FieldDescriptor *field) override;
  void setReal(FieldDescriptor *field, double number) override;
  void setEmpty(FieldDescriptor *field) override;
  // The record is flat: always itself.
  DataRecord *getSubDataRecord(FieldDescriptor *field) override;

  // Whether a field was set through the setters by field (as rules set
  // fields) since the record was made. A host that fills one record row
  // after row (setValueAt) makes a new one then: the fields so set are not
  // the next row's.
  bool isSetByField() const { return setByField_; }

  // The value that the getters read for the field, or null when it is
  // empty: isEmpty and a getter in one lookup.
  Value *getStoredValue(FieldDescriptor *field) { return find(getKeyAsHashCode(field)); }

  // Brings the record into the cache ahead of a run, which reads most of its
  // fields: a record checked long after it was filled otherwise waits for
  // memory at each field in turn.
  void prefetch() const { values_.prefetch(); }

  // Access by hierarchy text, as a host fills the record.
  Value *getValue(const char *name);
  void setValue(const char *name, std::int64_t number);
  void setValue(const char *name, std::int32_t number);
  void setValue(const char *name, double number);
  void setValue(const char *name, const char *text);
  void setSize(const char *name, std::int32_t size);

  // The same by key: keyOf(name) is the key under which setValue(name, ...)
  // stores, and keyOfSize(name) the one of setSize(name, ...). A host that
  // fills many records of one layout works the keys out once per column.
  static std::int32_t keyOf(const char *name);
  static std::int32_t keyOfSize(const char *name);
  // Null text empties the field.
  void setValueAt(std::int32_t key, const char *text);
  // The bytes of text as they stand, a NUL among them too: a host that
  // knows a cell's length spares the library counting it again.
  void setValueAt(std::int32_t key, std::string_view text);
  void setValueAt(std::int32_t key, std::int64_t number);
  void setValueAt(std::int32_t key, double number);

 private:
  std::int32_t getKeyAsHashCode(FieldDescriptor *field);
  std::int32_t getKeyForSizeAsHashCode(FieldDescriptor *field, const std::int32_t *indices);
  Value *find(std::int32_t key);
  // Stores value under key, replacing and destroying what was there; null
  // removes the key.
  void store(std::int32_t key, Value *value);
  // Stores a text under key; a text there before takes the new one in its
  // memory.
  void storeText(std::int32_t key, std::string_view text);
  // The same for a number.
  void storeNumber(std::int32_t key, double number);

  CodeTable<Value> values_;
  bool setByField_ = false;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_SIMPLE_DATA_RECORD_H_
