// The rule module "Antrag": checks of an application for a family benefit,
// written the way the rule generator emits a rule set.
//
// Record type Antrag: Antragsnummer, Antragsteller (Name, Vorname,
// Geburtsdatum, Familienstand), Adresse (Strasse, PLZ, Ort), Kinder (a topic
// array: Vorname, Geburtsdatum), Betrag (amount as text under a mask),
// Antragsdatum, Einkommen (monthly incomes, sized per record).
// Material Gemeinden (PLZ, Ort) is queried for the address.
// Flows: "Pruefung" (all rules) and "Schnellpruefung" (amount and dates).
// Function: "Alter", the applicant's age in whole years at the application.

#include <cstring>

#include <quorel/quorel.h>

namespace {

using namespace quorel;
using F = Functions;

constexpr ProblemType kError = PROBLEM_ERROR;
constexpr ProblemType kHint = static_cast<ProblemType>(2);

// Every generated field is built the same way: a type below its parent type,
// a descriptor below its parent topic, registered by name.
template <typename T>
T *declare(Topic *topic, Mapping *mapping, const char *name, const char *display, FieldType type,
           const char *mask, int dimensions = 0, int size = 0) {
  auto *descriptor = new TypeDescriptor(topic->getTypeDescriptor(), mapping, name, display, type, mask, dimensions, size);
  return new T(descriptor, topic);
}

class GeneratedTopic : public Topic {
 public:
  using Topic::Topic;

 protected:
  template <typename T>
  T *field(const char *name, const char *display, FieldType type, const char *mask, int dimensions = 0,
           int size = 0) {
    T *descriptor = declare<T>(this, nullptr, name, display, type, mask, dimensions, size);
    setField(name, descriptor);
    return descriptor;
  }
};

class Person : public GeneratedTopic {
 public:
  Person(TypeDescriptor *type, FieldDescriptor *parent) : GeneratedTopic(type, parent) {
    name = field<Field>("Name", "Name", FieldTypeText, nullptr);
    vorname = field<Field>("Vorname", "Vorname", FieldTypeText, nullptr);
    geburtsdatum = field<Field>("Geburtsdatum", "Geburtsdatum", FieldTypeDate, "TT.MM.JJJJ");
    familienstand = field<Field>("Familienstand", "Familienstand", FieldTypeText, nullptr);
  }
  Topic *createElement() override { return new Person(getTypeDescriptor(), getParent()); }
  Field *name, *vorname, *geburtsdatum, *familienstand;
};

class Adresse : public GeneratedTopic {
 public:
  Adresse(TypeDescriptor *type, FieldDescriptor *parent) : GeneratedTopic(type, parent) {
    strasse = field<Field>("Strasse", "Stra\xDF" "e", FieldTypeText, nullptr);
    plz = field<Field>("PLZ", "Postleitzahl", FieldTypeText, nullptr);
    ort = field<Field>("Ort", "Ort", FieldTypeText, nullptr);
  }
  Topic *createElement() override { return new Adresse(getTypeDescriptor(), getParent()); }
  Field *strasse, *plz, *ort;
};

class Kind : public GeneratedTopic {
 public:
  Kind(TypeDescriptor *type, FieldDescriptor *parent) : GeneratedTopic(type, parent) {
    vorname = field<Field>("Vorname", "Vorname des Kindes", FieldTypeText, nullptr);
    geburtsdatum = field<Field>("Geburtsdatum", "Geburtsdatum des Kindes", FieldTypeDate, "TT.MM.JJJJ");
  }
  Topic *createElement() override { return new Kind(getTypeDescriptor(), getParent()); }
  Field *vorname, *geburtsdatum;
};

class AntragTopic : public GeneratedTopic {
 public:
  explicit AntragTopic(TypeDescriptor *type) : GeneratedTopic(type, nullptr) {
    antragsnummer = field<Field>("Antragsnummer", "Antragsnummer", FieldTypeText, "ZZ-cccccc.");
    auto *personType = new TypeDescriptor(type, nullptr, "Antragsteller", "Antragsteller", FieldTypeTopic, nullptr, 0);
    antragsteller = new Person(personType, this);
    setField("Antragsteller", antragsteller);
    auto *adresseType = new TypeDescriptor(type, nullptr, "Adresse", "Adresse", FieldTypeTopic, nullptr, 0);
    adresse = new Adresse(adresseType, this);
    setField("Adresse", adresse);
    auto *kindType = new TypeDescriptor(type, nullptr, "Kinder", "Kinder", FieldTypeTopic, nullptr, 1, 0);
    kinder = new TopicArray(kindType, this, new Kind(kindType, this));
    setField("Kinder", kinder);
    betrag = field<Field>("Betrag", "Beantragter Betrag", FieldTypeReal, "######.##");
    antragsdatum = field<Field>("Antragsdatum", "Antragsdatum", FieldTypeDate, "TT.MM.JJJJ");
    einkommen = field<FieldArray>("Einkommen", "Monatseinkommen", FieldTypeReal, nullptr, 1, 0);
  }
  Topic *createElement() override { return new AntragTopic(getTypeDescriptor()); }

