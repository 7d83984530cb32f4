// The rule module "Stoerfall" of the Python package's tests: rules that fail
// the way rule code can, beside the library's own exceptions.
//
// Record type Stoerfall: Anlass (text: what the run does), Text (text) and
// Zahl (whole number). The module declares no flows; every flow runs:
//   Anlass "stoi"   std::stoi on Text, which throws std::invalid_argument
//                   for a text that is no number;
//   Anlass "alloc"  throws std::bad_alloc;
//   Anlass "int"    throws an int;
//   otherwise       reports ST-01 with Text as its short text and Zahl
//                   (read as a whole number) as its long text;
//   Anlass "danach" then throws std::logic_error.
// Functions "Text" and "Zahl" give those fields' values.

#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include <quorel/quorel.h>

namespace {

using namespace quorel;

class StoerfallTopic : public ModuleTopic {
 public:
  StoerfallTopic(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    anlass = field("Anlass", "Anlass", FieldTypeText);
    text = field("Text", "Text", FieldTypeText);
    zahl = field("Zahl", "Zahl", FieldTypeInteger);
  }
  Topic *createElement() override { return new StoerfallTopic(getTypeDescriptor(), getParent()); }

  Field *anlass, *text, *zahl;
};

class StoerfallRules : public Plausi {
 public:
  StoerfallRules() {
    root_ = ModuleTopic::createRoot<StoerfallTopic>("Stoerfall", "Stoerfall");
    setRootTopic(root_);
  }

 protected:
  void performImpl(RuntimeContext *rt, const char *flow) override {
    if (flow == nullptr) return;
    SectionScope rule(rt, "Regel Stoerfall");
    const char *anlass = root_->anlass->get(rt)->asString();
    if (std::strcmp(anlass, "stoi") == 0) std::stoi(root_->text->get(rt)->asString());
    if (std::strcmp(anlass, "alloc") == 0) throw std::bad_alloc();
    if (std::strcmp(anlass, "int") == 0) throw 7;
    PlausiProblem *problem = rt->createProblem(PROBLEM_ERROR, 1);
    problem->setId("ST-01");
    problem->setShortDescription(root_->text->get(rt)->asString());
    problem->setLongDescription(root_->zahl->get(rt)->asString());
    rt->setSectionInfosToProblem(problem);
    if (std::strcmp(anlass, "danach") == 0) throw std::logic_error("danach");
  }

  Value *performFunctionImpl(RuntimeContext *rt, const char *name) override {
    if (std::strcmp(name, "Text") == 0) return root_->text->get(rt);
    if (std::strcmp(name, "Zahl") == 0) return root_->zahl->get(rt);
    return rt->createInvalidValue();
  }

 private:
  StoerfallTopic *root_;
};

}  // namespace

QUOREL_MODULE(Stoerfall, StoerfallRules);
