#include <memory>

#include <gtest/gtest.h>

#include "quorel/values/classification.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/string_value.h"
#include "quorel/values/value_iterator.h"
#include "test_support.h"

namespace quorel {
namespace {

TEST(ClassificationTest, BehavesAsItsCode) {
  StringValue a("A"), eins("Eins");
  NumberValue one(1.0);
  Classification byText(&a, "Alpha");
  EXPECT_TRUE(byText.eq(&a));
  EXPECT_STREQ("A", byText.asString());
  EXPECT_STREQ("Alpha", byText.getValue());
  EXPECT_EQ(CLASSIFICATION_LEVEL, byText.getOperatorLevel());
  Classification byNumber(&one, "Eins");
  EXPECT_FALSE(byNumber.eq(&eins));  // the value text plays no part
  StringValue oneText("1");
  EXPECT_TRUE(byNumber.eq(&oneText));
  EXPECT_EQ(1, byNumber.asInteger());
  EXPECT_DOUBLE_EQ(1.0, byNumber.asReal());
  EXPECT_TRUE(byNumber.asBool());
  EXPECT_FALSE(byNumber.isNil());
  EXPECT_FALSE(byNumber.isRange());
  std::unique_ptr<ValueIterator> codes(byNumber.asRange());
  ASSERT_TRUE(codes->hasNext());
  EXPECT_EQ(1, codes->next()->asInteger());
  EXPECT_FALSE(codes->hasNext());
  StringValue dateText("01.02.2024");
  EXPECT_EQ(1, Classification(&dateText, nullptr).asDate()->tm_mon);
  // A text code against a number: the number outranks the code.
  StringValue code("1,0");
  Classification textCode(&code, nullptr);
  EXPECT_TRUE(textCode.eq(&one));
  EXPECT_EQ(nullptr, textCode.getValue());

  NilValue nil;
  Classification nilCode(&nil, nullptr);
  EXPECT_TRUE(nilCode.isValid());
  expectFailure([&] { nilCode.asString(); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");
}

TEST(ClassificationTest, ContainsTheLeavesBelowIt) {
  StringValue a("A"), a1("A1"), a2("A2"), a21("A21"), b("B");
  Classification root(&a, "Wurzel");
  Classification child1(&a1, nullptr);
  Classification child2(&a2, nullptr);
  Classification grandchild(&a21, nullptr);
  child2.addClassification(&grandchild);
  root.addClassification(&child1);
  root.addClassification(&child2);
  // Changes after adding do not reach the parent's copy.
  child1.addClassification(&grandchild);
  EXPECT_FALSE(root.contains(&a));
  EXPECT_TRUE(root.contains(&a1));
  EXPECT_TRUE(root.contains(&a21));
  EXPECT_FALSE(root.contains(&a2));  // a parent contains its leaves, not its own code
  EXPECT_FALSE(root.contains(&b));
  EXPECT_TRUE(child1.contains(&a21));

  std::unique_ptr<Value> copy;
  {
    Classification source(&b, "Quelle");
    source.addClassification(&grandchild);
    copy.reset(source.copy());
  }
  EXPECT_TRUE(copy->contains(&a21));
  EXPECT_STREQ("B", copy->asString());
}

}  // namespace
}  // namespace quorel
