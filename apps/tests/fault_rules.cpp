// The rule module "Stoerung": rules that fail the way hand-written rule code
// fails, for the end-to-end tests of the front ends. It declares no flows,
// so it has no default; its flow "Pruefung" converts Stoerung.Zahl with
// std::stoi (std::invalid_argument for a text that is no number), runs out
// of memory when Stoerung.Wunsch is "Speicher" (std::bad_alloc), and looks
// Stoerung.Region up in the material Regionen (Name). A number above 10 is
// a problem STO-01, a region that is not in the material STO-02. When
// Stoerung.Wunsch is "Notiz" it writes "gesehen" into Stoerung.Notiz, a
// field that no column need give; a record whose Notiz is set when the flow
// begins is a problem STO-03.

#include <cstring>
#include <new>
#include <string>

#include <quorel/quorel.h>

namespace {

using namespace quorel;

class StoerungTopic : public ModuleTopic {
 public:
  StoerungTopic(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    zahl = field("Zahl", "Zahl", FieldTypeText);
    wunsch = field("Wunsch", "Wunsch", FieldTypeText);
    region = field("Region", "Region", FieldTypeText);
    notiz = field("Notiz", "Notiz", FieldTypeText);
  }
  Topic *createElement() override { return new StoerungTopic(getTypeDescriptor(), getParent()); }
  Field *zahl, *wunsch, *region, *notiz;
};

class RegionenTopic : public ModuleTopic {
 public:
  RegionenTopic(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    setMaterialName("Regionen");
    name = field("Name", "Name", FieldTypeText);
  }
  Topic *createElement() override { return new RegionenTopic(getTypeDescriptor(), getParent()); }
  Field *name;
};

void report(RuntimeContext *rt, const char *id, const char *text, Field *field) {
  PlausiProblem *problem = rt->createProblem(PROBLEM_ERROR, 5);
  problem->setId(id);
  problem->setShortDescription(text);
  problem->setReferenceField(field);
  rt->setSectionInfosToProblem(problem);
}

class StoerungRules : public Plausi {
 public:
  StoerungRules() {
    stoerung_ = ModuleTopic::createRoot<StoerungTopic>("Stoerung", "Stoerung");
    setRootTopic(stoerung_);
    regionen_ = ModuleTopic::createRoot<RegionenTopic>("Regionen", "Regionen");
    setMaterial("Regionen", regionen_);
  }

 protected:
  void performImpl(RuntimeContext *rt, const char *flow) override {
    if (flow == nullptr || std::strcmp(flow, "Pruefung") != 0) return;
    SectionScope rule(rt, "Regel Stoerung");
    if (stoerung_->notiz->get(rt)->isValid()) report(rt, "STO-03", "Notiz schon gesetzt", stoerung_->notiz);
    Value *zahl = stoerung_->zahl->get(rt);
    if (zahl->isValid() && std::stoi(zahl->asString()) > 10) report(rt, "STO-01", "Zahl zu gro\xDF", stoerung_->zahl);
    Value *wunsch = stoerung_->wunsch->get(rt);
    if (wunsch->isValid() && std::strcmp(wunsch->asString(), "Speicher") == 0) throw std::bad_alloc();
    if (wunsch->isValid() && std::strcmp(wunsch->asString(), "Notiz") == 0) {
      stoerung_->notiz->set(rt, rt->createStringValue("gesehen"));
    }
    Value *region = stoerung_->region->get(rt);
    if (region->isValid()) {
      Value *found = rt->createMaterial(regionen_, 1, 1, regionen_->name, OPERATOR_EQUAL, region, regionen_->name);
      std::unique_ptr<ValueIterator> walk(found->asRange());
      if (!walk->hasNext()) report(rt, "STO-02", "Unbekannte Region", stoerung_->region);
    }
  }

  Value *performFunctionImpl(RuntimeContext *rt, const char *) override { return rt->createInvalidValue(); }

 private:
  StoerungTopic *stoerung_;
  RegionenTopic *regionen_;
};

}  // namespace

QUOREL_MODULE(Stoerung, StoerungRules);
