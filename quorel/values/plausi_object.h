// Common root of values and iterators, so that a section can own both in one
// list and delete them through this virtual destructor.

#ifndef QUOREL_VALUES_PLAUSI_OBJECT_H_
#define QUOREL_VALUES_PLAUSI_OBJECT_H_

namespace quorel {

class PlausiObject {
 public:
  PlausiObject() = default;
  PlausiObject(const PlausiObject &) = default;
  PlausiObject &operator=(const PlausiObject &) = default;
  virtual ~PlausiObject();
};

}  // namespace quorel

#endif  // QUOREL_VALUES_PLAUSI_OBJECT_H_
