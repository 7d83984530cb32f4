#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/model/array_value_iterator.h"
#include "quorel/model/field_array_iterator.h"
#include "quorel/model/local_array.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class ArraysTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &runtime_; }

  StandaloneRoot root_;
  SimpleDataRecord record_;
  NoRules plausi_;
  PlausiContext context_{&record_};
  RuntimeContext runtime_{&context_, &plausi_};
};

TEST_F(ArraysTest, LocalArraySizesAndElements) {
  LocalArray array(2, 2, 3);
  EXPECT_EQ(2, array.getSize(rt(), 0));
  EXPECT_EQ(3, array.getSize(rt(), 1, 0));
  EXPECT_EQ(1, array.getSize(rt(), 2, 0, 0));
  expectFailure([&] { array.getSize(rt(), 3, 0, 0, 0); }, EXCEPTION_ILLEGAL_ACCESS,
                "Ung\xFC" "ltiger Arrayzugriff.");
  expectFailure([&] { array.getElement(rt(), 1, 0); }, EXCEPTION_ILLEGAL_ACCESS,
                "Ung\xFC" "ltiger Elementzugriff.");
  LocalVariable *cell = array.getElement(rt(), 2, 1, 2);
  EXPECT_TRUE(cell->get(rt())->isNil());
  cell->set(rt(), rt()->createNumberValue(7.0));
  std::int32_t same[] = {1, 2, -1};
  EXPECT_EQ(cell, array.getElement(rt(), same));
  EXPECT_EQ(7.0, array.getElement(rt(), same)->get(rt())->asReal());
  EXPECT_EQ(nullptr, LocalArray(0).getDimension());
}

TEST_F(ArraysTest, ElementsAreKeyedByTheWholeIndexList) {
  LocalArray wide(2, 2, 40);
  // 0,31 and 1,0 share a hash code; they must still be two elements.
  EXPECT_NE(wide.getElement(rt(), 2, 0, 31), wide.getElement(rt(), 2, 1, 0));
  Field *a = root_.matrix->getElement(rt(), 2, 0, 31);
  Field *b = root_.matrix->getElement(rt(), 2, 1, 0);
  EXPECT_NE(a, b);
  std::int32_t list[] = {0, 31, -1};
  EXPECT_EQ(a, root_.matrix->getElement(rt(), list));
  EXPECT_EQ(root_.liste->getTypeDescriptor(), root_.liste->getElement(rt(), 1, 2)->getTypeDescriptor());
}

// Single indices near and past those found directly, asked in several orders
// and with a list that names the same element otherwise: one element each.
TEST_F(ArraysTest, EachIndexHasOneElementHoweverItIsAsked) {
  LocalArray row(1, 0);
  std::vector<std::int32_t> order;
  for (std::int32_t i = 0; i < 300; i += 7) order.push_back(i);
  for (std::int32_t i : {255, 256, 257, 4000, 0, 1}) order.push_back(i);
  std::vector<LocalVariable *> first;
  for (std::int32_t i : order) first.push_back(row.getElement(rt(), 1, i));
  for (std::size_t k = order.size(); k-- > 0;) {
    std::int32_t list[] = {order[k], -1};
    EXPECT_EQ(first[k], row.getElement(rt(), list)) << order[k];
    EXPECT_EQ(first[k], row.getElement(rt(), 1, order[k])) << order[k];
  }
  EXPECT_NE(row.getElement(rt(), 1, 255), row.getElement(rt(), 1, 256));
  EXPECT_NE(row.getElement(rt(), 1, 0), row.getElement(rt(), 1, 1));
  Field *third = root_.liste->getElement(rt(), 1, 2);
  EXPECT_EQ("Root.Liste[2]", third->getHierarchyText());
  EXPECT_EQ(third, root_.liste->getElement(rt(), 1, 2));
}

std::vector<std::string> walk(RuntimeContext *rt, FieldArray *array) {
  std::vector<std::string> names;
  FieldArrayIterator it(rt, array);
  while (it.hasNext()) names.push_back(it.next()->getHierarchyText());
  return names;
}

