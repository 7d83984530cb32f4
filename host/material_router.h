// MaterialRouter: one MaterialAccess over several, each material answered by
// the access that the host names for it (tables in memory for some, a
// database for others). A material that no access was named for is not
// available. The accesses stay the caller's; routes are set before queries.

#ifndef QUOREL_HOST_MATERIAL_ROUTER_H_
#define QUOREL_HOST_MATERIAL_ROUTER_H_

#include <map>
#include <string>
#include <string_view>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

class MaterialRouter : public MaterialAccess {
 public:
  // Queries on the material of that name go to access.
  void route(const std::string &material, MaterialAccess *access) { routes_[material] = access; }

  bool isMaterialAvailable(MaterialDescriptor *material) override;
  bool containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                      ValueSet *values) override;
  void readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                   FieldSet *fields) override;

 private:
  MaterialAccess *accessOf(MaterialDescriptor *material) const;

  std::map<std::string, MaterialAccess *, std::less<>> routes_;  // found by the name's bytes, not a copy
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_MATERIAL_ROUTER_H_
