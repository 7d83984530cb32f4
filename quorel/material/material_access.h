// MaterialAccess: the query interface that the host implements over its
// other data stocks (materials). The library packs a query (the material,
// the conditions that must all hold, the fields wanted) and hands it here,
// synchronously, on the thread of the run. The order of the operations is
// part of the interface. Implementations are destroyed through their own
// type.

#ifndef QUOREL_MATERIAL_MATERIAL_ACCESS_H_
#define QUOREL_MATERIAL_MATERIAL_ACCESS_H_

namespace quorel {

class DataRecordSet;
class FieldSet;
class MaterialDescriptor;
class RecordFilter;
class ValueSet;

class MaterialAccess {
 public:
  // False makes every query on the material fail.
  virtual bool isMaterialAvailable(MaterialDescriptor *material) = 0;
  // Whether a record fulfils the filter and holds in fields the values,
  // which correspond by position.
  virtual bool containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                              ValueSet *values) = 0;
  // Appends every record that fulfils the filter, in the order of the walk.
  // The records must outlive the run.
  virtual void readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                           FieldSet *fields) = 0;

 protected:
  MaterialAccess() = default;
  MaterialAccess(const MaterialAccess &) = default;
  MaterialAccess &operator=(const MaterialAccess &) = default;
  ~MaterialAccess() = default;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_MATERIAL_ACCESS_H_
