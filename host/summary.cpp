#include "quorel/host/summary.h"

#include <algorithm>

namespace quorel {
namespace host {

void Summary::add(const std::vector<Problem> &found, std::int32_t errorCount, bool checked) {
  static const std::string kNoId;
  ++records;
  notChecked += checked ? 0 : 1;
  problems += static_cast<std::int64_t>(found.size());
  errors += errorCount;
  for (std::size_t i = 0; i < found.size(); ++i) {
    IdCounts &counts = ids[found[i].id ? *found[i].id : kNoId];
    ++counts.problems;
    // A record counts once per id: at the id's first problem in it.
    bool first = true;
    for (std::size_t j = 0; j < i && first; ++j) first = found[j].id != found[i].id;
    if (first) ++counts.records;
  }
}

void Summary::merge(const Summary &other) {
  records += other.records;
  notChecked += other.notChecked;
  problems += other.problems;
  errors += other.errors;
  for (const auto &entry : other.ids) {
    IdCounts &counts = ids[entry.first];
    counts.problems += entry.second.problems;
    counts.records += entry.second.records;
  }
}

std::vector<std::pair<std::string, Summary::IdCounts>> Summary::byId() const {
  std::vector<std::pair<std::string, IdCounts>> sorted(ids.begin(), ids.end());
  std::sort(sorted.begin(), sorted.end(), [](const auto &a, const auto &b) {
    return a.second.problems != b.second.problems ? a.second.problems > b.second.problems : a.first < b.first;
  });
  return sorted;
}

}  // namespace host
}  // namespace quorel
