// A small record type built the way generated rule code builds one, and a
// record that logs the calls it receives.

#ifndef QUOREL_TESTS_MODEL_TEST_TREE_H_
#define QUOREL_TESTS_MODEL_TEST_TREE_H_

#include <string>
#include <vector>

#include "quorel/model/field.h"
#include "quorel/model/field_array.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/model/topic.h"
#include "quorel/model/topic_array.h"
#include "quorel/model/type_descriptor.h"

namespace quorel {

// Kind: a child with a first name; the element type of Root.Kinder.
class ChildTopic : public Topic {
 public:
  ChildTopic(TypeDescriptor *type, FieldDescriptor *parent) : Topic(type, parent) {
    vorname = new Field(new TypeDescriptor(type, nullptr, "Vorname", nullptr, FieldTypeText, nullptr, 0), this);
    setField("Vorname", vorname);
  }
  Topic *createElement() override { return new ChildTopic(getTypeDescriptor(), getParent()); }

  Field *vorname;
};

class AddressTopic : public Topic {
 public:
  AddressTopic(TypeDescriptor *type, FieldDescriptor *parent) : Topic(type, parent) {
    setField("Strasse", new Field(new TypeDescriptor(type, nullptr, "Strasse", nullptr, FieldTypeText, nullptr, 0), this));
  }
  Topic *createElement() override { return new AddressTopic(getTypeDescriptor(), getParent()); }
};

// Root: the record type. Like every topic it does not own its own
// TypeDescriptor: a Plausi releases both, or a test through StandaloneRoot.
class RootTopic : public Topic {
 public:
  RootTopic() : RootTopic(new TypeDescriptor(nullptr, nullptr, "Root", "Antrag", FieldTypeTopic, nullptr, 0)) {}
  Topic *createElement() override { return nullptr; }

  Field *name;
  Field *alter;
  Field *alterText;
  Field *betrag;
  Field *datum;
  Field *flag;
  FieldArray *liste;
  FieldArray *matrix;
  TopicArray *kinder;
  AddressTopic *adresse;

 private:
  explicit RootTopic(TypeDescriptor *type) : Topic(type, nullptr) {
    name = add<Field>("Name", FieldTypeText, nullptr, 0);
    alter = add<Field>("Alter", FieldTypeInteger, nullptr, 0);
    alterText = add<Field>("AlterText", FieldTypeInteger, "", 0);
    betrag = add<Field>("Betrag", FieldTypeReal, nullptr, 0);
    datum = add<Field>("Datum", FieldTypeDate, nullptr, 0);
    flag = add<Field>("Flag", FieldTypeBool, nullptr, 0);
    liste = add<FieldArray>("Liste", FieldTypeInteger, nullptr, 1, 3);
    matrix = add<FieldArray>("Matrix", FieldTypeInteger, nullptr, 2, 2, 0);
    auto *kinderType = new TypeDescriptor(type, nullptr, "Kinder", nullptr, FieldTypeTopic, nullptr, 1, 0);
    kinder = new TopicArray(kinderType, this, new ChildTopic(kinderType, this));
    setField("Kinder", kinder);
    auto *adresseType = new TypeDescriptor(type, nullptr, "Adresse", nullptr, FieldTypeTopic, nullptr, 0);
    adresse = new AddressTopic(adresseType, this);
    setField("Adresse", adresse);
  }

  template <typename T, typename... Sizes>
  T *add(const char *fieldName, FieldType type, const char *mask, int count, Sizes... sizes) {
    auto *field = new T(new TypeDescriptor(getTypeDescriptor(), nullptr, fieldName, nullptr, type, mask,
                                           count, sizes...),
                        this);
    setField(fieldName, field);
    return field;
  }
};

// A root topic that releases its own type, for tests without a Plausi.
class StandaloneRoot : public RootTopic {
 public:
  ~StandaloneRoot() override { delete getTypeDescriptor(); }
};

// A SimpleDataRecord that logs the name of each operation it receives.
class LoggingRecord : public SimpleDataRecord {
 public:
  std::int32_t getSize(FieldDescriptor *f, std::int32_t *i) override { return note("getSize", SimpleDataRecord::getSize(f, i)); }
  bool isEmpty(FieldDescriptor *f) override { return note("isEmpty", SimpleDataRecord::isEmpty(f)); }
  const char *getString(FieldDescriptor *f) override { return note("getString", SimpleDataRecord::getString(f)); }
  std::int64_t getInteger(FieldDescriptor *f) override { return note("getInteger", SimpleDataRecord::getInteger(f)); }
  double getReal(FieldDescriptor *f) override { return note("getReal", SimpleDataRecord::getReal(f)); }
  DataRecord *getSubDataRecord(FieldDescriptor *f) override { return note("getSubDataRecord", SimpleDataRecord::getSubDataRecord(f)); }

  std::vector<std::string> calls;

 private:
  template <typename T>
  T note(const char *call, T result) {
    calls.push_back(call);
    return result;
  }
};

}  // namespace quorel

#endif  // QUOREL_TESTS_MODEL_TEST_TREE_H_
