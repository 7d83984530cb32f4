// Common root of values and iterators, so that a section can own both in one
// list and delete them through this virtual destructor.
//
// Their memory comes from the ObjectPool of the thread (see Pooled), since
// runs make and drop them by the thousand; new and delete work on them as
// usual, and a value may be deleted on another thread than the one that made
// it: the virtual destructor hands the pool the size of the object's own
// class.

#ifndef QUOREL_VALUES_PLAUSI_OBJECT_H_
#define QUOREL_VALUES_PLAUSI_OBJECT_H_

#include "quorel/values/object_pool.h"

namespace quorel {

class PlausiObject : public Pooled {
 public:
  PlausiObject() = default;
  PlausiObject(const PlausiObject &) = default;
  PlausiObject &operator=(const PlausiObject &) = default;
  virtual ~PlausiObject();
};

}  // namespace quorel

#endif  // QUOREL_VALUES_PLAUSI_OBJECT_H_
