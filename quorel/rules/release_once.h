// ReleaseOnce: deletes objects for an owner whose registries may hold one
// object under several names, or in several registries. Each object is
// deleted the first time it is handed in and passed over after that, so the
// owner can walk its registries in their order without a double release.
// A descriptor goes together with its TypeDescriptor, which several
// descriptors may share.

#ifndef QUOREL_RULES_RELEASE_ONCE_H_
#define QUOREL_RULES_RELEASE_ONCE_H_

#include <unordered_set>

namespace quorel {

class ReleaseOnce {
 public:
  // Deletes object unless it is null or was released here before.
  template <typename T>
  void operator()(T *object) {
    if (object != nullptr && released_.insert(object).second) delete object;
  }

  // The descriptor's TypeDescriptor, then the descriptor itself. The type
  // is read only while the descriptor is still alive.
  template <typename Descriptor>
  void withType(Descriptor *descriptor) {
    if (descriptor == nullptr || released_.count(descriptor) != 0) return;
    (*this)(descriptor->getTypeDescriptor());
    (*this)(descriptor);
  }

 private:
  std::unordered_set<const void *> released_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_RELEASE_ONCE_H_
