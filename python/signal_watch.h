// SignalWatch: lets Ctrl-C stop a long check that runs without the GIL.
// Python handles a signal only when the main thread runs Python code, and
// check_frame on a file or a database spends all its time in C++; there,
// now and then, the thread that called in takes the GIL and lets Python run
// the handlers that are due. A handler that raises (KeyboardInterrupt) makes
// check() throw error_already_set, which stops the run (see RowSlices::run)
// and reaches the caller. Python runs signal handlers on the main thread
// alone: called from any other (a Dask worker's), the watch never takes the
// GIL, which that process's other threads may hold. Made on the calling
// thread, with the GIL held.

#ifndef QUOREL_PYTHON_SIGNAL_WATCH_H_
#define QUOREL_PYTHON_SIGNAL_WATCH_H_

#include <thread>

#include <pybind11/pybind11.h>

namespace quorel {
namespace python {

class SignalWatch {
 public:
  SignalWatch()
      : caller_(std::this_thread::get_id()),
        active_(pybind11::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>() ==
                PyThread_get_thread_ident()) {}

  SignalWatch(const SignalWatch &) = delete;
  SignalWatch &operator=(const SignalWatch &) = delete;

  // Called once per slice of rows, so that the GIL is taken every
  // kEverySlices slices alone.
  void check() {
    if (!active_ || std::this_thread::get_id() != caller_ || ++calls_ % kEverySlices != 0) return;
    pybind11::gil_scoped_acquire gil;
    if (PyErr_CheckSignals() != 0) throw pybind11::error_already_set();
  }

 private:
  static constexpr unsigned kEverySlices = 8;

  const std::thread::id caller_;
  const bool active_;   // called on the main thread
  unsigned calls_ = 0;  // by the calling thread
};

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_SIGNAL_WATCH_H_
