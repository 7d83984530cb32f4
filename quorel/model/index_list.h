// Owned index and dimension lists: arrays of 32-bit entries ended by the
// first negative one, the library writing -1 there. A null list is the empty
// list. These helpers make the owned copies that descriptors and problems
// keep.

#ifndef QUOREL_MODEL_INDEX_LIST_H_
#define QUOREL_MODEL_INDEX_LIST_H_

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>

namespace quorel {

using IndexList = std::unique_ptr<std::int32_t[]>;

// A copy of the entries of list with a closing -1; null for the empty list.
IndexList copyIndexList(const std::int32_t *list);

// count entries read from args (each an int) with a closing -1; null for a
// count below 1.
IndexList readIndexList(std::int32_t count, va_list args);

// Appends the list as text, "[2][0]"; nothing for the empty list.
void appendIndicesAsText(std::string *text, const std::int32_t *list);

}  // namespace quorel

#endif  // QUOREL_MODEL_INDEX_LIST_H_
