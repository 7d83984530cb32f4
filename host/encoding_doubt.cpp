#include "quorel/host/encoding_doubt.h"

namespace quorel {
namespace host {

namespace {

// The longest piece of a cell that a message shows.
constexpr std::size_t kShown = 40;

bool endsCell(char c) { return c == ';' || c == ',' || c == '\n' || c == '\r' || c == '"'; }

// The cell around offset.
std::string_view cellAt(std::string_view text, std::size_t offset) {
  std::size_t begin = offset;
  while (begin > 0 && !endsCell(text[begin - 1])) --begin;
  std::size_t end = offset;
  while (end < text.size() && !endsCell(text[end])) ++end;
  return text.substr(begin, end - begin);
}

// At most kShown bytes of the cell, cut where no UTF-8 sequence continues.
std::string_view shown(std::string_view cell) {
  if (cell.size() <= kShown) return cell;
  std::size_t end = kShown;
  while (end > 0 && (static_cast<unsigned char>(cell[end]) & 0xC0) == 0x80) --end;
  return cell.substr(0, end);
}

// The line of offset, the text's first line being first, counted as
// CsvReader counts: a line ends in "\n", "\r\n" or a lone "\r".
std::string lineOf(std::string_view text, std::size_t offset, std::int64_t first) {
  std::int64_t line = first;
  for (std::size_t i = 0; i < offset; ++i) {
    if (text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'))) ++line;
  }
  return std::to_string(line);
}

// A Windows-1252 piece as UTF-8.
std::string asWindows1252(std::string_view bytes) {
  std::string out;
  appendUtf8(&out, bytes);
  return out;
}

}  // namespace

EncodingDoubt doubtEncoding(const std::string &file, std::string_view start, FileEncoding read,
                            std::int64_t firstLine) {
  EncodingDoubt doubt;
  std::size_t beyondAscii;
  std::size_t fault = utf8Fault(start, &beyondAscii);
  if (read == FileEncoding::kWindows1252 && fault == std::string_view::npos && beyondAscii != std::string_view::npos) {
    std::string_view cell = shown(cellAt(start, beyondAscii));
    doubt.message = file + " looks like UTF-8 (line " + lineOf(start, beyondAscii, firstLine) + " holds \"" +
                    std::string(cell) + "\"), but is read as Windows-1252, which makes that \"" + asWindows1252(cell) +
                    "\"";
    doubt.fits = "utf-8";
  } else if (read == FileEncoding::kUtf8 && fault != std::string_view::npos) {
    doubt.message = file + " is read as UTF-8, but line " + lineOf(start, fault, firstLine) +
                    " is no UTF-8 (as Windows-1252 it holds \"" + asWindows1252(shown(cellAt(start, fault))) + "\")";
    doubt.fits = "windows-1252";
  }
  return doubt;
}

}  // namespace host
}  // namespace quorel
