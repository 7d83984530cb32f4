#include "quorel/lang/diagnostics.h"

#include <algorithm>

#include "quorel/lang/encoding.h"

namespace quorel {
namespace lang {

namespace {

// Beyond this many errors a file is hardly the one its author meant; the
// rest would only bury the first ones.
constexpr std::size_t kMaxErrors = 100;

// The bytes of the first count characters of a UTF-8 line.
std::size_t bytesOf(const std::string &line, std::int32_t count) {
  std::size_t i = 0;
  for (std::int32_t c = 0; c < count && i < line.size(); ++c) {
    ++i;
    while (i < line.size() && (static_cast<unsigned char>(line[i]) & 0xC0) == 0x80) ++i;
  }
  return i;
}

}  // namespace

void Diagnostics::setSource(const std::string &file, const std::string &text) {
  file_ = file;
  lines_.clear();
  std::string utf8 = isValidUtf8(text) ? text : windows1252ToUtf8(text);
  std::size_t start = 0;
  while (start <= utf8.size()) {
    std::size_t end = utf8.find('\n', start);
    if (end == std::string::npos) end = utf8.size();
    std::string line = utf8.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines_.push_back(line);
    start = end + 1;
  }
}

void Diagnostics::error(Position pos, const std::string &message) {
  if (errors_.size() > kMaxErrors) return;
  if (errors_.size() == kMaxErrors) {
    errors_.push_back({pos, "too many errors; the rest of the file is not reported"});
    return;
  }
  errors_.push_back({pos, message});
}

std::string Diagnostics::format() const {
  std::vector<Diagnostic> sorted = errors_;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Diagnostic &a, const Diagnostic &b) {
    return a.pos.line != b.pos.line ? a.pos.line < b.pos.line : a.pos.column < b.pos.column;
  });
  std::string out;
  for (const Diagnostic &d : sorted) {
    if (d.pos.line < 1) {  // the file as a whole
      out += file_ + ": error: " + d.message + "\n";
      continue;
    }
    out += file_ + ":" + std::to_string(d.pos.line) + ":" + std::to_string(d.pos.column) + ": error: " +
           d.message + "\n";
    if (d.pos.line > static_cast<std::int32_t>(lines_.size())) continue;
    const std::string &line = lines_[static_cast<std::size_t>(d.pos.line - 1)];
    out += line + "\n";
    std::string caret;
    std::size_t before = bytesOf(line, d.pos.column - 1);
    std::int32_t shown = 0;
    for (std::size_t i = 0; i < before; ++i) {
      if ((static_cast<unsigned char>(line[i]) & 0xC0) == 0x80) continue;
      // Tabs stay tabs so that the caret lines up however they are shown.
      caret += line[i] == '\t' ? '\t' : ' ';
      ++shown;
    }
    for (; shown < d.pos.column - 1; ++shown) caret += ' ';
    out += caret + "^\n";
  }
  return out;
}

}  // namespace lang
}  // namespace quorel
