// doubtEncoding: what the start of a text file says against the encoding it
// is read in, so that a front end can name the mistake once, before any
// record is read.
//
// A file without a byte-order mark is read in the encoding the user names,
// Windows-1252 unless told otherwise. A UTF-8 file read so turns every
// letter beyond ASCII into two (Müller into MÃ¼ller): no row fails, but
// the rules see other texts, and lookups in materials miss. A Windows-1252
// file read as UTF-8 fails each row that holds such a letter. The start of
// the file tells either mistake: German text that is valid UTF-8 byte for
// byte and holds a letter beyond ASCII is next to never meant as
// Windows-1252, and text that is no UTF-8 is not.

#ifndef QUOREL_HOST_ENCODING_DOUBT_H_
#define QUOREL_HOST_ENCODING_DOUBT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

struct EncodingDoubt {
  // Names the file, the line and the text that shows it (UTF-8); empty when
  // nothing speaks against the encoding.
  std::string message;
  // The encoding that fits, as --encoding and encoding= name it.
  const char *fits = nullptr;
};

// How much of a file's start doubtEncoding is given at most.
constexpr std::size_t kEncodingSample = 1 << 20;

// start: the first bytes of the file, from its first line on, or the text
// of a later row that begins on line firstLine; read: the encoding it is
// read in, which no byte-order mark decided.
EncodingDoubt doubtEncoding(const std::string &file, std::string_view start, FileEncoding read,
                            std::int64_t firstLine = 1);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_ENCODING_DOUBT_H_
