// Conversion between the library's Windows-1252 texts and UTF-8, the
// encoding of files, terminals, JSON and Python.

#ifndef QUOREL_HOST_ENCODING_H_
#define QUOREL_HOST_ENCODING_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace quorel {
namespace host {

// Appends the Windows-1252 text as UTF-8. The five bytes that the code page
// leaves undefined become U+FFFD. A null text appends nothing.
void appendUtf8(std::string *out, const char *text);
void appendUtf8(std::string *out, std::string_view text);
std::string toUtf8(const char *text);
// The same written at `at`, which has room for kUtf8Growth bytes per byte
// of text; gives the end of what it wrote.
constexpr std::size_t kUtf8Growth = 3;
char *writeUtf8(char *at, std::string_view text);
// One byte of such a text as UTF-8 at `at`, which has room for
// kUtf8Growth bytes; gives the end of what it wrote.
char *writeUtf8Byte(char *at, unsigned char byte);

// Converts UTF-8 to Windows-1252 into *out. False when the input is no valid
// UTF-8 or holds a character that Windows-1252 lacks; *offset is then the
// byte offset of that character in the input. NUL counts as such a
// character: a library text ends at its first NUL.
bool fromUtf8(std::string_view utf8, std::string *out, std::size_t *offset);
// Why fromUtf8 stopped at offset, for a message: "the character at byte N
// is no UTF-8" or "the character at byte N is not in Windows-1252".
std::string fromUtf8Fault(std::string_view utf8, std::size_t offset);

// Windows-1252 for a message from elsewhere (a database's, a file's name;
// UTF-8): a character that Windows-1252 lacks, or a byte that is no UTF-8,
// becomes '?'.
std::string messageText(std::string_view utf8);

// Where text stops being UTF-8: the offset of the first sequence that is
// malformed (overlong forms and surrogates included), or npos when there is
// none. A sequence cut short by the end of text counts as whole, since text
// may be the start of a file. *beyondAscii becomes the offset of the first
// character beyond ASCII before that point, or npos.
std::size_t utf8Fault(std::string_view text, std::size_t *beyondAscii);

// The encoding of a text file.
enum class FileEncoding { kWindows1252, kUtf8 };

// "windows-1252" (or "cp1252") and "utf-8" (or "utf8"), in any case; false
// for another name.
bool parseEncoding(const std::string &name, FileEncoding *encoding);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_ENCODING_H_