  Field *antragsnummer, *betrag, *antragsdatum;
  Person *antragsteller;
  Adresse *adresse;
  TopicArray *kinder;
  FieldArray *einkommen;
};

class GemeindenTopic : public GeneratedTopic {
 public:
  explicit GemeindenTopic(TypeDescriptor *type) : GeneratedTopic(type, nullptr) {
    setMaterialName("Gemeinden");
    setMaterialNameDataset("GEMEINDEN");
    plz = field<Field>("PLZ", "Postleitzahl", FieldTypeText, nullptr);
    ort = field<Field>("Ort", "Ort", FieldTypeText, nullptr);
  }
  Topic *createElement() override { return new GemeindenTopic(getTypeDescriptor()); }
  Field *plz, *ort;
};

// Files a problem with its texts, the reference field and the trail.
void report(RuntimeContext *rt, ProblemType type, std::int32_t weight, const char *id, const char *text,
            const char *details, FieldDescriptor *field) {
  if (weight < rt->getProblemWeightLevel()) return;
  PlausiProblem *problem = rt->createProblem(type, weight);
  problem->setId(id);
  problem->setShortDescription(text);
  problem->setLongDescription(details);
  problem->setReferenceField(field);
  if (field != nullptr) {
    TypeDescriptor *type = field->getTypeDescriptor();
    problem->setFieldDisplayName(type->getFieldNameDisplay());
    problem->setFieldType(type->getFieldType());
    problem->setFieldMask(type->getMask());
    problem->setReferenceFieldIndices(0);
  }
  rt->setSectionInfosToProblem(problem);
}

Value *checkPostalCode(RuntimeContext *rt, Field *field) {
  rt->startNewSection("Pruefung PLZ", true);
  Value *plz = field->get(rt);
  if (plz->isValid() && !F::HAT_FORMAT(rt, rt->createStringValue("[0-9]{5}"), plz)->asBool()) {
    report(rt, kError, 5, "ADR-02", "Die Postleitzahl ist nicht f\xFC" "nfstellig.",
           "Eine Postleitzahl besteht aus genau f\xFC" "nf Ziffern.", field);
  }
  rt->leaveCurrentSection();
  return rt->createNilValue();
}

class AntragRules : public Plausi {
 public:
  AntragRules() {
    auto *type = new TypeDescriptor(nullptr, nullptr, "Antrag", "Antrag", FieldTypeTopic, nullptr, 0);
    antrag_ = new AntragTopic(type);
    setRootTopic(antrag_);
    auto *gemeindenType = new TypeDescriptor(nullptr, nullptr, "Gemeinden", "Gemeinden", FieldTypeTopic, nullptr, 0);
    gemeinden_ = new GemeindenTopic(gemeindenType);
    setMaterial("Gemeinden", gemeinden_);
    setFieldCheckProc("Antrag.Adresse.PLZ", checkPostalCode);
    registerFamilienstand();
  }

  const char *const *getFlows() const override {
    static const char *const kFlows[] = {"Pruefung", "Schnellpruefung", nullptr};
    return kFlows;
  }

 protected:
  void performImpl(RuntimeContext *rt, const char *flow) override {
    if (flow == nullptr) return;
    if (std::strcmp(flow, "Schnellpruefung") == 0) {
      ruleBetrag(rt);
      ruleAlter(rt);
    } else if (std::strcmp(flow, "Pruefung") == 0) {
      ruleAntragsnummer(rt);
      ruleName(rt);
      ruleAlter(rt);
      ruleFamilienstand(rt);
      ruleAdresse(rt);
      ruleKinder(rt);
      ruleBetrag(rt);
      ruleEinkommen(rt);
    }
  }

  Value *performFunctionImpl(RuntimeContext *rt, const char *name) override {
    if (name != nullptr && std::strcmp(name, "Alter") == 0) return alter(rt);
    return rt->createInvalidValue();
  }

