#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/masks/util.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class SimpleDataRecordTest : public ::testing::Test {
 protected:
  StandaloneRoot root_;
  SimpleDataRecord record_;
  TestRun run_;
};

TEST_F(SimpleDataRecordTest, StoresByHierarchyTextAndReplacesAnyKind) {
  EXPECT_TRUE(record_.isEmpty(root_.name));
  EXPECT_EQ(0, record_.getSize(root_.liste, nullptr));
  EXPECT_STREQ("", record_.getString(root_.name));  // outside the contract, but safe
  record_.setValue("Name", "ohne Wurzel");
  EXPECT_TRUE(record_.isEmpty(root_.name));
  record_.setValue("Root.Name", 5);
  EXPECT_EQ(5, record_.getInteger(root_.name));
  record_.setValue("Root.Name", "x");
  EXPECT_STREQ("x", record_.getString(root_.name));
  record_.setEmpty(root_.name);
  record_.setEmpty(root_.name);
  EXPECT_TRUE(record_.isEmpty(root_.name));
  EXPECT_EQ(nullptr, record_.getValue("Root.Name"));
  EXPECT_EQ(&record_, record_.getSubDataRecord(root_.adresse));

  record_.setInteger(root_.alter, 9007199254740993LL);
  EXPECT_EQ(9007199254740992LL, record_.getInteger(root_.alter));
  record_.setValue("Root.Betrag", "1.234,5");
  EXPECT_DOUBLE_EQ(1234.5, record_.getReal(root_.betrag));
}

// A record filled row after row reuses the values of its texts and numbers.
// Each row must read exactly as the same row in a record of its own, whatever
// kind the field held before (text, number, nothing) and whatever the text
// (longer, shorter, its own text handed back, a date read from the former
// text) or number (one whose text form was made).
TEST_F(SimpleDataRecordTest, ARefilledRecordReadsAsAFreshOne) {
  struct Cell {
    const char *text;  // null: a number instead
    double number;
  };
  const Cell rows[] = {{"01.02.2003", 0}, {"a much longer text than fits in place", 0},
                       {"x", 0},          {nullptr, 4.5},
                       {nullptr, 7.25},   {"1.234,5", 0},
                       {"", 0},           {"29.02.2000", 0},
                       {nullptr, -1}};
  auto dateOf = [](Value *value) -> std::string {
    try {
      std::tm *date = value->asDate();
      return std::to_string(date->tm_year) + "-" + std::to_string(date->tm_mon) + "-" + std::to_string(date->tm_mday);
    } catch (const PlausiException &e) {
      return e.getMessage();
    }
  };
  std::int32_t key = SimpleDataRecord::keyOf("Root.Name");
  for (const Cell &row : rows) {
    SimpleDataRecord fresh;
    for (SimpleDataRecord *record : {&record_, &fresh}) {
      if (row.text != nullptr) {
        record->setValueAt(key, row.text);
      } else {
        record->setValueAt(key, row.number);
      }
    }
    EXPECT_STREQ(fresh.getString(root_.name), record_.getString(root_.name)) << row.text;
    Value *refilled = record_.getValue("Root.Name");
    Value *made = fresh.getValue("Root.Name");
    EXPECT_EQ(made->getOperatorLevel(), refilled->getOperatorLevel());
    EXPECT_EQ(dateOf(made), dateOf(refilled)) << row.text;
  }
  // A text handed back to its own field, whole or in part, survives the copy.
  record_.setValue("Root.Name", "Antragsteller");
  record_.setValue("Root.Name", record_.getString(root_.name));
  EXPECT_STREQ("Antragsteller", record_.getString(root_.name));
  record_.setValue("Root.Name", record_.getString(root_.name) + 6);
  EXPECT_STREQ("steller", record_.getString(root_.name));
  record_.setValueAt(key, static_cast<const char *>(nullptr));
  EXPECT_TRUE(record_.isEmpty(root_.name));
}

