#include "quorel/host/material_check.h"

#include <algorithm>
#include <set>
#include <utility>

#include "quorel/host/column_check.h"
#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

namespace {

// The fields of the topic and of the topics nested in it that are no arrays,
// each once.
void collectFields(Topic *topic, std::vector<FieldDescriptor *> *fields) {
  for (std::int32_t i = 0; i < topic->getNumOfFields(); ++i) {
    FieldDescriptor *field = topic->getFieldAt(i);
    if (field == nullptr || field->getDimension() != nullptr) continue;
    if (std::find(fields->begin(), fields->end(), field) != fields->end()) continue;
    auto *nested = field->getTypeDescriptor()->getFieldType() == FieldTypeTopic ? dynamic_cast<Topic *>(field) : nullptr;
    if (nested != nullptr) {
      collectFields(nested, fields);
    } else {
      fields->push_back(field);
    }
  }
}

}  // namespace

MaterialFindings checkMaterials(Plausi *plausi, const std::string &module, const std::vector<std::string> &given,
                                const std::string &howToGive, bool strict) {
  MaterialFindings findings;
  std::vector<std::string> registered;
  for (std::int32_t i = 0; i < plausi->getNumOfMaterials(); ++i) {
    // Queries find their material by this name, so a topic without one is
    // beyond any host's reach.
    const char *name = plausi->getMaterialAt(i)->getMaterialName();
    if (name != nullptr) registered.emplace_back(name);
  }
  std::string known;
  for (const std::string &name : registered) known += (known.empty() ? "" : ", ") + name;
  std::set<std::string> seen, repeated;
  for (const std::string &name : given) {
    if (!seen.insert(name).second) {
      if (repeated.insert(name).second) findings.errors.push_back("material " + name + " is given more than once");
      continue;
    }
    if (std::find(registered.begin(), registered.end(), name) != registered.end()) continue;
    (strict ? findings.errors : findings.warnings)
        .push_back("material " + name + " is given, but module " + module + " queries no material of that name (" +
                   (known.empty() ? "it queries none" : "its materials: " + known) + ")");
  }
  for (const std::string &name : registered) {
    if (seen.count(name) > 0) continue;
    std::string how = howToGive;
    for (std::size_t at = how.find("NAME"); at != std::string::npos; at = how.find("NAME", at + name.size())) {
      how.replace(at, 4, name);
    }
    findings.errors.push_back("module " + module + " queries the material " + name + ", which is not given: pass " +
                              how);
  }
  return findings;
}

MaterialFindings checkMaterialColumns(Plausi *plausi, const std::string &material,
                                      const std::vector<std::string> &columns, bool strict) {
  MaterialFindings findings;
  Topic *topic = materialTopic(plausi, material);
  // A table without columns holds nothing that could be misnamed.
  if (topic == nullptr || columns.empty()) return findings;
  ColumnCheck check(plausi, topic);
  const std::string prefix = "material " + material + ": ";
  std::vector<std::string> faults;
  std::string listed;
  for (const std::string &column : columns) {
    listed += (listed.empty() ? "" : ", ") + column;
    std::string message = check.check(column);
    if (!message.empty()) faults.push_back(prefix + message);
  }
  if (faults.size() == columns.size()) {
    // One message for the table rather than one per column.
    findings.errors.push_back(prefix + "no column names a field of the material, so every query on it would find "
                              "nothing (its columns: " + listed + "; the fields are named " +
                              topic->getTypeDescriptor()->getFieldNameTopic() + ".<field>)");
  } else {
    std::vector<std::string> &said = strict ? findings.errors : findings.warnings;
    said.insert(said.end(), faults.begin(), faults.end());
  }
  return findings;
}

MaterialFindings checkMaterialFields(Plausi *plausi, const std::string &material,
                                     const std::function<TableColumn(FieldDescriptor *)> &columnFor, bool strict) {
  MaterialFindings findings;
  Topic *topic = materialTopic(plausi, material);
  if (topic == nullptr) return findings;
  std::vector<FieldDescriptor *> fields;
  collectFields(topic, &fields);
  // Named in the order of their texts: a topic keeps no order of its own.
  std::vector<std::pair<std::string, FieldDescriptor *>> named;
  for (FieldDescriptor *field : fields) named.emplace_back(field->getHierarchyText(), field);
  std::sort(named.begin(), named.end());
  const std::string prefix = "material " + material + ": ";
  std::vector<std::string> faults;
  std::string listed;
  ColumnCheck texts(plausi, topic);
  for (const auto &[hierarchy, field] : named) {
    listed += (listed.empty() ? "" : ", ") + hierarchy;
    TableColumn column = columnFor(field);
    if (column.found) {
      if (!column.numberType.empty() && texts.readsText(hierarchy)) {
        // The database's names are UTF-8; the messages are the library's.
        findings.warnings.push_back(prefix + numbersInDatabase(messageText(column.name), column.numberType));
      }
      continue;
    }
    faults.push_back(prefix + "the table has no column for the field " + hierarchy +
                     ", so every query that reads or filters it fails; name its column in the material's "
                     "address: column." + hierarchy + "=<column>");
  }
  if (!fields.empty() && faults.size() == fields.size()) {
    // One message for the table rather than one per field.
    findings.errors.push_back(prefix + "the table has a column for none of the fields (" + listed +
                              "), so every query on it would fail; name their columns in the material's "
                              "address, as column." + named.front().first + "=<column>");
  } else {
    std::vector<std::string> &said = strict ? findings.errors : findings.warnings;
    said.insert(said.end(), faults.begin(), faults.end());
  }
  return findings;
}

Topic *tableTopic(Plausi *plausi, const std::string &material) {
  return material.empty() ? plausi->getRootTopic() : materialTopic(plausi, material);
}

Topic *materialTopic(Plausi *plausi, const std::string &material) {
  for (std::int32_t i = 0; i < plausi->getNumOfMaterials(); ++i) {
    MaterialDescriptor *descriptor = plausi->getMaterialAt(i);
    const char *name = descriptor->getMaterialName();
    if (name != nullptr && material == name) return dynamic_cast<Topic *>(descriptor);
  }
  return nullptr;
}

}  // namespace host
}  // namespace quorel
