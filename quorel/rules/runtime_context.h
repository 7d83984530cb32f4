// RuntimeContext: the context of one call of Plausi::perform,
// performFunction or performFieldCheck, and the first argument of every rule
// and built-in function.
//
// It keeps the stack of open sections, starting with the root "Plausi", and
// is the factory of everything rule code makes: each object it creates is
// owned by the section innermost at that moment and dies when that section is
// left. Nothing it creates outlives it. Every other question goes to the
// PlausiContext or to the ClassificationRessource, neither of which it owns.
//
// The destructor leaves the innermost section, as balanced rule code expects,
// and then releases any sections that rule code left open, for instance
// because an exception unwound through it. Not copied.
//
// A run is bound to no thread: it may begin on one and end on another, and
// runs on one thread may end in any order. One run is used by one thread at
// a time.

#ifndef QUOREL_RULES_RUNTIME_CONTEXT_H_
#define QUOREL_RULES_RUNTIME_CONTEXT_H_

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_section.h"
#include "quorel/values/interval_range.h"

namespace quorel {

class ArrayValueIterator;
class ClassificationRessource;
class Field;
class FieldArray;
class LocalArray;
class MaterialDescriptor;
class FieldDescriptor;
class PlausiObject;
class ValueIterator;

class RuntimeContext {
 public:
  RuntimeContext(PlausiContext *context, ClassificationRessource *classifications);
  ~RuntimeContext();

  RuntimeContext(const RuntimeContext &) = delete;
  RuntimeContext &operator=(const RuntimeContext &) = delete;

  DataRecord *getDataRecord() const { return context_->getDataRecord(); }
  std::int32_t getProblemWeightLevel() const { return context_->getProblemWeightLevel(); }
  MaterialAccess *getMaterialAccess() const { return context_->getMaterialAccess(); }
  Logger *getLogger() const { return context_->getLogger(); }
  Value *getInitParam(const char *name) const { return context_->getInitParam(name); }
  ExternalFunction getExternalFunction(const char *name) const {
    return context_->getExternalFunction(name);
  }
  Value *getClassificationByCode(const char *code);
  Value *getClassificationByValue(const char *value);

  // Rule code's own marker; the library does nothing else with it.
  void setCurrentField(FieldDescriptor *field) { currentField_ = field; }
  FieldDescriptor *getCurrentField() const { return currentField_; }

  void startNewSection(const char *name, bool checkProc);
  // Leaves the innermost section and deletes what it owns. Must not be called
  // with no section open.
  void leaveCurrentSection();
  // The innermost open section, or null when none is open.
  PlausiSection *getCurrentSection() const { return current_; }

  PlausiProblem *createProblem(ProblemType type, std::int32_t weight) {
    return context_->createProblem(type, weight);
  }
  // Adds the fields read in the innermost section, each once in order of
  // first access, and the section names from the innermost to the root.
  void setSectionInfosToProblem(PlausiProblem *problem);

  // The factory. Every result belongs to the current section.
  Value *createValue(Value *source);  // source->copy(); the source is left alone
  Value *createNilValue();
  Value *createInvalidValue();
  Value *createInconvertibleValue(const char *message);
  // value->asRange(); the values that the walk makes (the numbers of a
  // sequence) belong to the current section too, however long the value
  // walked lives.
  ValueIterator *createIterator(Value *value);
  // Walks of the values of an array, optionally restricted per dimension.
  ArrayValueIterator *createIterator(FieldArray *array);
  ArrayValueIterator *createIterator(LocalArray *array);
  Value *createStringValue(const char *text);
  // The same for a text that the caller has just made, copied whole.
  Value *createStringValue(std::string text);
  // The text with every byte replaced by its entry in byteMap.
  Value *createStringValue(const char *text, const unsigned char (&byteMap)[256]);
  Value *createBoolValue(bool flag);
  Value *createNumberValue(double number);
  Value *createNumberValue(const char *text);  // parsed on first use
  Value *createDateValue(const std::tm *date, const char *mask);
  Value *createDateValue(const char *text, const char *mask);  // parsed on first use
  // Throws type 9 for a sequence that runs the wrong way or does not move.
  Value *createSequenceRange(Value *first, Value *second, Value *last);
  Value *createIntervalRange(Value *first, Value *last, IntervalType type);
  // Followed by count Value * members.
  Value *createRangeSeries(std::int32_t count, ...);
  // A query into a material, run when used: conditions triples of Field *,
  // OperatorType (int) and Value * (copied), then fields entries of Field *.
  Value *createMaterial(MaterialDescriptor *material, std::int32_t conditions, std::int32_t fields, ...);
  Value *createMaterialValue(Field *field, DataRecord *record);

 private:
  // Hands the new object to the current section and gives it back.
  template <typename T>
  T *own(T *object) {
    std::unique_ptr<T> guard(object);
    getCurrentSection()->addLocalObject(guard.get());
    return guard.release();
  }

  PlausiContext *context_;
  ClassificationRessource *classifications_;
  // The innermost open section, owned here like every open section: each
  // links to the one it opened within, so the chain of parents from here
  // is the stack of open sections, the innermost first.
  PlausiSection *current_ = nullptr;
  std::int32_t depth_ = 0;  // sections open
  FieldDescriptor *currentField_ = nullptr;
  std::uint64_t sectionsOpened_ = 0;  // in the whole run
};

}  // namespace quorel

#endif  // QUOREL_RULES_RUNTIME_CONTEXT_H_
