#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/material/data_record_set.h"
#include "quorel/material/field_set.h"
#include "quorel/material/material_access.h"
#include "quorel/material/record_filter.h"
#include "quorel/model/field.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/values/value.h"
#include "quorel/values/value_iterator.h"
#include "quorel/values/value_set.h"
#include "test_support.h"

namespace quorel {
namespace {

// The material "Kunden" with a number and a name per record.
class CustomerTopic : public TestMaterialTopic {
 public:
  CustomerTopic() : TestMaterialTopic("Kunden") {
    nr = field("Nr", FieldTypeInteger);
    name = field("Name", FieldTypeText);
  }

  Field *nr;
  Field *name;
};

// An in-memory store that evaluates the conditions of a query for real:
// operator 0 is equality, 2 "greater than".
class MemoryAccess : public MaterialAccess {
 public:
  explicit MemoryAccess(RuntimeContext *context) : context_(context) {}

  void add(std::int64_t nr, const char *name) {
    auto record = std::make_unique<SimpleDataRecord>();
    record->setValue("Kunden.Nr", nr);
    record->setValue("Kunden.Name", name);
    records_.push_back(std::move(record));
  }
  // A record whose number is text: reading it fails.
  void addUnreadable(const char *nr) {
    auto record = std::make_unique<SimpleDataRecord>();
    record->setValue("Kunden.Nr", nr);
    records_.push_back(std::move(record));
  }

  bool isMaterialAvailable(MaterialDescriptor *) override { return available; }

  bool containsValues(MaterialDescriptor *, RecordFilter *filter, FieldSet *fields, ValueSet *values) override {
    ++containsCalls;
    lastTupleSize = values->getNumOfValues();
    for (auto &record : records_) {
      if (!matches(record.get(), filter)) continue;
      bool all = true;
      for (std::int32_t i = 0; i < fields->getNumOfFields() && all; ++i) {
        all = fields->getField(i)->get(context_, record.get())->eq(values->getValue(i));
      }
      if (all) return true;
    }
    return false;
  }

  void readRecords(DataRecordSet *result, MaterialDescriptor *, RecordFilter *filter, FieldSet *) override {
    ++readCalls;
    for (auto &record : records_) {
      if (matches(record.get(), filter)) result->addDataRecord(record.get());
    }
  }

  bool available = true;
  int readCalls = 0;
  int containsCalls = 0;
  std::int32_t lastTupleSize = -1;

 private:
  bool matches(SimpleDataRecord *record, RecordFilter *filter) {
    for (std::int32_t i = 0; i < filter->getNumOfConditions(); ++i) {
      FilterCondition *c = filter->getCondition(i);
      Value *actual = c->getField()->get(context_, record);
      bool holds = c->getOperatorType() == OPERATOR_GREATER ? actual->gt(c->getComparativeValue())
                                                            : actual->eq(c->getComparativeValue());
      if (!holds) return false;
    }
    return true;
  }

  RuntimeContext *context_;
  std::vector<std::unique_ptr<SimpleDataRecord>> records_;
};

class MaterialTest : public ::testing::Test {
 protected:
  void SetUp() override {
    run_.context.setMaterialAccess(&access_);
    access_.add(1, "Meier");
    access_.add(2, "Schulz");
    access_.add(3, "Huber");
  }
  RuntimeContext *rt() { return &run_.runtime; }

  std::vector<std::string> walk(Value *material) {
    std::vector<std::string> texts;
    std::unique_ptr<ValueIterator> it(material->asRange());
    while (it->hasNext()) texts.push_back(it->next()->asString());
    return texts;
  }

