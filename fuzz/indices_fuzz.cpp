// Index texts and field paths: getStringAsIndices and Topic::getField on a
// small tree with a fuzzed path.

#include <algorithm>

#include "fuzz_input.h"
#include "quorel/quorel.h"

namespace {

using namespace quorel;

class Leaf : public Topic {
 public:
  Leaf(TypeDescriptor *type, FieldDescriptor *parent) : Topic(type, parent) {
    setField("Wert", new Field(new TypeDescriptor(type, nullptr, "Wert", nullptr, FieldTypeText, nullptr, 0), this));
  }
  Topic *createElement() override { return new Leaf(getTypeDescriptor(), getParent()); }
};

class Tree : public Topic {
 public:
  Tree() : Topic(new TypeDescriptor(nullptr, nullptr, "Root", nullptr, FieldTypeTopic, nullptr, 0), nullptr) {
    TypeDescriptor *root = getTypeDescriptor();
    setField("Name", new Field(new TypeDescriptor(root, nullptr, "Name", nullptr, FieldTypeText, nullptr, 0), this));
    setField("Liste",
             new FieldArray(new TypeDescriptor(root, nullptr, "Liste", nullptr, FieldTypeInteger, nullptr, 2, 3, 0), this));
    auto *items = new TypeDescriptor(root, nullptr, "Teile", nullptr, FieldTypeTopic, nullptr, 1, 0);
    setField("Teile", new TopicArray(items, this, new Leaf(items, this)));
    auto *nested = new TypeDescriptor(root, nullptr, "Kopf", nullptr, FieldTypeTopic, nullptr, 0);
    setField("Kopf", new Leaf(nested, this));
  }
  ~Tree() override { delete getTypeDescriptor(); }
  Topic *createElement() override { return nullptr; }
};

class NoRules : public Plausi {
 protected:
  Value *performFunctionImpl(RuntimeContext *rt, const char *) override { return rt->createNilValue(); }
  void performImpl(RuntimeContext *, const char *) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::string text = splitInput(data, size, 1)[0];
  std::vector<std::int32_t> indices(static_cast<std::size_t>(std::count(text.begin(), text.end(), '[')) + 1);
  try { Util::getStringAsIndices(indices.data(), text.c_str()); } catch (const PlausiException &) {}
  // One tree per input: the element tables grow with every path resolved.
  Tree tree;
  NoRules plausi;
  PlausiContext context(nullptr);
  RuntimeContext runtime(&context, &plausi);
  try {
    FieldDescriptor *field = tree.getField(&runtime, text.c_str());
    if (field != nullptr) field->getHierarchyText();
  } catch (const PlausiException &) {
  }
  return 0;
}
