// MaterialDescriptor: a queryable data stock, known by its name in the rule
// source and its name in the data source. Topic implements it.

#ifndef QUOREL_MODEL_MATERIAL_DESCRIPTOR_H_
#define QUOREL_MODEL_MATERIAL_DESCRIPTOR_H_

namespace quorel {

class MaterialDescriptor {
 public:
  virtual const char *getMaterialName() = 0;
  virtual const char *getMaterialNameDataset() = 0;

 protected:
  MaterialDescriptor() = default;
  MaterialDescriptor(const MaterialDescriptor &) = default;
  MaterialDescriptor &operator=(const MaterialDescriptor &) = default;
  // Not deleted through this interface: the owner deletes the Topic.
  ~MaterialDescriptor() = default;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_MATERIAL_DESCRIPTOR_H_
