#include "problem_columns.h"

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

py::object pythonOf(std::int32_t index) { return py::int_(index); }
py::object pythonOf(const std::string &text) { return py::str(host::toUtf8(text.c_str())); }
template <typename T>
py::object pythonOf(const std::vector<T> &list) {
  py::tuple tuple(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) tuple[i] = pythonOf(list[i]);
  return std::move(tuple);
}

// The codes and categories of a Categorical: each distinct value becomes a
// Python object once (a str, or a tuple for a list), by make. Distinct
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

py::tuple numbers(const std::deque<std::int32_t> &values, const std::deque<bool> &missing) {
  return py::make_tuple(arrayOf(values), arrayOf(missing));
}

}  // namespace

void ProblemColumns::addOutcome(std::int64_t row, const host::Outcome &outcome) {
  ++records_;
  if (outcome.failed) {
    ++failed_;
    addErrorRow(row, host::toUtf8(outcome.failure().c_str()));
  }
  for (const host::Problem &problem : outcome.problems) addProblem(row, problem);
  errorProblems_ += outcome.errors;
}

void ProblemColumns::addFailure(std::int64_t row, const std::string &message) {
  ++records_;
  ++failed_;
  addErrorRow(row, message);
}

void ProblemColumns::addProblem(std::int64_t row, const host::Problem &p) {
  rows_.push_back(row);
  error_.addNone();
  p.id ? id_.add(*p.id) : id_.addNone();
  type_.add(static_cast<std::int32_t>(p.type));
  weight_.add(p.weight);
  p.text ? shortText_.add(*p.text) : shortText_.addNone();
  p.details ? longText_.add(*p.details) : longText_.addNone();
  p.field.empty() ? field_.addNone() : field_.add(p.field);
  fieldIndices_.add(p.fieldIndices);
  accessed_.add(p.accessed);
  sections_.add(p.sections);
  ++problems_;
}

void ProblemColumns::addErrorRow(std::int64_t row, const std::string &message) {
  rows_.push_back(row);
  error_.add(message);
  for (Texts *texts : {&id_, &shortText_, &longText_, &field_}) texts->addNone();
  type_.addNone();
  weight_.addNone();
  fieldIndices_.add({});
  accessed_.add({});
  sections_.add({});
}

py::dict ProblemColumns::finish() const {
  py::dict out;
  out["row"] = arrayOf(rows_);
  out["id"] = categorical(id_.values, id_.codes);
  out["type"] = numbers(type_.values, type_.missing);
  out["weight"] = numbers(weight_.values, weight_.missing);
  out["short_text"] = categorical(shortText_.values, shortText_.codes);
  out["long_text"] = categorical(longText_.values, longText_.codes);
  out["field"] = categorical(field_.values, field_.codes);
  out["field_indices"] = categorical(fieldIndices_.values, fieldIndices_.codes);
  out["accessed_fields"] = categorical(accessed_.values, accessed_.codes);
  out["sections"] = categorical(sections_.values, sections_.codes);
  // Messages of rows not checked are UTF-8 already.
  out["error"] = categorical(error_.values, error_.codes, [](const std::string &text) { return py::str(text); });
  out["summary"] = py::dict(py::arg("records") = records_, py::arg("problems") = problems_,
                            py::arg("errors") = errorProblems_, py::arg("failed") = failed_);
  return out;
}

}  // namespace python
}  // namespace quorel
