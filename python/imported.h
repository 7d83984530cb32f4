// Imported: an attribute of a Python module (collections.abc.Mapping,
// pandas.isna), looked up at its first use and kept for the life of the
// process.
//
// A function-local static would do the lookup under the C++ guard of its
// initialisation. An import may run Python code, and with it let another
// thread take the GIL; should that thread reach the same static, it waits
// for the guard while holding the GIL, and neither thread ever goes on. Here
// the lookup runs without a guard: two threads may both look the name up,
// and the one that stores it second keeps what the first stored. Needs the
// GIL; constant-initialised, so that it may live at namespace scope.

#ifndef QUOREL_PYTHON_IMPORTED_H_
#define QUOREL_PYTHON_IMPORTED_H_

#include <pybind11/pybind11.h>

namespace quorel {
namespace python {

class Imported {
 public:
  constexpr Imported(const char *module, const char *name) : module_(module), name_(name) {}

  pybind11::handle get() {
    if (object_ == nullptr) {
      pybind11::object found = pybind11::module_::import(module_).attr(name_);
      // Whatever the import let other threads do, the GIL is held from here.
      if (object_ == nullptr) object_ = found.release().ptr();
    }
    return object_;
  }

 private:
  const char *module_;
  const char *name_;
  // Held for the life of the process: a pybind11::object would be released
  // after the interpreter has ended.
  PyObject *object_ = nullptr;
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_IMPORTED_H_
