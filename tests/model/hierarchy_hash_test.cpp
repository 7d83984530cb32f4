// The hash of a hierarchy text made without the text must be the hash of
// the text, for every shape of field, since records are keyed by it.

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/masks/text_hash.h"
#include "quorel/masks/util.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/rules/runtime_context.h"
#include "test_support.h"
#include "test_tree.h"

namespace quorel {
namespace {

std::int32_t hashOfText(const std::string &text) { return Util::getHashCode(text.c_str()); }

TEST(TextHashTest, JoinsAsTheTextsWouldAndWritesIndicesLikeTheText) {
  const std::vector<std::string> texts = {"", "a", "Gr\xF6\xDF" "e", "Plausibilit\xE4tspr\xFC" "fung", "x.y[3]"};
  for (const std::string &left : texts) {
    for (const std::string &right : texts) {
      TextHash joined, continuation;
      joined.append(left.c_str());
      continuation.append(right.c_str());
      joined.append(continuation);
      EXPECT_EQ(hashOfText(left + right), joined.get()) << left << " + " << right;
    }
  }
  const std::int32_t indices[] = {0, 7, 10, 99, 123456, 2147483647, -1};
  char text[13 * 6 + 1];
  Util::getIndicesAsString(text, indices);
  TextHash hash;
  hash.appendIndices(indices);
  EXPECT_EQ(Util::getHashCode(text), hash.get());
  TextHash none;
  none.appendIndices(nullptr);
  EXPECT_EQ(0, none.get());
}

TEST(HierarchyHashTest, EqualsTheHashOfTheHierarchyTextAtEveryLevel) {
  StandaloneRoot root;
  TestRun run;
  std::vector<FieldDescriptor *> fields = {&root, root.name, root.liste, root.kinder, root.adresse};
  for (std::int32_t i : {0, 1, 9, 10, 311}) {
    std::int32_t one[] = {i, -1};
    std::int32_t two[] = {1, i, -1};
    fields.push_back(root.liste->getElement(&run.runtime, one));
    fields.push_back(root.matrix->getElement(&run.runtime, two));
    auto *child = static_cast<ChildTopic *>(root.kinder->getElement(&run.runtime, one));
    fields.push_back(child);
    fields.push_back(child->vorname);
  }
  for (FieldDescriptor *field : fields) {
    EXPECT_EQ(hashOfText(field->getHierarchyText()), field->getHierarchyHash().get()) << field->getHierarchyText();
  }
}

// The record type with a record to read and a run to read it in.
class RecordKeysTest : public ::testing::Test {
 protected:
  StandaloneRoot root;
  SimpleDataRecord record;
  NoRules plausi;
  PlausiContext context{&record};
  RuntimeContext runtime{&context, &plausi};
};

TEST_F(RecordKeysTest, NewIndicesOfATopicReachTheHashesBelowIt) {
  record.setValue("Root.Kinder[1].Vorname", "Ida");
  record.setValue("Root.Kinder[2].Vorname", "Ede");
  std::int32_t one[] = {1, -1};
  std::int32_t two[] = {2, -1};
  auto *child = static_cast<ChildTopic *>(root.kinder->getElement(&runtime, one));
  EXPECT_STREQ("Ida", record.getString(child->vorname));
  // A host that reuses an element for another index.
  child->setIndices(two);
  EXPECT_EQ("Root.Kinder[2].Vorname", child->vorname->getHierarchyText());
  EXPECT_EQ(hashOfText(child->vorname->getHierarchyText()), child->vorname->getHierarchyHash().get());
  EXPECT_STREQ("Ede", record.getString(child->vorname));
}

TEST_F(RecordKeysTest, FieldsAndSizesMatchTheirTexts) {
  record.setValue("Root.Kinder[10].Vorname", "Ida");
  record.setSize("Root.Matrix[1]", 4);
  std::int32_t ten[] = {10, -1};
  std::int32_t one[] = {1, -1};
  auto *child = static_cast<ChildTopic *>(root.kinder->getElement(&runtime, ten));
  EXPECT_STREQ("Ida", record.getString(child->vorname));
  EXPECT_EQ(4, record.getSize(root.matrix, one));
  child->vorname->set(&runtime, runtime.createStringValue("Ede"));
  EXPECT_STREQ("Ede", record.getValue("Root.Kinder[10].Vorname")->asString());
}

}  // namespace
}  // namespace quorel