TEST_F(SimpleDataRecordTest, SizesPerRowComeFromTheRecord) {
  PlausiContext context(&record_);
  RuntimeContext runtime(&context, &run_.plausi);
  record_.setSize("Root.Matrix[1]", 4);
  std::int32_t row1[] = {1, -1};
  std::int32_t row0[] = {0, -1};
  EXPECT_EQ(4, root_.matrix->getSize(&runtime, row1));
  EXPECT_EQ(0, root_.matrix->getSize(&runtime, row0));
  // A run without a record refuses instead of following a null pointer.
  expectFailure([&] { root_.matrix->getSize(&run_.runtime, row1); }, EXCEPTION_GENERAL,
                "Wert konnte nicht ermittelt werden.");
  expectFailure([&] { root_.name->get(&run_.runtime); }, EXCEPTION_GENERAL,
                "Wert konnte nicht ermittelt werden.");
}

TEST_F(SimpleDataRecordTest, KeysWorkedOutOnceFillAsNamesDo) {
  std::int32_t name = SimpleDataRecord::keyOf("Root.Name");
  record_.setValueAt(name, "x");
  EXPECT_STREQ("x", record_.getString(root_.name));
  // A cell given with its length is that many bytes of a longer line, on a
  // fresh record and on one refilled alike.
  const std::string line = "Meier;Schmidt";
  SimpleDataRecord fresh;
  for (SimpleDataRecord *record : {&fresh, &record_}) {
    record->setValueAt(name, std::string_view(line).substr(6, 3));
    EXPECT_STREQ("Sch", record->getString(root_.name));
  }
  record_.setValueAt(name, std::int64_t{7});
  EXPECT_EQ(7, record_.getInteger(root_.name));
  record_.setValueAt(name, 2.5);
  EXPECT_EQ(2.5, record_.getReal(root_.name));
  record_.setValueAt(name, static_cast<const char *>(nullptr));
  EXPECT_TRUE(record_.isEmpty(root_.name));
  record_.setValueAt(SimpleDataRecord::keyOfSize("Root.Matrix[1]"), std::int64_t{4});
  std::int32_t row1[] = {1, -1};
  EXPECT_EQ(4, record_.getSize(root_.matrix, row1));
}

TEST_F(SimpleDataRecordTest, SizeForDeclaredOpenAndElementDimensions) {
  LoggingRecord record;
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &run_.plausi);
  // Matrix is declared 2 x 0.
  EXPECT_EQ(2, root_.matrix->getSize(&runtime, 0));
  EXPECT_TRUE(record.calls.empty());
  record.setSize("Root.Matrix[1]", 7);
  EXPECT_EQ(7, root_.matrix->getSize(&runtime, 1, 1));
  EXPECT_EQ((std::vector<std::string>{"getSubDataRecord", "getSize"}), record.calls);
  EXPECT_EQ(1, root_.matrix->getSize(&runtime, 2, 1, 1));
  expectFailure([&] { root_.matrix->getSize(&runtime, 3, 1, 1, 1); }, EXCEPTION_ILLEGAL_ACCESS,
                "Ung\xFC" "ltiger Arrayzugriff.");
}

// A host's record written to the interface as hosts have it: index lists
// are plain std::int32_t *, ended by a negative entry.
class HostRecord : public DataRecord {
 public:
  std::int32_t getSize(FieldDescriptor *, std::int32_t *indices) override {
    seen.assign(indices, indices + Util::getSizeOf(indices));
    return 6;
  }
  bool isEmpty(FieldDescriptor *) override { return true; }
  const char *getString(FieldDescriptor *) override { return ""; }
  void setString(FieldDescriptor *, const char *) override {}
  std::int64_t getInteger(FieldDescriptor *) override { return 0; }
  void setInteger(FieldDescriptor *, std::int64_t) override {}
  double getReal(FieldDescriptor *) override { return 0.0; }
  void setReal(FieldDescriptor *, double) override {}
  void setEmpty(FieldDescriptor *) override {}
  DataRecord *getSubDataRecord(FieldDescriptor *) override { return this; }

  std::vector<std::int32_t> seen;
};

TEST_F(SimpleDataRecordTest, HostRecordsGetTheOuterIndicesOfASize) {
  HostRecord record;
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &run_.plausi);
  EXPECT_EQ(6, root_.matrix->getSize(&runtime, 1, 1));
  EXPECT_EQ(std::vector<std::int32_t>{1}, record.seen);
}

}  // namespace
}  // namespace quorel
