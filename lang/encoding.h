// Text of rule files between UTF-8 and Windows-1252, the library's code
// page. A rule file may be written in either: a file that is valid UTF-8 is
// taken as UTF-8, any other as Windows-1252.

#ifndef QUOREL_LANG_ENCODING_H_
#define QUOREL_LANG_ENCODING_H_

#include <cstddef>
#include <string>

namespace quorel {
namespace lang {

bool isValidUtf8(const std::string &text);

// The Windows-1252 text of a valid UTF-8 text. A character that the code
// page lacks becomes '?'; the byte offset of the first such character goes
// to *bad when bad is given and *bad is still std::string::npos.
std::string utf8ToWindows1252(const std::string &text, std::size_t *bad = nullptr);

// The UTF-8 text of a Windows-1252 text (its five unused bytes become
// U+FFFD).
std::string windows1252ToUtf8(const std::string &text);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_ENCODING_H_
