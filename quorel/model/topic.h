// Topic: a field that holds named sub-fields: a nested structure of the
// record, the root record type itself, or the description of a queryable
// data stock (MaterialDescriptor).
//
// Sub-fields are keyed by the hash of their name: two names with the same
// code are one entry, and a later setField replaces the earlier one without
// releasing it; the replaced descriptor is no longer the topic's. The topic
// owns the descriptors its entries hold at the end, with their
// TypeDescriptors, and releases them in the order of the keys, each
// descriptor and each type once, however many entries share it.
// Generated topic classes implement createElement to make an equal topic for
// the elements of a topic array.

#ifndef QUOREL_MODEL_TOPIC_H_
#define QUOREL_MODEL_TOPIC_H_

#include <cstdint>

#include "quorel/model/field_descriptor.h"
#include "quorel/model/material_descriptor.h"
#include "quorel/rules/name_map.h"
#include "quorel/rules/nullable_text.h"

namespace quorel {

class RuntimeContext;

class Topic : public FieldDescriptor, public MaterialDescriptor {
 public:
  Topic(TypeDescriptor *type, FieldDescriptor *parent);
  ~Topic() override;

  // A fresh topic equal to this one, for a new element of a topic array.
  virtual Topic *createElement() = 0;

  const char *getMaterialName() override { return materialName_.get(); }
  const char *getMaterialNameDataset() override { return materialNameDataset_.get(); }
  void setMaterialName(const char *name) { materialName_.set(name); }
  void setMaterialNameDataset(const char *name) { materialNameDataset_.set(name); }

  // Resolves a path of names with indices, such as Adresse[1].Zeile[0][2],
  // from this topic to one field. A segment without indices on an array
  // means its first element. Fails with type 9 for a null path, type 5 with
  // the name for an unknown field, type 7 for indices on a field that is no
  // array, and with the messages of Util::getStringAsIndices for malformed
  // indices. A path that ends on a nested topic gives that topic.
  FieldDescriptor *getField(RuntimeContext *context, const char *name);

  // The entries, in the order of their names' codes, for a host that walks
  // the fields a topic declares (to match them with the columns of a table
  // before any record is read). An entry that holds no descriptor, and an
  // index out of range, give null.
  std::int32_t getNumOfFields() const { return static_cast<std::int32_t>(fields_.size()); }
  FieldDescriptor *getFieldAt(std::int32_t index) const;

 protected:
  // Takes ownership of field and its TypeDescriptor while the entry holds it.
  void setField(const char *name, FieldDescriptor *field);

 private:
  NullableText materialName_;
  NullableText materialNameDataset_;
  NameMap<FieldDescriptor *> fields_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_TOPIC_H_
