// Helpers for the authors of rule modules and rule generators: the two
// exported entry points in one macro, sections that pair themselves, topics
// that build the TypeDescriptor of each field they declare, and the steps of
// a run that take more than one library call (a value kept beyond its
// section, a problem with its field's declaration, a host's function).
//
// Everything here is a convenience over the interface that generated code is
// written against; that interface stays as it is, and a module may use both.

#ifndef QUOREL_RULES_MODULE_SUPPORT_H_
#define QUOREL_RULES_MODULE_SUPPORT_H_

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>

#include "quorel/model/field.h"
#include "quorel/model/field_array.h"
#include "quorel/model/field_type.h"
#include "quorel/model/topic.h"
#include "quorel/model/topic_array.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/model/data_record.h"
#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/plausi_section.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

// Marks a function of a shared library as visible to the loader, also when
// the module is built with hidden visibility (-fvisibility=hidden).
#if defined(_WIN32)
#define QUOREL_MODULE_EXPORT __declspec(dllexport)
#else
#define QUOREL_MODULE_EXPORT __attribute__((visibility("default")))
#endif

// Defines the entry points of the module Name, whose rule set is the class
// Class (a Plausi with a default constructor): loadPlausi<Name>, which makes
// one, and unloadPlausi<Name>, which deletes it. Write it once, at namespace
// scope, followed by a semicolon:
//
//   QUOREL_MODULE(Umfrage, UmfrageRules);
#define QUOREL_MODULE(Name, Class)                                                \
  extern "C" QUOREL_MODULE_EXPORT ::quorel::Plausi *loadPlausi##Name() {           \
    return new Class();                                                            \
  }                                                                                \
  extern "C" QUOREL_MODULE_EXPORT void unloadPlausi##Name(::quorel::Plausi *plausi) { \
    delete plausi;                                                                 \
  }                                                                                \
  static_assert(std::is_base_of<::quorel::Plausi, Class>::value,                   \
                "QUOREL_MODULE: " #Class " must derive from quorel::Plausi")

// Optional: names the init params that the module Name reads, so that a
// host can tell a given one that it never reads (a typo) before any record.
// Defines initParamsReadByPlausi<Name>, which gives the names followed by a
// null pointer. Write it once, beside QUOREL_MODULE; a module that reads no
// init param writes nullptr alone, and one that cannot tell leaves it out:
//
//   QUOREL_MODULE_INIT_PARAMS(Umfrage, "Stichtag", "Grenze");
#define QUOREL_MODULE_INIT_PARAMS(Name, ...)                                       \
  extern "C" QUOREL_MODULE_EXPORT const char *const *initParamsReadByPlausi##Name() { \
    static const char *const names[] = {__VA_ARGS__, nullptr};                   \
    return names;                                                                  \
  }                                                                                \
  static_assert(true, "")

namespace quorel {

class PlausiSection;
class RuntimeContext;

// SectionScope: a section of the run that is open for the life of the
// object. The constructor opens it (RuntimeContext::startNewSection); the
// destructor leaves it, together with any section opened inside it and left
// open, innermost first, so that sections stay paired when rule code returns
// early or throws. The values made in the section die with it.
//
// When an exception passes, the scope leaves its sections on the way out,
// before the RuntimeContext releases what is still open above them; a
// section is left exactly once either way. Leaving the scope's own section
// by hand is not allowed; leave() does it early instead.
//
// Lives on the stack of rule code, inside the run of its RuntimeContext.
// Not copied.
class SectionScope {
 public:
  SectionScope(RuntimeContext *runtime, const char *name, bool checkProc = false);
  ~SectionScope() { leave(); }

  SectionScope(const SectionScope &) = delete;
  SectionScope &operator=(const SectionScope &) = delete;

  // Leaves the section now; later calls and the destructor do nothing.
  void leave();

 private:
  RuntimeContext *runtime_;
  // The number of the scope's section, 0 once left: the section itself may
  // be gone, and its address taken by another.
  std::uint64_t section_;
};

// ModuleTopic: a Topic for generated record types that builds the
// TypeDescriptor of each field it declares. Each type hangs below this
// topic's type and reads the data-source names from this type's mapping; the
// topic owns the descriptors and their types, as Topic does.
//
// Subclasses call the protected helpers in their constructor, keep the
// typed pointers they return, and implement createElement.
class ModuleTopic : public Topic {
 public:
  // The root of a tree of fields (the record type, or a material): a type
  // without parent, with the given mapping (null when the module has none),
  // and a T built on it. The caller hands both on, for instance to
  // Plausi::setRootTopic, which owns the topic with its type from then on.
  template <typename T>
  static T *createRoot(const char *name, const char *display, Mapping *mapping = nullptr) {
    std::unique_ptr<TypeDescriptor> type(new TypeDescriptor(nullptr, mapping, name, display, FieldTypeTopic, nullptr, {}));
    T *topic = new T(type.get(), nullptr);
    type.release();
    return topic;
  }

