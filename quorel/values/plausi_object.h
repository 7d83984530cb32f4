// Common root of values and iterators, so that a section can own both in one
// list and delete them through this virtual destructor.
//
// Their memory comes from the ObjectPool of the thread, since runs make and
// drop them by the thousand; new and delete work on them as usual, and a
// value may be deleted on another thread than the one that made it.

#ifndef QUOREL_VALUES_PLAUSI_OBJECT_H_
#define QUOREL_VALUES_PLAUSI_OBJECT_H_

#include <cstddef>

namespace quorel {

class PlausiObject {
 public:
  PlausiObject() = default;
  PlausiObject(const PlausiObject &) = default;
  PlausiObject &operator=(const PlausiObject &) = default;
  virtual ~PlausiObject();

  static void *operator new(std::size_t size);
  // The virtual destructor hands in the size of the object's own class.
  static void operator delete(void *object, std::size_t size) noexcept;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_PLAUSI_OBJECT_H_
