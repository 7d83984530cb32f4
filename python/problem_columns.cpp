#include "problem_columns.h"

#include <algorithm>

#include <nlohmann/json.hpp>
#include <pybind11/numpy.h>

#include "quorel/host/byte_words.h"
#include "quorel/host/encoding.h"

namespace py = pybind11;

namespace quorel {
namespace python {

namespace {

std::size_t combine(std::size_t hash, std::size_t more) { return hash * 1000003u ^ more; }

// An array of type T of count values, written by fill(put), which calls
// put(value) for each in order.
template <typename T, typename Fill>
py::array_t<T> arrayOf(std::size_t count, Fill fill) {
  py::array_t<T> out(static_cast<py::ssize_t>(count));
  T *data = out.mutable_data();
  fill([&data](auto value) { *data++ = static_cast<T>(value); });
  return out;
}

// The values, each mapped by map.
template <typename U, typename Map>
auto mapped(const std::deque<U> &values, Map map) {
  return [&values, map](auto put) {
    for (const U &value : values) put(map(value));
  };
}

nlohmann::json jsonOf(std::int32_t index) { return index; }
nlohmann::json jsonOf(const std::string &text) { return host::toUtf8(text.c_str()); }

py::object pythonOf(const std::string &text) { return py::str(host::toUtf8(text.c_str())); }
// A list as a problem table holds it: a JSON array.
template <typename T>
py::object pythonOf(const std::vector<T> &list) {
  nlohmann::json array = nlohmann::json::array();
  for (const T &entry : list) array.push_back(jsonOf(entry));
  return py::str(array.dump());
}

// The categories of a Categorical into *categories: each distinct value
// becomes a Python str once, by make. Distinct Windows-1252 texts may decode
// to one str (the code page's undefined bytes all become U+FFFD), and
// categories must be distinct; so the result maps each code of values onto
// its category's.
template <typename Key, typename Hash, typename Make>
std::vector<std::int32_t> categoriesOf(const Dictionary<Key, Hash> &values, Make make, py::list *categories) {
  py::dict known;  // Python value -> its code
  std::vector<std::int32_t> remap;
  for (const Key *key : values.keys()) {
    py::object value = make(*key);
    if (!known.contains(value)) {
      known[value] = py::len(*categories);
      categories->append(value);
    }
    remap.push_back(known[value].template cast<std::int32_t>());
  }
  return remap;
}

// The codes (rows of them, written by fill as arrayOf takes it) and
// categories of a Categorical, the codes in the integer type that pandas
// makes of codes for that many categories, so that it takes the array as it
// is.
template <typename Fill>
py::tuple categorical(std::size_t rows, Fill fill, const py::list &categories) {
  std::size_t count = py::len(categories);
  if (count < 127) return py::make_tuple(arrayOf<std::int8_t>(rows, fill), categories);
  if (count < 32767) return py::make_tuple(arrayOf<std::int16_t>(rows, fill), categories);
  return py::make_tuple(arrayOf<std::int32_t>(rows, fill), categories);
}

// A column of the kinds: get(kind) gives the value of a kind (null for
// none; the failure rows' kind is null), rows hold kind codes.
template <typename Key, typename Hash, typename Get>
py::tuple kindColumn(const std::vector<const host::Problem *> &kinds, const std::deque<std::int32_t> &rows, Get get) {
  Dictionary<Key, Hash> values;
  std::vector<std::int32_t> codes;  // by kind
  codes.reserve(kinds.size());
  for (const host::Problem *kind : kinds) {
    const Key *value = get(kind);
    codes.push_back(value != nullptr ? values.codeOf(*value) : -1);
  }
  py::list categories;
  std::vector<std::int32_t> remap = categoriesOf(values, [](const Key &key) { return pythonOf(key); }, &categories);
  for (std::int32_t &code : codes) code = code < 0 ? -1 : remap[static_cast<std::size_t>(code)];
  return categorical(rows.size(), mapped(rows, [&codes](std::int32_t kind) { return codes[static_cast<std::size_t>(kind)]; }),
                     categories);
}

template <typename Get>
py::tuple textColumn(const std::vector<const host::Problem *> &kinds, const std::deque<std::int32_t> &rows, Get get) {
  return kindColumn<std::string, std::hash<std::string>>(kinds, rows, get);
}

// A list column; the failure rows' kind has an empty list.
template <typename T, typename Get>
py::tuple listColumn(const std::vector<const host::Problem *> &kinds, const std::deque<std::int32_t> &rows, Get get) {
  static const std::vector<T> kEmpty;
  return kindColumn<std::vector<T>, ListHash<T>>(
      kinds, rows, [&get](const host::Problem *kind) { return kind != nullptr ? &get(*kind) : &kEmpty; });
}

// A number column of the kinds, missing for the failure rows' kind.
template <typename Get>
py::tuple numberColumn(const std::vector<const host::Problem *> &kinds, const std::deque<std::int32_t> &rows,
                       Get get) {
  auto value = [&](std::int32_t kind) {
    const host::Problem *problem = kinds[static_cast<std::size_t>(kind)];
    return problem != nullptr ? get(*problem) : 0;
  };
  auto missing = [&](std::int32_t kind) { return kinds[static_cast<std::size_t>(kind)] == nullptr; };
  return py::make_tuple(arrayOf<std::int32_t>(rows.size(), mapped(rows, value)),
                        arrayOf<bool>(rows.size(), mapped(rows, missing)));
}

const std::string *optionalText(const std::optional<std::string> &text) { return text ? &*text : nullptr; }

// A problem's kind hashed by every attribute.
std::size_t kindHash(const ProblemColumns::Read &p) {
  auto text = [](std::string_view t) { return host::words::hash(t); };
  auto optional = [&text](std::optional<std::string_view> t) { return t ? text(*t) : 1; };
  std::size_t hash = combine(static_cast<std::size_t>(p.type), static_cast<std::size_t>(p.weight));
  hash = combine(combine(combine(hash, optional(p.id)), optional(p.text)), optional(p.details));
  hash = combine(hash, text(p.field));
  hash = combine(hash, p.indices.size());
  for (std::int32_t index : p.indices) hash = combine(hash, static_cast<std::size_t>(index));
  hash = combine(hash, p.accessed.size());
  for (std::string_view field : p.accessed) hash = combine(hash, text(field));
  hash = combine(hash, p.sections.size());
  for (std::string_view section : p.sections) hash = combine(hash, text(section));
  return hash;
}

// Whether the list holds the entries of the kind's list, in order.
template <typename T, typename U>
bool sameList(const std::vector<T> &list, const std::vector<U> &kind) {
  return std::equal(list.begin(), list.end(), kind.begin(), kind.end(),
                    [](const T &a, const U &b) { return a == b; });
}

// Whether the problem is of the kind, in every attribute.
bool ofKind(const ProblemColumns::Read &p, const host::Problem &kind) {
  host::StoredProblem k(kind);
  return p.type == k.type() && p.weight == k.weight() && p.id == k.id() && p.text == k.text() &&
         p.details == k.details() && p.field == k.field() && p.indices == kind.fieldIndices &&
         sameList(p.accessed, kind.accessed) && sameList(p.sections, kind.sections);
}

}  // namespace

void ProblemColumns::addOutcome(std::int64_t row, const host::Place &place, const host::Outcome &outcome) {
  summary_.count(outcome.problems.size(), outcome.errors, !outcome.failed);  // ids are the kinds' business
  std::int32_t failure = -1;
  if (outcome.failed) {
    failure = messages_.codeOf(host::toUtf8(outcome.failure().c_str()));
    kinds_.push_back(failureKind());
  }
  for (std::size_t i = 0; i < outcome.problems.size(); ++i) kinds_.push_back(kindOf(outcome.problems[i]));
  addSource(row, place, outcome.problems.size() + (outcome.failed ? 1 : 0), failure);
}

void ProblemColumns::addFailure(std::int64_t row, const host::Place &place, const std::string &message) {
  summary_.count(0, 0, false);
  kinds_.push_back(failureKind());
  addSource(row, place, 1, messages_.codeOf(message));
}

void ProblemColumns::append(ProblemColumns *part) {
  part->codesThere_.resize(part->kindList_.size(), -1);
  for (std::int32_t kind : part->kinds_) {
    std::int32_t &there = part->codesThere_[static_cast<std::size_t>(kind)];
    if (there < 0) {
      const host::Problem *problem = part->kindList_[static_cast<std::size_t>(kind)];
      if (problem == nullptr) {
        there = failureKind();
      } else {
        kindStore_.push_back(*problem);
        there = addKind(&kindStore_.back());
      }
    }
    kinds_.push_back(there);
  }
  for (Source source : part->sources_) {
    if (source.failure >= 0) {
      source.failure = messages_.codeOf(*part->messages_.keys()[static_cast<std::size_t>(source.failure)]);
    }
    sources_.push_back(source);
  }
  summary_.merge(part->summary_);
  part->kinds_.clear();
  part->sources_.clear();
  part->summary_ = host::Summary();
}

void ProblemColumns::Read::from(const host::FoundProblem &p) {
  id = p.id();
  type = p.type();
  weight = p.weight();
  text = p.text();
  details = p.details();
  field = p.field();
  indices.resize(p.indexCount());
  for (std::size_t i = 0; i < indices.size(); ++i) indices[i] = p.index(i);
  accessed.resize(p.accessedCount());
  for (std::size_t i = 0; i < accessed.size(); ++i) accessed[i] = p.accessed(i);
  sections.resize(p.sectionCount());
  for (std::size_t i = 0; i < sections.size(); ++i) sections[i] = p.section(i);
}

std::int32_t ProblemColumns::kindOf(const host::FoundProblem &problem) {
  read_.from(problem);
  std::int32_t &last = lastOfId_.try_emplace(read_.id ? host::words::hash(*read_.id) : 1, -1).first->second;
  if (last >= 0 && ofKind(read_, *kindList_[static_cast<std::size_t>(last)])) return last;
  auto first = firstOfHash_.try_emplace(kindHash(read_), -1).first;
  std::int32_t *link = &first->second;
  for (; *link >= 0; link = &nextOfHash_[static_cast<std::size_t>(*link)]) {
    if (ofKind(read_, *kindList_[static_cast<std::size_t>(*link)])) return last = *link;
  }
  kindStore_.emplace_back();
  host::copyProblem(problem, &kindStore_.back());
  *link = addKind(&kindStore_.back());
  return last = *link;
}

std::int32_t ProblemColumns::failureKind() {
  if (failureKind_ < 0) failureKind_ = addKind(nullptr);
  return failureKind_;
}

std::int32_t ProblemColumns::addKind(const host::Problem *kind) {
  kindList_.push_back(kind);
  nextOfHash_.push_back(-1);
  return static_cast<std::int32_t>(kindList_.size() - 1);
}

void ProblemColumns::addSource(std::int64_t label, const host::Place &place, std::size_t rows,
                               std::int32_t failure) {
  if (rows == 0) return;
  sources_.push_back({label, place.record, place.line > 0 ? place.line : 0, static_cast<std::int32_t>(rows), failure});
}

py::dict ProblemColumns::finish() const {
  const std::vector<const host::Problem *> &kinds = kindList_;
  const std::size_t rows = kinds_.size();
  // Each row of the input's value(source, first) for each of its rows, first
  // for the first of them.
  auto bySource = [this](auto value) {
    return [this, value](auto put) {
      for (const Source &source : sources_) {
        for (std::int32_t i = 0; i < source.rows; ++i) put(value(source, i == 0));
      }
    };
  };
  py::dict out;
  out["row"] = arrayOf<std::int64_t>(rows, bySource([](const Source &s, bool) { return s.label; }));
  out["record"] = py::make_tuple(arrayOf<std::int64_t>(rows, bySource([](const Source &s, bool) { return s.record; })),
                                 arrayOf<bool>(rows, bySource([](const Source &, bool) { return false; })));
  out["line"] = py::make_tuple(arrayOf<std::int64_t>(rows, bySource([](const Source &s, bool) { return s.line; })),
                               arrayOf<bool>(rows, bySource([](const Source &s, bool) { return s.line == 0; })));
  out["id"] = textColumn(kinds, kinds_, [](const host::Problem *p) { return p ? optionalText(p->id) : nullptr; });
  out["type"] = numberColumn(kinds, kinds_, [](const host::Problem &p) { return static_cast<std::int32_t>(p.type); });
  out["weight"] = numberColumn(kinds, kinds_, [](const host::Problem &p) { return p.weight; });
  out["text"] = textColumn(kinds, kinds_, [](const host::Problem *p) { return p ? optionalText(p->text) : nullptr; });
  out["details"] =
      textColumn(kinds, kinds_, [](const host::Problem *p) { return p ? optionalText(p->details) : nullptr; });
  out["field"] = textColumn(kinds, kinds_, [](const host::Problem *p) {
    return p != nullptr && !p->field.empty() ? &p->field : nullptr;
  });
  out["field_indices"] =
      listColumn<std::int32_t>(kinds, kinds_, [](const host::Problem &p) -> const auto & { return p.fieldIndices; });
  out["accessed"] =
      listColumn<std::string>(kinds, kinds_, [](const host::Problem &p) -> const auto & { return p.accessed; });
  out["sections"] =
      listColumn<std::string>(kinds, kinds_, [](const host::Problem &p) -> const auto & { return p.sections; });
  // Messages of rows not checked are UTF-8 already.
  py::list messages;
  std::vector<std::int32_t> remap =
      categoriesOf(messages_, [](const std::string &text) { return py::str(text); }, &messages);
  out["failure"] = categorical(rows, bySource([&remap](const Source &s, bool first) {
                                 return first && s.failure >= 0 ? remap[static_cast<std::size_t>(s.failure)] : -1;
                               }),
                               messages);
  out["summary"] = py::dict(py::arg("records") = summary_.records, py::arg("checked") = summary_.checked(),
                            py::arg("not_checked") = summary_.notChecked, py::arg("problems") = summary_.problems,
                            py::arg("errors") = summary_.errors);
  return out;
}

}  // namespace python
}  // namespace quorel
