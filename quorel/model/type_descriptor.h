// TypeDescriptor: what a rule module declares about the type of one field:
// its name inside the enclosing topic, its display name, its FieldType, its
// mask and, for an array, its dimension list (an entry 0 meaning a size that
// the record tells at run time).
//
// The name of the field in the data source is looked up once, at
// construction, in the mapping under the hash of this type's hierarchy text;
// so the parent's hierarchy must be complete before a child is built.
// Parent and mapping are not owned; all texts and the dimension list are
// owned copies. Not copied.

#ifndef QUOREL_MODEL_TYPE_DESCRIPTOR_H_
#define QUOREL_MODEL_TYPE_DESCRIPTOR_H_

#include <cstdint>
#include <initializer_list>
#include <string>

#include "quorel/model/field_type.h"
#include "quorel/model/index_list.h"
#include "quorel/rules/nullable_text.h"

namespace quorel {

class Mapping;

class TypeDescriptor {
 public:
  // Room the library's callers give a hierarchy text, end byte included.
  static constexpr int kHierarchyBufferSize = 1024;

  // Followed by exactly dimensionCount sizes (int). fieldNameTopic must not
  // be null; display name and mask may be.
  TypeDescriptor(TypeDescriptor *parent, Mapping *mapping, const char *fieldNameTopic,
                 const char *fieldNameDisplay, FieldType fieldType, const char *mask,
                 std::int32_t dimensionCount, ...);
  // The same with the sizes as a list: {} for a field that is no array,
  // {3, 0} for a 3 x n array. Unlike the count and sizes above, a list
  // cannot disagree with its length, and a size of another width does not
  // compile unless its value fits.
  TypeDescriptor(TypeDescriptor *parent, Mapping *mapping, const char *fieldNameTopic,
                 const char *fieldNameDisplay, FieldType fieldType, const char *mask,
                 std::initializer_list<std::int32_t> dimensions);

  TypeDescriptor(const TypeDescriptor &) = delete;
  TypeDescriptor &operator=(const TypeDescriptor &) = delete;

  TypeDescriptor *getParent() const { return parent_; }
  Mapping *getMapping() const { return mapping_; }
  const char *getFieldNameTopic() const { return fieldNameTopic_.c_str(); }
  // Null without a mapping or without an entry in it.
  const char *getFieldNameDataset() const { return fieldNameDataset_.get(); }
  const char *getFieldNameDisplay() const { return fieldNameDisplay_.get(); }
  FieldType getFieldType() const { return fieldType_; }
  const char *getMask() const { return mask_.get(); }
  // Null for a field that is no array.
  std::int32_t *getDimension() const { return dimension_.get(); }

  // The topic names from the root down, joined by points, without indices:
  // Root.Adresse.Zeile. The target holds kHierarchyBufferSize bytes; a longer
  // text is cut there.
  void getHierarchyAsString(char *target) const;
  // The same text at any length.
  std::string getHierarchyText() const;

 private:
  TypeDescriptor *parent_;
  Mapping *mapping_;
  std::string fieldNameTopic_;
  NullableText fieldNameDataset_;
  NullableText fieldNameDisplay_;
  FieldType fieldType_;
  NullableText mask_;
  IndexList dimension_;
};

// Copies text into a caller's buffer of TypeDescriptor::kHierarchyBufferSize
// bytes, cutting what does not fit.
void copyHierarchyText(const std::string &text, char *target);

}  // namespace quorel

#endif  // QUOREL_MODEL_TYPE_DESCRIPTOR_H_
