#include "quorel/host/material_check.h"

#include <algorithm>
#include <set>

#include "quorel/host/column_check.h"

namespace quorel {
namespace host {

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
  Topic *topic = nullptr;
  for (std::int32_t i = 0; i < plausi->getNumOfMaterials() && topic == nullptr; ++i) {
    MaterialDescriptor *descriptor = plausi->getMaterialAt(i);
    const char *name = descriptor->getMaterialName();
    if (name != nullptr && material == name) topic = dynamic_cast<Topic *>(descriptor);
  }
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

}  // namespace host
}  // namespace quorel
