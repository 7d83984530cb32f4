#include "quorel/host/summary.h"

#include <algorithm>

namespace quorel {
namespace host {

void Summary::count(std::size_t problemCount, std::int32_t errorCount, bool checked) {
  ++records;
  notChecked += checked ? 0 : 1;
  problems += static_cast<std::int64_t>(problemCount);
  errors += errorCount;
}

template <typename Problems>
void Summary::addRecord(const Problems &found, std::int32_t errorCount, bool checked) {
  count(found.size(), errorCount, checked);
  for (std::size_t i = 0; i < found.size(); ++i) {
    std::optional<std::string_view> id = found[i].id();
    std::string_view key = id.value_or(std::string_view());
    auto known = ids.find(key);
    if (known == ids.end()) known = ids.emplace(std::string(key), IdCounts()).first;
    IdCounts &counts = known->second;
    ++counts.problems;
    if (counts.lastRecord != records) {
      counts.lastRecord = records;
      ++counts.records;
    }
  }
}

void Summary::add(const std::vector<Problem> &found, std::int32_t errorCount, bool checked) {
  addRecord(StoredProblems(found), errorCount, checked);
}

void Summary::add(const FoundProblems &found, std::int32_t errorCount, bool checked) {
  addRecord(found, errorCount, checked);
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
