// The rule module "Umfrage": checks of one filled-in questionnaire, written
// with the helpers of <quorel/rules/module_support.h> as the guides in docs/
// describe them.
//
// Record type Umfrage: Name (text), Alter (whole number), Einkommen (real
// number under the mask ######.##0, so the record hands it over as text),
// Datum (date, TT.MM.JJJJ), PLZ (text of five digits, a format rule) and
// Antworten, an array of three topics Antwort (Frage, Note).
// Flows: "Pruefung" (every rule) and "Antworten" (the answers only).
// Problems of type 1 are errors, of type 2 hints; a rule reports only when
// its weight reaches the problem weight level of the run.

#include <cstdint>
#include <cstring>

#include <quorel/quorel.h>

namespace {

using namespace quorel;
using F = Functions;

constexpr ProblemType kHint = static_cast<ProblemType>(2);
constexpr const char *kEinkommenMask = "######.##0";

class Antwort : public ModuleTopic {
 public:
  Antwort(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    frage = field("Frage", "Frage", FieldTypeText);
    note = field("Note", "Note", FieldTypeInteger);
  }
  Topic *createElement() override { return new Antwort(getTypeDescriptor(), getParent()); }

  Field *frage;
  Field *note;
};

class UmfrageTopic : public ModuleTopic {
 public:
  static constexpr std::int32_t kAntworten = 3;

  UmfrageTopic(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    name = field("Name", "Name", FieldTypeText);
    alter = field("Alter", "Alter in Jahren", FieldTypeInteger);
    einkommen = field("Einkommen", "Monatliches Einkommen", FieldTypeReal, kEinkommenMask);
    datum = field("Datum", "Datum der Befragung", FieldTypeDate, "TT.MM.JJJJ");
    plz = field("PLZ", "Postleitzahl", FieldTypeText);
    antworten = topicArray<Antwort>("Antworten", "Antworten", {kAntworten});
  }
  Topic *createElement() override { return new UmfrageTopic(getTypeDescriptor(), getParent()); }

  Field *name, *alter, *einkommen, *datum, *plz;
  TopicArray *antworten;
};

// Files a problem on field, with the field's declaration and the trail of
// the current section, unless its weight is below the run's level; gives the
// problem, or null when it was not filed.
PlausiProblem *report(RuntimeContext *rt, ProblemType type, std::int32_t weight, const char *id, const char *text,
            const char *details, Field *field) {
  if (weight < rt->getProblemWeightLevel()) return nullptr;
  PlausiProblem *problem = rt->createProblem(type, weight);
  problem->setId(id);
  problem->setShortDescription(text);
  problem->setLongDescription(details);
  problem->setReferenceField(field);
  TypeDescriptor *declared = field->getTypeDescriptor();
  problem->setFieldDisplayName(declared->getFieldNameDisplay());
  problem->setFieldType(declared->getFieldType());
  problem->setFieldMask(declared->getMask());
  rt->setSectionInfosToProblem(problem);
  return problem;
}

class UmfrageRules : public Plausi {
 public:
  UmfrageRules() {
    umfrage_ = ModuleTopic::createRoot<UmfrageTopic>("Umfrage", "Umfrage");
    setRootTopic(umfrage_);
  }

  const char *const *getFlows() const override {
    static const char *const kFlows[] = {"Pruefung", "Antworten", nullptr};
    return kFlows;
  }

 protected:
  void performImpl(RuntimeContext *rt, const char *flow) override {
    if (flow == nullptr) return;
    bool all = std::strcmp(flow, "Pruefung") == 0;
    if (all) {
      ruleName(rt);
      ruleAlter(rt);
      ruleEinkommen(rt);
      ruleDatum(rt);
      rulePlz(rt);
    }
    if (all || std::strcmp(flow, "Antworten") == 0) ruleAntworten(rt);
  }

  Value *performFunctionImpl(RuntimeContext *rt, const char *) override { return rt->createInvalidValue(); }

 private:
  void ruleName(RuntimeContext *rt) {
    SectionScope rule(rt, "Regel Name");
    if (!umfrage_->name->get(rt)->isValid()) {
      report(rt, PROBLEM_ERROR, 5, "UMF-01", "Der Name fehlt.", nullptr, umfrage_->name);
    }
  }

  void ruleAlter(RuntimeContext *rt) {
    SectionScope rule(rt, "Regel Alter");
    Value *alter = umfrage_->alter->get(rt);
    if (!alter->isValid()) return;
    Value *erlaubt = rt->createIntervalRange(rt->createNumberValue(16.0), rt->createNumberValue(99.0), INCLUDE_BOTH);
    if (!erlaubt->contains(alter)) {
      report(rt, PROBLEM_ERROR, 5, "UMF-02", "Das Alter liegt nicht zwischen 16 und 99.", nullptr, umfrage_->alter);
    }
  }

  // A masked real field arrives as text: the mask tells why it does not fit.
  void ruleEinkommen(RuntimeContext *rt) {
    SectionScope rule(rt, "Regel Einkommen");
    Value *einkommen = umfrage_->einkommen->get(rt);
    if (!einkommen->isValid()) return;
    try {
      Util::stringToReal(einkommen->asString(), kEinkommenMask);
    } catch (const PlausiException &e) {
      report(rt, PROBLEM_ERROR, 4, "UMF-03", "Das Einkommen ist kein Betrag wie 1.234,56.", e.getMessage(),
             umfrage_->einkommen);
    }
  }

  void ruleDatum(RuntimeContext *rt) {
    SectionScope rule(rt, "Regel Datum");
    Value *datum = umfrage_->datum->get(rt);
    if (!F::isTypeConform(rt, datum, FieldTypeDate, "TT.MM.JJJJ")->asBool()) {
      report(rt, PROBLEM_ERROR, 4, "UMF-04", "Das Datum der Befragung ist ung\xFC" "ltig.", nullptr,
             umfrage_->datum);
    }
  }

  void rulePlz(RuntimeContext *rt) {
    SectionScope rule(rt, "Regel PLZ");
    Value *plz = umfrage_->plz->get(rt);
    if (plz->isValid() && !F::HAT_FORMAT(rt, rt->createStringValue("\\p{Digit}{5}"), plz)->asBool()) {
      report(rt, kHint, 1, "UMF-05", "Die Postleitzahl hat nicht f\xFC" "nf Ziffern.", nullptr, umfrage_->plz);
    }
  }

  // One section per answer, so that each problem lists its own field.
  void ruleAntworten(RuntimeContext *rt) {
    SectionScope rule(rt, "Regel Antworten");
    for (std::int32_t i = 0; i < UmfrageTopic::kAntworten; ++i) {
      SectionScope each(rt, "Antwort");
      std::int32_t index[] = {i, -1};
      auto *antwort = static_cast<Antwort *>(umfrage_->antworten->getElement(rt, index));
      Value *note = antwort->note->get(rt);
      if (!note->isValid()) continue;
      if (note->asInteger() < 1 || note->asInteger() > 6) {
        PlausiProblem *problem = report(rt, PROBLEM_ERROR, 3, "UMF-06", "Eine Note liegt nicht zwischen 1 und 6.",
                                        nullptr, antwort->note);
        // The element's place, for hosts that show the array's field.
        if (problem != nullptr) problem->setReferenceFieldIndices(1, i);
      }
    }
  }

  UmfrageTopic *umfrage_;
};

}  // namespace

QUOREL_MODULE(Umfrage, UmfrageRules);
// It reads no init param, so a host names any that it is given.
QUOREL_MODULE_INIT_PARAMS(Umfrage, nullptr);
