#include "quorel/model/field_descriptor.h"

#include "quorel/masks/util.h"
#include "quorel/model/data_record.h"
#include "quorel/model/model_messages.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/platform/exact_class.h"
#include "quorel/rules/plausi_exception.h"

namespace quorel {

FieldDescriptor::FieldDescriptor(TypeDescriptor *type, FieldDescriptor *parent)
    : type_(type), parent_(parent) {}

FieldDescriptor::~FieldDescriptor() = default;

std::int32_t *FieldDescriptor::getDimension() const { return type_->getDimension(); }

std::atomic<std::uint32_t> FieldDescriptor::reindexings_{0};

void FieldDescriptor::setIndices(const std::int32_t *indices) {
  if (hierarchyHash_) reindexings_.fetch_add(1, std::memory_order_relaxed);
  indices_ = copyIndexList(indices);
  hierarchyHash_.reset();
}

std::string FieldDescriptor::getHierarchyText() const {
  std::string text;
  appendHierarchyText(&text);
  return text;
}

void FieldDescriptor::appendHierarchyText(std::string *text) const {
  if (parent_ != nullptr) {
    parent_->appendHierarchyText(text);
    text->push_back('.');
  }
  text->append(type_->getFieldNameTopic());
  appendIndicesAsText(text, getIndices());
}

TextHash FieldDescriptor::makeHierarchyHash() const {
  // Read first: a change while the parents' hashes are made only means that
  // the next call works this one out again.
  std::uint32_t round = reindexings_.load(std::memory_order_relaxed);
  TextHash hash;
  if (parent_ != nullptr) {
    hash = parent_->getHierarchyHash();
    hash.append('.');
  }
  hash.append(type_->getFieldNameTopic());
  hash.appendIndices(getIndices());
  hashRound_ = round;
  hierarchyHash_ = hash;
  return hash;
}

void FieldDescriptor::getHierarchyAsString(char *target) const {
  copyHierarchyText(getHierarchyText(), target);
}

namespace {

// The record reached from record through getSubDataRecord of topic and its
// parents, root first; null once a step gives null.
DataRecord *walkDown(FieldDescriptor *topic, DataRecord *record) {
  if (topic == nullptr || record == nullptr) return record;
  record = walkDown(topic->getParent(), record);
  return record != nullptr ? record->getSubDataRecord(topic) : nullptr;
}

}  // namespace

DataRecord *FieldDescriptor::getSubDataRecordFor(DataRecord *record) {
  // The library's own record is flat and answers itself for every topic: the
  // walk, a virtual call per level, would end where it began. Only the exact
  // class, since a host's subclass may answer otherwise.
  if (record != nullptr && isOfExactClass<SimpleDataRecord>(*record)) return record;
  // A context without a record, or a host record that answers null for a
  // topic, has no value for the field; that is refused rather than followed.
  record = walkDown(parent_, record);
  if (record == nullptr) throw PlausiException(EXCEPTION_GENERAL, messages::kValueNotDetermined);
  return record;
}

std::int32_t FieldDescriptor::getSizeFor(DataRecord *record, const std::int32_t *indices) {
  const std::int32_t *dimension = getDimension();
  if (Util::isValidArrayAccess(dimension, indices)) {
    std::int32_t declared = dimension[Util::getSizeOf(indices)];
    if (declared != 0) return declared;
    // Records take the list as a plain pointer, as hosts declare it; they
    // only read it.
    return getSubDataRecordFor(record)->getSize(this, const_cast<std::int32_t *>(indices));
  }
  if (Util::isValidElementAccess(dimension, indices)) return 1;
  throw PlausiException(EXCEPTION_ILLEGAL_ACCESS, messages::kIllegalArrayAccess);
}

}  // namespace quorel