 private:
  void registerFamilienstand() {
    struct Code {
      const char *code;
      const char *value;
    };
    auto make = [](const char *code, const char *value) {
      StringValue text(code);
      return new Classification(&text, value);
    };
    registerClassification(make("L", "ledig"), "L", "ledig");
    registerClassification(make("V", "verheiratet"), "V", "verheiratet");
    Classification *former = make("E", "ehemals verheiratet");
    for (Code child : {Code{"G", "geschieden"}, Code{"W", "verwitwet"}}) {
      Classification *leaf = make(child.code, child.value);
      former->addClassification(leaf);
      registerClassification(leaf, child.code, child.value);
    }
    registerClassification(former, "E", "ehemals verheiratet");
  }

  // A date field's value when it holds a valid date, else an InvalidValue.
  static Value *dateOf(RuntimeContext *rt, Field *field) {
    Value *date = field->get(rt);
    if (!date->isValid() || !F::isTypeConform(rt, date, FieldTypeDate, "TT.MM.JJJJ")->asBool()) {
      return rt->createInvalidValue();
    }
    return date;
  }

  Value *alter(RuntimeContext *rt) {
    Value *geboren = dateOf(rt, antrag_->antragsteller->geburtsdatum);
    Value *stichtag = dateOf(rt, antrag_->antragsdatum);
    if (!geboren->isValid() || !stichtag->isValid()) return rt->createInvalidValue();
    return F::DATUM_DIFFERENZ(rt, geboren, stichtag, rt->createStringValue("J"));
  }

  void ruleAntragsnummer(RuntimeContext *rt) {
    rt->startNewSection("Regel Antragsnummer", false);
    Value *nummer = antrag_->antragsnummer->get(rt);
    Value *form = rt->createStringValue("[A-Z]{2}-[0-9]{6}");
    if (!F::isTypeConform(rt, nummer, FieldTypeText, "ZZ-cccccc.")->asBool() ||
        (nummer->isValid() && !F::HAT_FORMAT(rt, form, nummer)->asBool())) {
      report(rt, kError, 3, "ANT-01", "Die Antragsnummer hat nicht die Form AA-123456.",
             "Zwei Gro\xDF" "buchstaben, ein Bindestrich und sechs Ziffern.", antrag_->antragsnummer);
    }
    rt->leaveCurrentSection();
  }

  void ruleName(RuntimeContext *rt) {
    rt->startNewSection("Regel Name", false);
    Person *person = antrag_->antragsteller;
    Value *name = person->name->get(rt);
    if (!name->isValid() || F::WERTLAENGE(rt, name)->asInteger() < 2) {
      report(rt, kError, 10, "PER-01", "Der Name des Antragstellers fehlt.",
             "Ohne Namen kann der Antrag nicht bearbeitet werden.", person->name);
    }
    rt->leaveCurrentSection();
  }

  void ruleAlter(RuntimeContext *rt) {
    rt->startNewSection("Regel Alter", false);
    Value *jahre = alter(rt);
    if (!jahre->isValid()) {
      report(rt, kError, 8, "PER-02", "Geburtsdatum oder Antragsdatum fehlt oder ist ung\xFC" "ltig.",
             "Beide Daten werden in der Form TT.MM.JJJJ erwartet.", antrag_->antragsteller->geburtsdatum);
    } else if (F::lt(rt, jahre, rt->createNumberValue(18.0))->asBool()) {
      report(rt, kError, 8, "PER-03", "Der Antragsteller ist noch nicht vollj\xE4" "hrig.",
             "Antr\xE4" "ge stellen k\xF6" "nnen nur Personen ab 18 Jahren.", antrag_->antragsteller->geburtsdatum);
    }
    rt->leaveCurrentSection();
  }

  void ruleFamilienstand(RuntimeContext *rt) {
    rt->startNewSection("Regel Familienstand", false);
    Value *code = antrag_->antragsteller->familienstand->get(rt);
    Value *stand = rt->getClassificationByCode(code->asString());
    if (!stand->isValid()) {
      report(rt, kError, 4, "PER-04", "Unbekannter Familienstand.", "Erlaubt sind L, V, G und W.",
             antrag_->antragsteller->familienstand);
    } else if (rt->getClassificationByCode("E")->contains(code)) {
      report(rt, kHint, 1, "PER-05", "Familienstand geschieden oder verwitwet: Nachweis anfordern.",
             "Bitte Scheidungsurteil oder Sterbeurkunde beif\xFC" "gen.",
             antrag_->antragsteller->familienstand);
    }
    rt->leaveCurrentSection();
  }

