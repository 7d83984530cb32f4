// Material: the result of a query into another data stock, as a range that
// rule code walks, compares or tests for containment.
//
// Nothing runs at creation. Every asRange() hands the query to the host's
// MaterialAccess again and walks the values record by record, fields in the
// order of the field set. The scalar conversions work on the first value of
// such a walk (a NilValue when there is none), queried once and kept; a
// walk that fails, on a field of any record that could not be read, makes
// them fail alike. Containment is answered by the host from a tuple of
// copies. Without a MaterialAccess, or for a material it does not offer,
// every query fails with type 6 and the material's name.
//
// The filter and field set are owned, and shared by copies of the Material;
// the descriptor is not owned.

#ifndef QUOREL_MATERIAL_MATERIAL_H_
#define QUOREL_MATERIAL_MATERIAL_H_

#include <memory>
#include <vector>

#include "quorel/material/field_set.h"
#include "quorel/material/record_filter.h"
#include "quorel/values/range.h"

namespace quorel {

class DataRecordSet;
class MaterialDescriptor;
class MaterialValue;
class RuntimeContext;

class Material : public Range {
 public:
  // Takes ownership of filter and fields.
  Material(RuntimeContext *context, MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields);
  ~Material() override;

  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  ValueIterator *asRange() override;
  // Shares filter and field set; the copy queries anew.
  Value *copy() override;

 protected:
  bool containsImpl(Value *other) override;

 private:
  // Which builds the filter and field set of a query already shared.
  friend class RuntimeContext;

  Material(RuntimeContext *context, MaterialDescriptor *material, std::shared_ptr<RecordFilter> filter,
           std::shared_ptr<FieldSet> fields);

  // Checks the access, then asks the host for the records of the query.
  void readRecords(DataRecordSet *records);
  // Runs the query and walks its values, record by record. They go into
  // keep, or into the current section when keep is null.
  ValueIterator *walk(std::vector<std::unique_ptr<Value>> *keep);
  Value *getFirstValue();

  RuntimeContext *context_;
  MaterialDescriptor *material_;
  std::shared_ptr<FieldSet> fields_;
  std::shared_ptr<RecordFilter> filter_;
  Value *firstValue_ = nullptr;
  // What the first value lives in: the values of the query that found it,
  // or the NilValue of an empty result.
  std::vector<std::unique_ptr<Value>> firstQuery_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_MATERIAL_H_
