// Position: a place in a rule file, counted from 1 (a column counts
// characters, not bytes).

#ifndef QUOREL_LANG_POSITION_H_
#define QUOREL_LANG_POSITION_H_

#include <cstdint>

namespace quorel {
namespace lang {

struct Position {
  std::int32_t line = 0;
  std::int32_t column = 0;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_POSITION_H_
