#include "quorel/host/column_check.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "quorel/host/record_layout.h"

namespace quorel {
namespace host {

namespace {

// One segment of a column: a field name and the indices after it, as a
// hierarchy text writes them ("Antworten[2]", "Matrix[1][0]").
struct Segment {
  std::string name;
  std::vector<std::int32_t> indices;
};

// Splits text at '.' into segments; false when an index is not written as a
// hierarchy text writes it (decimal digits without a leading zero, within 32
// bits), since a record would then store the cell under a text that no field
// has.
bool parse(const std::string &text, std::vector<Segment> *segments) {
  std::size_t start = 0;
  while (true) {
    std::size_t point = text.find('.', start);
    std::string part = text.substr(start, point == std::string::npos ? std::string::npos : point - start);
    std::size_t bracket = part.find('[');
    Segment segment{part.substr(0, bracket), {}};
    for (std::size_t at = bracket; at != std::string::npos && at < part.size();) {
      std::size_t close = part.find(']', at);
      if (part[at] != '[' || close == std::string::npos) return false;
      std::string digits = part.substr(at + 1, close - at - 1);
      if (digits.empty() || digits.size() > 10 || (digits.size() > 1 && digits[0] == '0') ||
          digits.find_first_not_of("0123456789") != std::string::npos || std::stoll(digits) > INT32_MAX) {
        return false;
      }
      segment.indices.push_back(static_cast<std::int32_t>(std::stoll(digits)));
      at = close + 1;
    }
    segments->push_back(std::move(segment));
    if (point == std::string::npos) return true;
    start = point + 1;
  }
}

// The mask of a date field without one, as the library reads it.
constexpr char kDefaultDateMask[] = "TT.MM.JJJJ";

std::string indexText(const std::vector<std::int32_t> &indices) {
  std::string text;
  for (std::int32_t index : indices) text += "[" + std::to_string(index) + "]";
  return text;
}

std::string count(std::size_t n, const char *one, const char *many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

}  // namespace

ColumnCheck::ColumnCheck(Plausi *plausi)
    : root_(plausi->getRootTopic()), owner_("module"), context_(nullptr), runtime_(&context_, plausi) {}

ColumnCheck::ColumnCheck(Plausi *plausi, Topic *material)
    : root_(material), owner_("material"), context_(nullptr), runtime_(&context_, plausi) {}

FieldDescriptor *ColumnCheck::lookUp(Topic *topic, const std::string &name) {
  FieldDescriptor *field = nullptr;
  try {
    field = topic->getField(&runtime_, name.c_str());
  } catch (const PlausiException &) {
    return nullptr;
  }
  // Fields are found by the hash of their name: another name may share it.
  return field != nullptr && name == field->getTypeDescriptor()->getFieldNameTopic() ? field : nullptr;
}

std::string ColumnCheck::check(const std::string &column, std::vector<std::string> *sizes) {
  if (root_ == nullptr) return std::string();
  const std::string array = RecordLayout::arrayOf(column);
  const bool size = !array.empty();
  const std::string noField = "column " + column + (size ? " names no array size: " : " names no field: ");
  std::vector<Segment> segments;
  if (!parse(size ? array : column, &segments)) return noField + "an index is not a whole number like [0]";
  std::string walked = root_->getTypeDescriptor()->getFieldNameTopic();
  if (segments[0].name != walked || !segments[0].indices.empty() || segments.size() == 1) {
    return noField + "the " + owner_ + "'s fields are named " + walked + ".<field>";
  }
  Topic *topic = root_;
  for (std::size_t i = 1; i < segments.size(); ++i) {
    const Segment &segment = segments[i];
    const bool last = i + 1 == segments.size();
    FieldDescriptor *field = lookUp(topic, segment.name);
    if (field == nullptr) return noField + walked + " has no field " + segment.name;
    walked += "." + segment.name;
    const std::int32_t *declared = field->getDimension();
    const std::size_t dimensions = static_cast<std::size_t>(Util::getSizeOf(declared));
    const std::size_t given = segment.indices.size();
    if (dimensions == 0 && (given > 0 || (size && last))) return noField + walked + " is no array";
    if (size && last) {
      // A size stands for the dimension after the indices given.
      if (given >= dimensions) return noField + walked + " has " + count(dimensions, "dimension", "dimensions");
      if (declared[given] != 0) {
        return "column " + column + ": the module fixes this size of " + walked + " at " +
               std::to_string(declared[given]) + ", so the column is never read";
      }
    } else if (given != dimensions) {
      return noField + walked + " takes " + count(dimensions, "index", "indices");
    }
    for (std::size_t d = 0; d < given; ++d) {
      if (declared[d] != 0 && segment.indices[d] >= declared[d]) {
        return "column " + column + ": index " + std::to_string(segment.indices[d]) + " is beyond the size " +
               std::to_string(declared[d]) + " that the module declares for " + walked;
      }
      if (declared[d] == 0 && sizes != nullptr) {
        std::vector<std::int32_t> outer(segment.indices.begin(), segment.indices.begin() + static_cast<long>(d));
        sizes->push_back(walked + indexText(outer) + "#");
      }
    }
    walked += indexText(segment.indices);
    bool nested = field->getTypeDescriptor()->getFieldType() == FieldTypeTopic;
    if (last) {
      if (nested && !size) return noField + walked + " is a topic; its fields are columns of their own";
      return std::string();
    }
    // Every element of a topic array has the fields of the first.
    topic = nested ? dynamic_cast<Topic *>(field) : nullptr;
    if (topic == nullptr) return noField + walked + " has no fields";
  }
  return std::string();
}

FieldDescriptor *ColumnCheck::fieldOf(const std::string &column) {
  std::size_t dot = column.find('.');
  if (root_ == nullptr || dot == std::string::npos || !RecordLayout::arrayOf(column).empty() ||
      column.compare(0, dot, root_->getTypeDescriptor()->getFieldNameTopic()) != 0) {
    return nullptr;
  }
  try {
    return root_->getField(&runtime_, column.c_str() + dot + 1);
  } catch (const PlausiException &) {
    return nullptr;  // names no field; check() says so
  }
}

bool ColumnCheck::readsText(const std::string &column) {
  FieldDescriptor *field = fieldOf(column);
  TypeDescriptor *type = field != nullptr ? field->getTypeDescriptor() : nullptr;
  if (type == nullptr) return false;
  switch (type->getFieldType()) {
    case FieldTypeText:
    case FieldTypeDate:
    case FieldTypeFree: return true;
    case FieldTypeTopic: return false;
    default: return type->getMask() != nullptr;
  }
}

std::string ColumnCheck::dateMask(const std::string &column) { return dateMaskOf(fieldOf(column)); }

std::string dateMaskOf(FieldDescriptor *field) {
  TypeDescriptor *type = field != nullptr ? field->getTypeDescriptor() : nullptr;
  if (type == nullptr || type->getFieldType() != FieldTypeDate) return std::string();
  return type->getMask() != nullptr ? type->getMask() : kDefaultDateMask;
}

std::string dateUnderMask(const std::string &text, const std::string &mask) {
  if (mask.empty() || mask == kDefaultDateMask) return text;
  try {
    DateValue read(text.c_str(), kDefaultDateMask);
    DateValue written(read.asDate(), mask.c_str());
    return written.asString();
  } catch (const PlausiException &) {
    return text;
  }
}

std::string numbersForText(const std::string &column, const std::string &type, const std::string &remedy) {
  return "column " + column + " holds numbers (" + type + ") where the rules read a text, so leading zeros and "
         "the form of the text are lost: " + remedy;
}

std::string numbersInDatabase(const std::string &column, const std::string &type) {
  return numbersForText(column, type, "store the values in a column of text, as they were written");
}

std::string noColumnRead() {
  return "none of the columns names a field that the module reads, so each record would be checked as if it "
         "were empty";
}

}  // namespace host
}  // namespace quorel