  void ruleAdresse(RuntimeContext *rt) {
    rt->startNewSection("Regel Adresse", false);
    Adresse *adresse = antrag_->adresse;
    checkPostalCode(rt, adresse->plz);
    Value *plz = adresse->plz->get(rt);
    Value *ort = F::GROSSBUCHSTABEN(rt, adresse->ort->get(rt));
    if (plz->isValid() && ort->isValid()) {
      Value *orte = rt->createMaterial(gemeinden_, 1, 1, gemeinden_->plz, OPERATOR_EQUAL, plz, gemeinden_->ort);
      bool bekannt = false;
      std::unique_ptr<ValueIterator> walk(orte->asRange());
      while (walk->hasNext() && !bekannt) bekannt = F::GROSSBUCHSTABEN(rt, walk->next())->eq(ort);
      if (!bekannt) {
        report(rt, kHint, 2, "ADR-03", "Postleitzahl und Ort passen nicht zusammen.",
               "Die Postleitzahl geh\xF6" "rt laut Gemeindeverzeichnis zu einem anderen Ort.", adresse->ort);
      }
    }
    rt->leaveCurrentSection();
  }

  void ruleKinder(RuntimeContext *rt) {
    rt->startNewSection("Regel Kinder", false);
    Value *elternteil = dateOf(rt, antrag_->antragsteller->geburtsdatum);
    std::int32_t anzahl = antrag_->kinder->getDimension()[0] == 0
                              ? rt->getDataRecord()->getSize(antrag_->kinder, nullptr)
                              : antrag_->kinder->getDimension()[0];
    for (std::int32_t i = 0; i < anzahl; ++i) {
      rt->startNewSection("Kind", false);
      std::int32_t index[] = {i, -1};
      auto *kind = static_cast<Kind *>(antrag_->kinder->getElement(rt, index));
      Value *geboren = dateOf(rt, kind->geburtsdatum);
      if (geboren->isValid() && elternteil->isValid() && F::le(rt, geboren, elternteil)->asBool()) {
        report(rt, kError, 6, "KND-01", "Das Kind ist nicht j\xFC" "nger als der Antragsteller.",
               "Das Geburtsdatum des Kindes muss nach dem des Antragstellers liegen.",
               kind->geburtsdatum);
      }
      if (!kind->vorname->get(rt)->isValid()) {
        report(rt, kHint, 1, "KND-02", "Der Vorname eines Kindes fehlt.",
               "F\xFC" "r jedes Kind wird der Vorname ben\xF6" "tigt.", kind->vorname);
      }
      rt->leaveCurrentSection();
    }
    rt->leaveCurrentSection();
  }

  void ruleBetrag(RuntimeContext *rt) {
    rt->startNewSection("Regel Betrag", false);
    Value *betrag = antrag_->betrag->get(rt);
    if (!F::isTypeConform(rt, betrag, FieldTypeReal, "######.##")->asBool()) {
      report(rt, kError, 7, "BTR-01", "Der Betrag ist kein g\xFC" "ltiger Geldbetrag.",
             "Erwartet wird ein Betrag wie 1.234,56.", antrag_->betrag);
    } else if (betrag->isValid()) {
      Value *range = rt->createIntervalRange(rt->createNumberValue(0.0), rt->createNumberValue(10000.0), INCLUDE_LAST);
      if (!range->contains(betrag)) {
        report(rt, kError, 7, "BTR-02", "Der Betrag liegt nicht zwischen 0 und 10.000 Euro.",
               "H\xF6" "here Betr\xE4" "ge m\xFC" "ssen gesondert beantragt werden.",
               antrag_->betrag);
      }
    }
    rt->leaveCurrentSection();
  }

  void ruleEinkommen(RuntimeContext *rt) {
    rt->startNewSection("Regel Einkommen", false);
    Value *hoechstes = F::MAXIMUM_AUS_LISTE(rt, antrag_->einkommen);
    if (hoechstes->isValid()) {
      Value *gerundet = F::RUNDEN(rt, hoechstes, rt->createNumberValue(0.0));
      if (F::gt(rt, gerundet, rt->createNumberValue(5000.0))->asBool()) {
        report(rt, kHint, 2, "EIN-01", "Ein Monatseinkommen liegt \xFC" "ber 5.000 Euro.",
               "Bei hohem Einkommen besteht m\xF6" "glicherweise kein Anspruch.", antrag_->einkommen);
      }
    }
    rt->leaveCurrentSection();
  }

  AntragTopic *antrag_;
  GemeindenTopic *gemeinden_;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) quorel::Plausi *loadPlausiAntrag() { return new AntragRules(); }

extern "C" __attribute__((visibility("default"))) void unloadPlausiAntrag(quorel::Plausi *plausi) {
  delete plausi;
}
