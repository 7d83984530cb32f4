#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/rules/mapping.h"
#include "test_support.h"

namespace quorel {
namespace {

TEST(TypeDescriptorTest, DimensionsAndDataStockNames) {
  Mapping mapping;
  mapping.put("Root.Name", "NAME_COL");
  TypeDescriptor root(nullptr, &mapping, "Root", nullptr, FieldTypeTopic, nullptr, 0);
  TypeDescriptor name(&root, &mapping, "Name", "Nachname", FieldTypeText, "x", 0);
  TypeDescriptor other(&root, &mapping, "Vorname", nullptr, FieldTypeText, nullptr, 0);
  TypeDescriptor unmapped(&root, nullptr, "Name", nullptr, FieldTypeText, nullptr, 0);
  EXPECT_STREQ("NAME_COL", name.getFieldNameDataset());
  EXPECT_EQ(nullptr, other.getFieldNameDataset());
  EXPECT_EQ(nullptr, unmapped.getFieldNameDataset());
  EXPECT_STREQ("Nachname", name.getFieldNameDisplay());
  EXPECT_EQ(nullptr, other.getFieldNameDisplay());
  EXPECT_EQ(nullptr, name.getDimension());

  // A declared 0 is a dimension whose size the record tells; count 0 is none.
  TypeDescriptor open(&root, nullptr, "Liste", nullptr, FieldTypeInteger, nullptr, 2, 4, 0);
  ASSERT_NE(nullptr, open.getDimension());
  EXPECT_EQ(4, open.getDimension()[0]);
  EXPECT_EQ(0, open.getDimension()[1]);
  EXPECT_EQ(-1, open.getDimension()[2]);

  char text[TypeDescriptor::kHierarchyBufferSize];
  root.getHierarchyAsString(text);
  EXPECT_STREQ("Root", text);
  name.getHierarchyAsString(text);
  EXPECT_STREQ("Root.Name", text);
}

TEST(FieldDescriptorTest, HierarchyTextCarriesIndicesOfEveryStep) {
  StandaloneRoot root;
  TestRun run;
  std::int32_t child[] = {1, -1};
  Topic *kind = root.kinder->getElement(&run.runtime, child);
  EXPECT_EQ("Root.Kinder[1]", kind->getHierarchyText());
  Field *vorname = static_cast<ChildTopic *>(kind)->vorname;
  EXPECT_EQ("Root.Kinder[1].Vorname", vorname->getHierarchyText());
  Field *cell = root.matrix->getElement(&run.runtime, 2, 1, 2);
  EXPECT_EQ("Root.Matrix[1][2]", cell->getHierarchyText());
  std::int32_t none[] = {-1};
  cell->setIndices(none);
  EXPECT_EQ(nullptr, cell->getIndices());
  EXPECT_EQ("Root.Matrix", cell->getHierarchyText());
}

TEST(FieldDescriptorTest, HierarchyTextIsCutToTheCallersBuffer) {
  std::string longName(3000, 'x');
  TypeDescriptor type(nullptr, nullptr, longName.c_str(), nullptr, FieldTypeText, nullptr, 0);
  FieldDescriptor field(&type, nullptr);
  char text[TypeDescriptor::kHierarchyBufferSize + 8];
  std::memset(text, '#', sizeof text);
  field.getHierarchyAsString(text);
  EXPECT_EQ(static_cast<std::size_t>(TypeDescriptor::kHierarchyBufferSize - 1), std::strlen(text));
  EXPECT_EQ('#', text[TypeDescriptor::kHierarchyBufferSize]);
  EXPECT_EQ(longName, field.getHierarchyText());
}

// Fields registered the way generated code may: one replaced under its name
// by a field of the same type, that type shared by another field, and one
// field under two names.
class SharingTopic : public Topic {
 public:
  explicit SharingTopic(TypeDescriptor *type) : Topic(type, nullptr) {
    auto *shared = new TypeDescriptor(type, nullptr, "A", nullptr, FieldTypeText, nullptr, 0);
    replaced = new Field(shared, this);
    setField("A", replaced);
    setField("A", new Field(shared, this));
    setField("B", new Field(shared, this));
    auto *twice = new Field(new TypeDescriptor(type, nullptr, "C", nullptr, FieldTypeText, nullptr, 0), this);
    setField("C", twice);
    setField("D", twice);
  }
  Topic *createElement() override { return nullptr; }

  Field *replaced;
};

TEST(TopicTest, ReplacedFieldsStayTheirOwnersAndSharedObjectsAreReleasedOnce) {
  TypeDescriptor type(nullptr, nullptr, "T", nullptr, FieldTypeTopic, nullptr, 0);
  Field *replaced;
  {
    SharingTopic topic(&type);
    replaced = topic.replaced;
    TestRun run;
    EXPECT_NE(replaced, topic.getField(&run.runtime, "A"));
    EXPECT_EQ(topic.getField(&run.runtime, "C"), topic.getField(&run.runtime, "D"));
  }
  // The shared type went with the topic; the replaced field is the owner's.
  delete replaced;
}

TEST(TopicTest, EntriesAreListedOnceEachInTheOrderOfTheirCodes) {
  StandaloneRoot root;
  std::vector<FieldDescriptor *> listed;
  std::int32_t previous = INT32_MIN;
  for (std::int32_t i = 0; i < root.getNumOfFields(); ++i) {
    FieldDescriptor *field = root.getFieldAt(i);
    ASSERT_NE(nullptr, field);
    const char *name = field->getTypeDescriptor()->getFieldNameTopic();
    EXPECT_LT(previous, Util::getHashCode(name)) << name;
    previous = Util::getHashCode(name);
    listed.push_back(field);
  }
  std::vector<FieldDescriptor *> declared{root.name,  root.alter, root.alterText, root.betrag, root.datum,
                                          root.flag,  root.liste, root.matrix,    root.kinder, root.adresse};
  std::sort(listed.begin(), listed.end());
  std::sort(declared.begin(), declared.end());
  EXPECT_EQ(declared, listed);
  EXPECT_EQ(nullptr, root.getFieldAt(-1));
  EXPECT_EQ(nullptr, root.getFieldAt(root.getNumOfFields()));
}

}  // namespace
}  // namespace quorel
