// FieldDescriptor: one spot in a rule module's tree of fields: a type at a
// place below a parent topic, with the indices of an array element where it
// is one. Its hierarchy text (Root.Adresse[1].Zeile[0][2]) is the field's
// identity towards a record.
//
// The type and the parent are not owned: a Topic owns its sub-fields and
// their types. The index list is an owned copy.

#ifndef QUOREL_MODEL_FIELD_DESCRIPTOR_H_
#define QUOREL_MODEL_FIELD_DESCRIPTOR_H_

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "quorel/masks/text_hash.h"
#include "quorel/model/index_list.h"

namespace quorel {

class DataRecord;
class FeatureField;
class TypeDescriptor;

class FieldDescriptor {
 public:
  FieldDescriptor(TypeDescriptor *type, FieldDescriptor *parent);
  virtual ~FieldDescriptor();

  FieldDescriptor(const FieldDescriptor &) = delete;
  FieldDescriptor &operator=(const FieldDescriptor &) = delete;

  TypeDescriptor *getTypeDescriptor() const { return type_; }
  FieldDescriptor *getParent() const { return parent_; }
  // Null for a field that is no element.
  std::int32_t *getIndices() const { return indices_.get(); }
  // The dimension list of the type; null for a field that is no array.
  std::int32_t *getDimension() const;

  // Keeps a copy; the empty list stores null. Hierarchy hashes kept below a
  // descriptor whose indices change are made anew.
  void setIndices(const std::int32_t *indices);

  // The topic names from the root down, each with its indices, joined by
  // points. The target holds TypeDescriptor::kHierarchyBufferSize bytes; a
  // longer text is cut there.
  void getHierarchyAsString(char *target) const;
  // The same text at any length.
  std::string getHierarchyText() const;
  // Appends that text to *text, where a caller keeps a buffer for many.
  void appendHierarchyText(std::string *text) const;
  // The hash of getHierarchyText(), ready to be continued, made without the
  // text: the parent's hash continued by this level's name and indices. It
  // is made at the first call and kept, since the chain of names never
  // changes and indices are given once, as an element is made, before
  // anything reads it. Should a host give a descriptor new indices after its
  // hash was handed out, every kept hash is made anew once, those below it
  // among them.
  TextHash getHierarchyHash() const {
    return hierarchyHash_ && hashRound_ == reindexings_.load(std::memory_order_relaxed) ? *hierarchyHash_
                                                                                        : makeHierarchyHash();
  }

 protected:
  // The record that holds this field's value: the given record walked
  // through getSubDataRecord of every parent, root first. A null record on
  // the way fails with type 0, "Wert konnte nicht ermittelt werden.".
  DataRecord *getSubDataRecordFor(DataRecord *record);

  // The number of entries of the dimension that follows indices: a declared
  // size, the record's size for a dimension declared 0, or 1 when indices
  // select one element. Other index counts fail with type 7.
  std::int32_t getSizeFor(DataRecord *record, const std::int32_t *indices);

 private:
  // A wrapper reads number fields on its own path through the record.
  friend class FeatureField;

  // Works out the hierarchy hash and keeps it; every read asks for it, so
  // the kept one is handed out inline.
  TextHash makeHierarchyHash() const;

  TypeDescriptor *type_;
  FieldDescriptor *parent_;
  IndexList indices_;
  mutable std::optional<TextHash> hierarchyHash_;
  mutable std::uint32_t hashRound_ = 0;  // reindexings_ when the hash was made
  // How often a descriptor with a kept hash got new indices, in the whole
  // process: a descriptor knows its parent but not its children, so a change
  // reaches the hashes below it by this count alone. Never in the usual
  // course, where indices come before any hash.
  static std::atomic<std::uint32_t> reindexings_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_DESCRIPTOR_H_
