// Plausi: a rule set at run time, and the door through which a host starts a
// run.
//
// A rule module derives from Plausi. Its constructor registers what the rule
// source declares (root topic, name mappings, field check procedures,
// classifications, materials) through the protected operations; from then on
// the Plausi owns all of it except the procedures. It implements
// performImpl (run a flow) and performFunctionImpl (evaluate a named
// function). Each entry operation builds a RuntimeContext for its duration,
// whose root section "Plausi" owns the values made under it; exceptions from
// rule code reach the caller unchanged.
//
// Registries are keyed by the hash of the name: a later registration under a
// colliding name replaces the entry, and what it replaced is no longer the
// Plausi's; it is not released here. The destructor releases what the
// registries hold at the end: the materials' topics with their types, the
// root topic with its type, the classifications by code, the mapping, the
// materials' mappings, each registry in the order of its keys. An object
// held in several places is released once.
//
// The order of the virtual operations is part of the interface that rule
// modules are compiled against. Not copied.

#ifndef QUOREL_RULES_PLAUSI_H_
#define QUOREL_RULES_PLAUSI_H_

#include "quorel/rules/classification_ressource.h"
#include "quorel/rules/name_map.h"
#include "quorel/values/invalid_value.h"

namespace quorel {

class Classification;
class Field;
class Mapping;
class MaterialDescriptor;
class PlausiContext;
class RuntimeContext;
class Topic;
class Value;

// The check of one field; its result is not used.
using FieldCheckProc = Value *(*)(RuntimeContext *, Field *);

class Plausi : public ClassificationRessource {
 public:
  Plausi();
  ~Plausi() override;

  Plausi(const Plausi &) = delete;
  Plausi &operator=(const Plausi &) = delete;

  // The registered classification, or this Plausi's own InvalidValue, which
  // no caller deletes.
  Value *getClassificationByCode(const char *code) override;
  Value *getClassificationByValue(const char *value) override;

  // Runs the context's flow; the findings land in the context.
  void perform(PlausiContext *context);

  // Evaluates the named function and gives back a copy that belongs to the
  // caller and outlives the run.
  Value *performFunction(const char *name, PlausiContext *context);

  // Runs the check procedure of the field at the path below the root topic
  // (Topic::getField). All elements of an array share the check of the
  // array. Throws type 4 with the type hierarchy text when the field has no
  // procedure, type 5 with the name when there is no root topic.
  void performFieldCheck(const char *name, PlausiContext *context);

  // The registered data stock, or null.
  MaterialDescriptor *getMaterial(const char *name);
  // Every registered data stock, by index from 0 in the registry's order,
  // so that a host can tell which materials the module may query before
  // a run asks for one it lacks. Null for an index out of range.
  std::int32_t getNumOfMaterials() const;
  MaterialDescriptor *getMaterialAt(std::int32_t index) const;

  // The record type the module registered, or null. It stays the Plausi's;
  // a host walks it to learn the fields a record may hold.
  Topic *getRootTopic() const { return rootTopic_; }

  // Whether flow is one the module runs: true for every flow when the module
  // declares none (getFlows gives null), else only for a declared name,
  // compared exactly.
  bool isKnownFlow(const char *flow) const;

 protected:
  // Must give a value alive at its return, never null.
  virtual Value *performFunctionImpl(RuntimeContext *runtime, const char *name) = 0;
  virtual void performImpl(RuntimeContext *runtime, const char *flow) = 0;

 public:
  // The names of the flows the module runs, ended by a null entry, or null
  // when the module does not declare them (the default, and what generated
  // code without a declaration gives). The list stays the module's. Declared
  // after the operations above, since their order is fixed.
  virtual const char *const *getFlows() const { return nullptr; }

 protected:

  // Registration, for the constructor of the rule module. Each takes
  // ownership of what it is given, except the procedure, for as long as a
  // registry holds it.
  void setFieldCheckProc(const char *typeHierarchy, FieldCheckProc procedure);
  // Findable by code, and by value text when that is not null.
  void registerClassification(Classification *classification, const char *code, const char *value);
  void setMapping(Mapping *mapping);
  Mapping *getMapping() const { return mapping_; }
  void setMappingForMaterial(const char *name, Mapping *mapping);
  Mapping *getMappingForMaterial(const char *name) const;
  // The topic is owned together with its TypeDescriptor.
  void setMaterial(const char *name, Topic *topic);
  void setRootTopic(Topic *topic);

 private:
  NameMap<FieldCheckProc> fieldCheckProcs_;
  NameMap<Classification *> classificationsByCode_;
  NameMap<Classification *> classificationsByValue_;
  InvalidValue invalidValue_;
  Mapping *mapping_ = nullptr;
  NameMap<Mapping *> materialMappings_;
  NameMap<Topic *> materials_;
  Topic *rootTopic_ = nullptr;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_H_
