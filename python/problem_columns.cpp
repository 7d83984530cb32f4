#include "problem_columns.h"

#include <nlohmann/json.hpp>
#include <pybind11/numpy.h>

#include "quorel/host/encoding.h"

namespace py = pybind11;

namespace quorel {
namespace python {

namespace {

// An array of type T of the values, each mapped by map.
template <typename T, typename U, typename Map>
py::array_t<T> arrayOf(const std::deque<U> &values, Map map) {
  py::array_t<T> out(static_cast<py::ssize_t>(values.size()));
  T *data = out.mutable_data();
  for (const U &value : values) *data++ = static_cast<T>(map(value));
  return out;
}

template <typename T>
py::array_t<T> arrayOf(const std::deque<T> &values) {
  return arrayOf<T>(values, [](T value) { return value; });
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

// The codes and categories of a Categorical: each distinct value becomes a
// Python str once, by make. Distinct
// Windows-1252 texts may decode to one str (the code page's undefined bytes
// all become U+FFFD), and categories must be distinct, so codes are mapped
// onto the distinct Python values.
template <typename Key, typename Hash, typename Make>
py::tuple categorical(const Dictionary<Key, Hash> &values, const std::deque<std::int32_t> &codes, Make make) {
  py::list categories;
  py::dict known;  // Python value -> its code
  std::vector<std::int32_t> remap;
  for (const Key *key : values.keys()) {
    py::object value = make(*key);
    if (!known.contains(value)) {
      known[value] = py::len(categories);
      categories.append(value);
    }
    remap.push_back(known[value].template cast<std::int32_t>());
  }
  auto code = [&remap](std::int32_t raw) { return raw < 0 ? -1 : remap[static_cast<std::size_t>(raw)]; };
  // The integer type that pandas makes of codes for that many categories,
  // so that it takes the array as it is.
  std::size_t count = py::len(categories);
  if (count < 127) return py::make_tuple(arrayOf<std::int8_t>(codes, code), categories);
  if (count < 32767) return py::make_tuple(arrayOf<std::int16_t>(codes, code), categories);
  return py::make_tuple(arrayOf<std::int32_t>(codes, code), categories);
}

template <typename Key, typename Hash>
py::tuple categorical(const Dictionary<Key, Hash> &values, const std::deque<std::int32_t> &codes) {
  return categorical(values, codes, [](const Key &key) { return pythonOf(key); });
}

template <typename T>
py::tuple numbers(const std::deque<T> &values, const std::deque<bool> &missing) {
  return py::make_tuple(arrayOf(values), arrayOf(missing));
}

}  // namespace

void ProblemColumns::addOutcome(std::int64_t row, const host::Place &place, const host::Outcome &outcome) {
  summary_.add(outcome.problems, outcome.errors, !outcome.failed);
  if (outcome.failed) addFailureRow(row, place, host::toUtf8(outcome.failure().c_str()));
  for (const host::Problem &problem : outcome.problems) addProblem(row, place, problem);
}

void ProblemColumns::addFailure(std::int64_t row, const host::Place &place, const std::string &message) {
  summary_.add({}, 0, false);
  addFailureRow(row, place, message);
}

void ProblemColumns::addPlace(std::int64_t row, const host::Place &place) {
  rows_.push_back(row);
  record_.add(place.record);
  place.line > 0 ? line_.add(place.line) : line_.addNone();
}

void ProblemColumns::addProblem(std::int64_t row, const host::Place &place, const host::Problem &p) {
  addPlace(row, place);
  failure_.addNone();
  p.id ? id_.add(*p.id) : id_.addNone();
  type_.add(static_cast<std::int32_t>(p.type));
  weight_.add(p.weight);
  p.text ? text_.add(*p.text) : text_.addNone();
  p.details ? details_.add(*p.details) : details_.addNone();
  p.field.empty() ? field_.addNone() : field_.add(p.field);
  fieldIndices_.add(p.fieldIndices);
  accessed_.add(p.accessed);
  sections_.add(p.sections);
}

void ProblemColumns::addFailureRow(std::int64_t row, const host::Place &place, const std::string &message) {
  addPlace(row, place);
  failure_.add(message);
  for (Texts *texts : {&id_, &text_, &details_, &field_}) texts->addNone();
  type_.addNone();
  weight_.addNone();
  fieldIndices_.add({});
  accessed_.add({});
  sections_.add({});
}

py::dict ProblemColumns::finish() const {
  py::dict out;
  out["row"] = arrayOf(rows_);
  out["record"] = numbers(record_.values, record_.missing);
  out["line"] = numbers(line_.values, line_.missing);
  out["id"] = categorical(id_.values, id_.codes);
  out["type"] = numbers(type_.values, type_.missing);
  out["weight"] = numbers(weight_.values, weight_.missing);
  out["text"] = categorical(text_.values, text_.codes);
  out["details"] = categorical(details_.values, details_.codes);
  out["field"] = categorical(field_.values, field_.codes);
  out["field_indices"] = categorical(fieldIndices_.values, fieldIndices_.codes);
  out["accessed"] = categorical(accessed_.values, accessed_.codes);
  out["sections"] = categorical(sections_.values, sections_.codes);
  // Messages of rows not checked are UTF-8 already.
  out["failure"] = categorical(failure_.values, failure_.codes, [](const std::string &text) { return py::str(text); });
  out["summary"] = py::dict(py::arg("records") = summary_.records, py::arg("checked") = summary_.checked(),
                            py::arg("not_checked") = summary_.notChecked, py::arg("problems") = summary_.problems,
                            py::arg("errors") = summary_.errors);
  return out;
}

}  // namespace python
}  // namespace quorel
