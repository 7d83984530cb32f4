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
