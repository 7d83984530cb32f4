#include "quorel/host/material_router.h"

namespace quorel {
namespace host {

MaterialAccess *MaterialRouter::accessOf(MaterialDescriptor *material) const {
  const char *name = material->getMaterialName();
  auto it = routes_.find(std::string_view(name != nullptr ? name : ""));
  return it == routes_.end() ? nullptr : it->second;
}

bool MaterialRouter::isMaterialAvailable(MaterialDescriptor *material) {
  MaterialAccess *access = accessOf(material);
  return access != nullptr && access->isMaterialAvailable(material);
}

bool MaterialRouter::containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                                    ValueSet *values) {
  MaterialAccess *access = accessOf(material);
  return access != nullptr && access->containsValues(material, filter, fields, values);
}

void MaterialRouter::readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                                 FieldSet *fields) {
  if (MaterialAccess *access = accessOf(material)) access->readRecords(result, material, filter, fields);
}

}  // namespace host
}  // namespace quorel