  CustomerTopic customers_;
  TestRun run_;
  MemoryAccess access_{&run_.runtime};
};

TEST_F(MaterialTest, WalksRecordByRecordWithFieldsInOrder) {
  Value *both = rt()->createMaterial(&customers_, 0, 2, customers_.nr, customers_.name);
  EXPECT_EQ(0, access_.readCalls);  // nothing runs at creation
  EXPECT_EQ((std::vector<std::string>{"1", "Meier", "2", "Schulz", "3", "Huber"}), walk(both));
  EXPECT_EQ(3u, walk(rt()->createMaterial(&customers_, 0, 1, customers_.name)).size());
  EXPECT_EQ(2, access_.readCalls);  // each walk asks the host again
  Value *none = rt()->createMaterial(&customers_, 0, 0);
  EXPECT_TRUE(walk(none).empty());
  EXPECT_TRUE(none->isRange());
  EXPECT_FALSE(none->isNil());
}

// More records, fields and conditions than a query keeps in itself.
TEST_F(MaterialTest, LargeQueriesWalkWhole) {
  for (std::int64_t nr = 4; nr <= 9; ++nr) access_.add(nr, ("Kunde " + std::to_string(nr)).c_str());
  Value *fields = rt()->createMaterial(&customers_, 0, 6, customers_.nr, customers_.name, customers_.nr,
                                       customers_.name, customers_.nr, customers_.name);
  std::vector<std::string> texts = walk(fields);
  ASSERT_EQ(54u, texts.size());
  EXPECT_EQ((std::vector<std::string>{"9", "Kunde 9", "9", "Kunde 9", "9", "Kunde 9"}),
            std::vector<std::string>(texts.end() - 6, texts.end()));
  Value *one = rt()->createNumberValue(1.0);
  Value *eight = rt()->createNumberValue(8.0);
  Value *conditions = rt()->createMaterial(&customers_, 3, 1, customers_.nr, OPERATOR_GREATER, one, customers_.nr,
                                           OPERATOR_GREATER, rt()->createNumberValue(3.0), customers_.nr,
                                           OPERATOR_EQUAL, eight, customers_.name);
  EXPECT_EQ((std::vector<std::string>{"Kunde 8"}), walk(conditions));
}

TEST_F(MaterialTest, ConditionsFilterAndTheFirstValueIsKept) {
  Value *two = rt()->createNumberValue(2.0);
  Value *after = rt()->createMaterial(&customers_, 1, 1, customers_.nr, OPERATOR_GREATER, two, customers_.name);
  EXPECT_STREQ("Huber", after->asString());
  EXPECT_STREQ("Huber", after->asString());
  EXPECT_EQ(1, access_.readCalls);
  std::unique_ptr<Value> copy(after->copy());
  EXPECT_STREQ("Huber", copy->asString());  // the copy queries anew
  EXPECT_EQ(2, access_.readCalls);

  Value *nobody = rt()->createMaterial(&customers_, 1, 1, customers_.nr, OPERATOR_EQUAL,
                                       rt()->createNumberValue(9.0), customers_.name);
  expectFailure([&] { nobody->asString(); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");
  expectFailure([&] { nobody->asReal(); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");
  EXPECT_EQ(3, access_.readCalls);
}

TEST_F(MaterialTest, FirstValueFailsAsTheWalkFails) {
  // The first value is taken from a walk, and a walk refuses a field that
  // could not be read, in whichever record it stands.
  access_.addUnreadable("vier");
  Value *pairs = rt()->createMaterial(&customers_, 0, 2, customers_.name, customers_.nr);
  PlausiException walkFailure = thrownBy([&] { walk(pairs); });
  EXPECT_EQ(EXCEPTION_CONVERSION, walkFailure.getType());
  for (int attempt = 0; attempt < 2; ++attempt) {
    expectFailure([&] { pairs->asString(); }, EXCEPTION_CONVERSION, walkFailure.getMessage());
  }
  expectFailure([&] { pairs->asInteger(); }, EXCEPTION_CONVERSION, walkFailure.getMessage());
  expectFailure([&] { pairs->asReal(); }, EXCEPTION_CONVERSION, walkFailure.getMessage());
  expectFailure([&] { pairs->asBool(); }, EXCEPTION_CONVERSION, walkFailure.getMessage());
  // Without the unreadable field the same records give their first value.
  Value *names = rt()->createMaterial(&customers_, 0, 1, customers_.name);
  EXPECT_STREQ("Meier", names->asString());
}

TEST_F(MaterialTest, ContainmentIsAskedOfTheHostWithCopies) {
  Value *names = rt()->createMaterial(&customers_, 0, 1, customers_.name);
  EXPECT_TRUE(names->contains(rt()->createStringValue("Schulz")));
  EXPECT_EQ(1, access_.lastTupleSize);
  EXPECT_FALSE(names->contains(rt()->createStringValue("Lehmann")));
  Value *pairs = rt()->createMaterial(&customers_, 0, 2, customers_.nr, customers_.name);
  Value *tuple = rt()->createRangeSeries(2, rt()->createNumberValue(2.0), rt()->createStringValue("Schulz"));
  EXPECT_TRUE(pairs->contains(tuple));
  EXPECT_EQ(0, access_.readCalls);
  // Fewer values than fields, and more.
  for (Value *wrong : {rt()->createStringValue("Schulz"),
                       rt()->createRangeSeries(3, rt()->createNumberValue(2.0), rt()->createStringValue("Schulz"),
                                               rt()->createStringValue("x"))}) {
    expectFailure([&] { pairs->contains(wrong); }, EXCEPTION_ILLEGAL_ARGUMENT,
                  "Fehler beim Materialzugriff: Anzahl der Werte stimmt nicht mit der Anzahl der Felder "
                  "\xFC" "berein.");
  }
  EXPECT_EQ(2, access_.lastTupleSize);  // neither reached the host
}

TEST_F(MaterialTest, MissingAccessFailsWithTheMaterialsName) {
  Value *names = rt()->createMaterial(&customers_, 0, 1, customers_.name);
  access_.available = false;
  expectFailure([&] { delete names->asRange(); }, EXCEPTION_MATERIAL_ACCESS, "Kunden");
  expectFailure([&] { names->asString(); }, EXCEPTION_MATERIAL_ACCESS, "Kunden");
  expectFailure([&] { names->contains(rt()->createStringValue("x")); }, EXCEPTION_MATERIAL_ACCESS, "Kunden");
  // A failure that is not about the value's shape is no answer of the
  // type check: it reaches the caller.
  expectFailure([&] { Functions::isTypeConform(rt(), names, FieldTypeText, nullptr); }, EXCEPTION_MATERIAL_ACCESS,
                "Kunden");
  // A tuple of the wrong length is reported first.
  EXPECT_EQ(EXCEPTION_ILLEGAL_ARGUMENT,
            thrownBy([&] { names->contains(rt()->createRangeSeries(0)); }).getType());
  run_.context.setMaterialAccess(nullptr);
  expectFailure([&] { delete names->asRange(); }, EXCEPTION_MATERIAL_ACCESS, "Kunden");
}

TEST_F(MaterialTest, MaterialValuesReadOnceAndOutliveTheirSection) {
  SimpleDataRecord record;
  record.setValue("Kunden.Name", "Meier");
  rt()->startNewSection("Abfrage", false);
  Value *value = rt()->createMaterialValue(customers_.name, &record);
  rt()->startNewSection("Innen", false);
  EXPECT_STREQ("Meier", value->asString());  // read while the inner section is current
  rt()->leaveCurrentSection();
  EXPECT_STREQ("Meier", value->asString());  // the value read is the MaterialValue's own
  record.setValue("Kunden.Name", "Schulz");
  EXPECT_STREQ("Meier", value->asString());  // read once
  EXPECT_TRUE(value->eq(rt()->createStringValue("Meier")));
  std::unique_ptr<Value> copy(value->copy());
  EXPECT_EQ(STRING_LEVEL, copy->getOperatorLevel());
  rt()->leaveCurrentSection();

  Value *empty = rt()->createMaterialValue(customers_.nr, &record);
  EXPECT_FALSE(empty->isValid());
}

TEST_F(MaterialTest, MaterialValueAnswersAsTheValueItRead) {
  SimpleDataRecord record;
  record.setValue("Kunden.Nr", "42");
  Value *nr = rt()->createMaterialValue(customers_.nr, &record);
  Value *same = rt()->createNumberValue(42.0);
  Value *less = rt()->createNumberValue(41.0);
  EXPECT_FALSE(nr->isNil());
  EXPECT_FALSE(nr->isRange());
  EXPECT_EQ(NUMBER_LEVEL, nr->getOperatorLevel());
  EXPECT_EQ(42, nr->asInteger());
  EXPECT_DOUBLE_EQ(42.0, nr->asReal());
  EXPECT_STREQ("42", nr->asString());
  EXPECT_FALSE(nr->asBool());  // only the number 1 is true
  EXPECT_TRUE(nr->eq(same));
  EXPECT_FALSE(nr->ne(same));
  EXPECT_TRUE(nr->gt(less));
  EXPECT_TRUE(nr->ge(same));
  EXPECT_FALSE(nr->lt(same));
  EXPECT_TRUE(nr->le(same));
  EXPECT_TRUE(nr->contains(same));
  // Walked as a range, the value is its only element.
  std::unique_ptr<ValueIterator> elements(nr->asRange());
  ASSERT_TRUE(elements->hasNext());
  EXPECT_EQ(42, elements->next()->asInteger());
  EXPECT_FALSE(elements->hasNext());

  record.setValue("Kunden.Name", "01.02.2024");
  Value *text = rt()->createMaterialValue(customers_.name, &record);
  ASSERT_NE(nullptr, text->asDate());
  EXPECT_EQ(124, text->asDate()->tm_year);
}

TEST_F(MaterialTest, DebugLineCountsTheRecords) {
  std::ostringstream out;
  {
    Logger logger(&out, DEBUG);
    run_.context.setLogger(&logger);
    walk(rt()->createMaterial(&customers_, 0, 1, customers_.name));
    run_.context.setLogger(nullptr);
  }
  EXPECT_NE(std::string::npos, out.str().find("\nDEBUG: Material::asRange() => records = 3"));
}

}  // namespace
}  // namespace quorel
