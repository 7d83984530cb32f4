// Loading a shared library and finding a symbol in it. Libraries are never
// unloaded: a rule module's code must stay mapped for as long as any object it
// made may still be reached.

#ifndef QUOREL_PLATFORM_DYNAMIC_LIBRARY_H_
#define QUOREL_PLATFORM_DYNAMIC_LIBRARY_H_

#include <string>

namespace quorel {
namespace platform {

// Loads the library file as given; null on failure, and for an empty name.
void *loadLibrary(const char *file);

// The address of the symbol in the library of the handle; null when the handle
// is null or the symbol is missing. A null handle never searches the process.
void *findSymbol(void *handle, const char *symbol);

// The platform's reason for the latest failure of the two calls above on
// this thread, or "" when it gave none. Reading it clears it.
std::string takeLastError();

}  // namespace platform
}  // namespace quorel

#endif  // QUOREL_PLATFORM_DYNAMIC_LIBRARY_H_