 protected:
  ModuleTopic(TypeDescriptor *type, FieldDescriptor *parent) : Topic(type, parent) {}

  // A scalar field of any type but FieldTypeTopic. The mask may be null.
  Field *field(const char *name, const char *display, FieldType type, const char *mask = nullptr) {
    return declare(name, display, type, mask, {}, [this](TypeDescriptor *t) { return new Field(t, this); });
  }

  // A dimensioned field: {3} for three elements, {0} for a size that each
  // record tells, {2, 0} for two rows of a per-record length.
  FieldArray *fieldArray(const char *name, const char *display, FieldType type, const char *mask,
                         std::initializer_list<std::int32_t> dimensions) {
    return declare(name, display, type, mask, dimensions,
                   [this](TypeDescriptor *t) { return new FieldArray(t, this); });
  }

  // A nested topic of class T, built as T(TypeDescriptor *, FieldDescriptor *).
  template <typename T>
  T *topic(const char *name, const char *display) {
    return declare(name, display, FieldTypeTopic, nullptr, {}, [this](TypeDescriptor *t) { return new T(t, this); });
  }

  // A dimensioned nested topic whose elements are made by a prototype T.
  template <typename T>
  TopicArray *topicArray(const char *name, const char *display, std::initializer_list<std::int32_t> dimensions) {
    return declare(name, display, FieldTypeTopic, nullptr, dimensions, [this](TypeDescriptor *t) {
      std::unique_ptr<T> prototype(new T(t, this));
      auto *array = new TopicArray(t, this, prototype.get());
      prototype.release();
      return array;
    });
  }

 private:
  // Builds the type below this topic's type, with its mapping, lets make
  // build the descriptor on it, and hands both to the topic. Nothing leaks
  // when a step throws.
  template <typename Make>
  auto declare(const char *name, const char *display, FieldType type, const char *mask,
               std::initializer_list<std::int32_t> dimensions, Make make) -> decltype(make(nullptr)) {
    TypeDescriptor *own = getTypeDescriptor();
    std::unique_ptr<TypeDescriptor> childType(
        new TypeDescriptor(own, own != nullptr ? own->getMapping() : nullptr, name, display, type, mask, dimensions));
    std::unique_ptr<std::remove_pointer_t<decltype(make(nullptr))>> descriptor(make(childType.get()));
    setField(name, descriptor.get());
    childType.release();
    return descriptor.release();
  }
};

// The steps below are the same in generated modules and in rule files that
// quorel runs itself, so that a rule file does the same either way.

// The value, kept in home, a section the run has open: a value made in a
// section inside home would die with that section, so home keeps a copy.
inline Value *keepInSection(RuntimeContext *rt, Value *value, PlausiSection *home) {
  if (home == rt->getCurrentSection()) return value;
  std::unique_ptr<Value> copy(value->copy());
  home->addLocalObject(copy.get());
  return copy.release();
}

// The size of the dimension of array after indices: the declared one, or
// the record's for a size declared 0.
inline std::int32_t dimensionSize(RuntimeContext *rt, FieldDescriptor *array, std::int32_t declared,
                                  std::int32_t *indices) {
  return declared != 0 ? declared : rt->getDataRecord()->getSize(array, indices);
}

// A new problem of the run with its id, and with its reference field's
// display name, type and mask when field is given.
inline PlausiProblem *createProblemFor(RuntimeContext *rt, ProblemType type, std::int32_t weight, const char *id,
                                       FieldDescriptor *field) {
  PlausiProblem *problem = rt->createProblem(type, weight);
  problem->setId(id);
  if (field != nullptr) {
    problem->setReferenceField(field);
    TypeDescriptor *declared = field->getTypeDescriptor();
    problem->setFieldDisplayName(declared->getFieldNameDisplay());
    problem->setFieldType(declared->getFieldType());
    problem->setFieldMask(declared->getMask());
  }
  return problem;
}

// The host's function of that name; throws (type 0) when the host gave
// none.
inline ExternalFunction hostFunction(RuntimeContext *rt, const char *name) {
  ExternalFunction function = rt->getExternalFunction(name);
  if (function == nullptr) {
    std::string message = std::string("Die externe Funktion ") + name + " ist nicht vorhanden.";
    throw PlausiException(EXCEPTION_GENERAL, message.c_str());
  }
  return function;
}

// What a host's function gave, or an InvalidValue for null.
inline Value *resultOrInvalid(RuntimeContext *rt, Value *value) {
  return value != nullptr ? value : rt->createInvalidValue();
}

}  // namespace quorel

#endif  // QUOREL_RULES_MODULE_SUPPORT_H_
