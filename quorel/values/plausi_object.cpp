#include "quorel/values/plausi_object.h"

#include "quorel/values/object_pool.h"

namespace quorel {

PlausiObject::~PlausiObject() = default;

void *PlausiObject::operator new(std::size_t size) { return ObjectPool::allocate(size); }

void PlausiObject::operator delete(void *object, std::size_t size) noexcept { ObjectPool::release(object, size); }

}  // namespace quorel
