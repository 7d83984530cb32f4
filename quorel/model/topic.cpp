#include "quorel/model/topic.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "quorel/masks/util.h"
#include "quorel/model/field_array.h"
#include "quorel/model/model_messages.h"
#include "quorel/model/topic_array.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/release_once.h"

namespace quorel {

namespace {

// The indices of a path segment ("[1][2]"), or the first element of every
// dimension when the segment has none. Fails as described at getField.
std::vector<std::int32_t> segmentIndices(FieldDescriptor *field, const std::string &indexText) {
  std::int32_t dimensions = Util::getSizeOf(field->getDimension());
  if (indexText.empty()) {
    std::vector<std::int32_t> first(static_cast<std::size_t>(dimensions), 0);
    first.push_back(-1);
    return first;
  }
  if (dimensions == 0) throw PlausiException(EXCEPTION_ILLEGAL_ACCESS, messages::kNotAnArray);
  // One entry per "[" at most, and the terminator.
  std::vector<std::int32_t> indices(std::count(indexText.begin(), indexText.end(), '[') + 1, -1);
  Util::getStringAsIndices(indices.data(), indexText.c_str());
  return indices;
}

}  // namespace

Topic::Topic(TypeDescriptor *type, FieldDescriptor *parent) : FieldDescriptor(type, parent) {}

Topic::~Topic() {
  ReleaseOnce release;
  for (auto &entry : fields_) release.withType(entry.second);
}

void Topic::setField(const char *name, FieldDescriptor *field) { fields_.put(name, field); }

FieldDescriptor *Topic::getFieldAt(std::int32_t index) const {
  if (index < 0 || index >= getNumOfFields()) return nullptr;
  return std::next(fields_.begin(), index)->second;
}

FieldDescriptor *Topic::getField(RuntimeContext *context, const char *name) {
  if (name == nullptr) throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, "Feldname nicht angegeben.");
  Topic *topic = this;
  std::string path = name;
  while (true) {
    std::size_t point = path.find('.');
    std::string segment = path.substr(0, point);
    std::size_t bracket = segment.find('[');
    std::string bare = segment.substr(0, bracket);
    FieldDescriptor **entry = topic->fields_.find(bare.c_str());
    if (entry == nullptr || *entry == nullptr) throw PlausiException(EXCEPTION_NO_SUCH_FIELD, bare.c_str());
    FieldDescriptor *field = *entry;
    std::vector<std::int32_t> indices =
        segmentIndices(field, bracket == std::string::npos ? std::string() : segment.substr(bracket));
    bool dimensioned = field->getDimension() != nullptr;

    if (field->getTypeDescriptor()->getFieldType() != FieldTypeTopic) {
      auto *array = dynamic_cast<FieldArray *>(field);
      return dimensioned && array != nullptr ? array->getElement(context, indices.data()) : field;
    }
    Topic *next = dynamic_cast<Topic *>(field);
    if (dimensioned) {
      auto *array = dynamic_cast<TopicArray *>(field);
      next = array != nullptr ? array->getElement(context, indices.data()) : nullptr;
    }
    // A path ending on a nested topic, or a topic field of another class,
    // gives the descriptor reached.
    if (next == nullptr || point == std::string::npos) return next != nullptr ? next : field;
    topic = next;
    path = path.substr(point + 1);
  }
}

}  // namespace quorel