TEST_F(ArraysTest, FieldArrayIteratorSkipsEmptyRows) {
  // Matrix is declared 2 x 0: rows of sizes 2 and 1.
  record_.setSize("Root.Matrix[0]", 2);
  record_.setSize("Root.Matrix[1]", 1);
  EXPECT_EQ((std::vector<std::string>{"Root.Matrix[0][0]", "Root.Matrix[0][1]", "Root.Matrix[1][0]"}),
            walk(rt(), root_.matrix));
  record_.setSize("Root.Matrix[0]", 0);
  EXPECT_EQ((std::vector<std::string>{"Root.Matrix[1][0]"}), walk(rt(), root_.matrix));
  EXPECT_EQ((std::vector<std::string>{"Root.Liste[0]", "Root.Liste[1]", "Root.Liste[2]"}),
            walk(rt(), root_.liste));
}

TEST_F(ArraysTest, TopicPathsResolveToOneField) {
  FieldDescriptor *first = root_.getField(rt(), "Liste");
  EXPECT_EQ("Root.Liste[0]", first->getHierarchyText());
  FieldDescriptor *fourth = root_.getField(rt(), "Liste[4]");
  EXPECT_EQ("Root.Liste[4]", fourth->getHierarchyText());
  EXPECT_EQ(fourth, root_.getField(rt(), "Liste[4]"));
  EXPECT_EQ(root_.getField(rt(), "Liste[1]"), root_.getField(rt(), "Liste[1].Rest"));
  EXPECT_EQ("Root.Kinder[2].Vorname", root_.getField(rt(), "Kinder[2].Vorname")->getHierarchyText());
  EXPECT_EQ("Root.Adresse.Strasse", root_.getField(rt(), "Adresse.Strasse")->getHierarchyText());
  EXPECT_EQ(root_.adresse, root_.getField(rt(), "Adresse"));
  // Only the hash of a name is kept, so a colliding name finds the field.
  EXPECT_EQ(root_.flag, root_.getField(rt(), "FlbH"));
}

TEST_F(ArraysTest, BadPathsFailInOrder) {
  expectFailure([&] { root_.getField(rt(), nullptr); }, EXCEPTION_ILLEGAL_ARGUMENT,
                "Feldname nicht angegeben.");
  expectFailure([&] { root_.getField(rt(), ""); }, EXCEPTION_NO_SUCH_FIELD, "");
  expectFailure([&] { root_.getField(rt(), "Fehlt[1].X"); }, EXCEPTION_NO_SUCH_FIELD, "Fehlt");
  expectFailure([&] { root_.getField(rt(), "Name[1]"); }, EXCEPTION_ILLEGAL_ACCESS, "Feld ist kein Array.");
  expectFailure([&] { root_.getField(rt(), "Liste[1"); }, EXCEPTION_ILLEGAL_ARGUMENT,
                "Fehlerhafte Indexangabe.");
  expectFailure([&] { root_.getField(rt(), "Liste[1][2]"); }, EXCEPTION_ILLEGAL_ACCESS,
                "Ung\xFC" "ltiger Elementzugriff.");
  // Many indices are refused in order, not written past a buffer.
  expectFailure([&] { root_.getField(rt(), "Liste[1][2][3][4][5][6][7][8][9][10][11]"); },
                EXCEPTION_ILLEGAL_ACCESS, "Ung\xFC" "ltiger Elementzugriff.");
}

}  // namespace
}  // namespace quorel

namespace quorel {
namespace {

class ArrayValueIteratorTest : public ArraysTest {
 protected:
  std::vector<std::string> values(ArrayValueIterator *it) {
    std::vector<std::string> texts;
    while (it->hasNext()) {
      Value *value = it->next();
      texts.push_back(value->isNil() ? "nil" : value->asString());
    }
    return texts;
  }
};

TEST_F(ArrayValueIteratorTest, WalksRowsWithRestrictions) {
  LocalArray square(2, 2, 2);
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      std::string text = std::to_string(i) + "," + std::to_string(j);
      square.getElement(rt(), 2, i, j)->set(rt(), rt()->createStringValue(text.c_str()));
    }
  }
  EXPECT_EQ((std::vector<std::string>{"0,0", "0,1", "1,0", "1,1"}), values(rt()->createIterator(&square)));
  ArrayValueIterator *second = rt()->createIterator(&square);
  Value *one = rt()->createNumberValue(1.0);
  second->setRestriction(1, rt()->createRangeSeries(1, one));
  EXPECT_EQ((std::vector<std::string>{"0,1", "1,1"}), values(second));
  ArrayValueIterator *row = rt()->createIterator(&square);
  row->setRestriction(0, one);
  EXPECT_EQ((std::vector<std::string>{"1,0", "1,1"}), values(row));
}

