// isOfExactClass: whether an object is of class T itself, not of a class
// derived from it, for the shorter ways the library takes with its own
// classes.
//
// The type information is compared by address. The library's classes have
// their type information in the library alone, so an object of the class
// always matches, and an object of another class is told apart at once,
// where comparing type_info objects would compare their names whenever the
// addresses differ. Should an object of the class ever come with type
// information of its own, it is merely not recognised and takes the general
// way.

#ifndef QUOREL_PLATFORM_EXACT_CLASS_H_
#define QUOREL_PLATFORM_EXACT_CLASS_H_

#include <typeinfo>

namespace quorel {

template <typename T, typename U>
bool isOfExactClass(const U &object) {
  return &typeid(object) == &typeid(T);
}

}  // namespace quorel

#endif  // QUOREL_PLATFORM_EXACT_CLASS_H_