TEST_F(ArrayValueIteratorTest, EmptyArraysStillGiveTheirFirstElement) {
  // Liste is declared with 3 elements; the record holds 1 and 2 of them.
  record_.setValue("Root.Liste[0]", 1);
  record_.setValue("Root.Liste[2]", 2);
  std::vector<std::string> texts = values(rt()->createIterator(root_.liste));
  EXPECT_EQ((std::vector<std::string>{"1", "", "2"}), texts);
  EXPECT_EQ(3, rt()->getCurrentSection()->getNumOfAccessedFields());  // reads are noted
  LocalArray empty(1, 0);
  EXPECT_EQ(1u, values(rt()->createIterator(&empty)).size());
  ArrayValueIterator *beyond = rt()->createIterator(&empty);
  beyond->setRestriction(0, rt()->createNumberValue(5.0));
  EXPECT_EQ(1u, values(beyond).size());
  // A walk stopped early or failing midway leaves nothing behind.
  ArrayValueIterator *bad = rt()->createIterator(&empty);
  bad->setRestriction(0, rt()->createIntervalRange(rt()->createNumberValue(0.0), rt()->createNumberValue(1.0), INCLUDE_BOTH));
  expectFailure([&] { bad->hasNext(); }, EXCEPTION_CONVERSION, "Ein Interval kann nicht iteriert werden.");
}

TEST_F(ArrayValueIteratorTest, SequenceRestrictionsWalkAsTheirElements) {
  // A sequence is walked as numbers; wrapped in a series it is walked as the
  // values it delivers. Both give the same indices.
  LocalArray wide(1, 40);
  for (int i = 0; i < 40; ++i) {
    wide.getElement(rt(), 1, i)->set(rt(), rt()->createNumberValue(i));
  }
  auto restricted = [&](bool wrapped, double first, double second, double last) {
    ArrayValueIterator *it = rt()->createIterator(&wide);
    Value *sequence = rt()->createSequenceRange(rt()->createNumberValue(first), rt()->createNumberValue(second),
                                                rt()->createNumberValue(last));
    it->setRestriction(0, wrapped ? rt()->createRangeSeries(1, sequence) : sequence);
    return values(it);
  };
  for (bool wrapped : {false, true}) {
    EXPECT_EQ((std::vector<std::string>{"2", "5", "8"}), restricted(wrapped, 2.5, 5.5, 9)) << wrapped;
    EXPECT_EQ((std::vector<std::string>{"39", "37", "35"}), restricted(wrapped, 39, 37, 34)) << wrapped;
    EXPECT_EQ((std::vector<std::string>{"30", "35"}), restricted(wrapped, 30, 35, 50)) << wrapped;
  }
}

TEST_F(ArrayValueIteratorTest, FailedRestrictionFailsEveryCall) {
  // The iterator is set up only once every restriction walks, so each later
  // call meets the same failure again rather than a half-made walk.
  LocalArray square(2, 2, 2);
  ArrayValueIterator *bad = rt()->createIterator(&square);
  bad->setRestriction(1, rt()->createIntervalRange(rt()->createNumberValue(0.0), rt()->createNumberValue(1.0),
                                                   INCLUDE_BOTH));
  const char kInterval[] = "Ein Interval kann nicht iteriert werden.";
  expectFailure([&] { bad->hasNext(); }, EXCEPTION_CONVERSION, kInterval);
  expectFailure([&] { bad->hasNext(); }, EXCEPTION_CONVERSION, kInterval);
  expectFailure([&] { bad->next(); }, EXCEPTION_CONVERSION, kInterval);
}

}  // namespace
}  // namespace quorel
