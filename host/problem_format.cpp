#include "quorel/host/problem_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <nlohmann/json.hpp>

#include "quorel/host/byte_words.h"
#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

namespace {

// Writes pieces at the end of a string through a pointer. The string is
// grown a step ahead of what is written, so that a piece costs a comparison
// rather than a call into the string; it is given its written length when
// the appender goes.
class Appender {
 public:
  explicit Appender(std::string *out) : out_(out), at_(out->data() + out->size()), end_(at_) {}
  ~Appender() { out_->resize(static_cast<std::size_t>(at_ - out_->data())); }

  Appender(const Appender &) = delete;
  Appender &operator=(const Appender &) = delete;

  void put(char c) {
    room(1);
    *at_++ = c;
  }
  void put(std::string_view text) {
    room(text.size());
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }
  void number(std::int64_t number) {
    room(kDigits);
    at_ = std::to_chars(at_, at_ + kDigits, number).ptr;
  }
  // A Windows-1252 text as UTF-8.
  void utf8(std::string_view text) {
    room(kUtf8Growth * text.size());
    at_ = writeUtf8(at_, text);
  }
  void utf8(std::optional<std::string_view> text) {
    if (text) utf8(*text);
  }
  // Room for n bytes at the end, to write through at() and then
  // wrote(end).
  char *reserve(std::size_t n) {
    room(n);
    return at_;
  }
  void wrote(char *end) { at_ = end; }
  // The bytes written so far, the string's own included.
  std::size_t size() const { return static_cast<std::size_t>(at_ - out_->data()); }
  // The n bytes from offset from on once more.
  void again(std::size_t from, std::size_t n) {
    room(n);
    std::memcpy(at_, out_->data() + from, n);
    at_ += n;
  }

 private:
  static constexpr std::size_t kDigits = 20;  // of a 64-bit number and its sign
  static constexpr std::size_t kAhead = 1024;

  void room(std::size_t n) {
    if (static_cast<std::size_t>(end_ - at_) < n) grow(n);
  }
  void grow(std::size_t n) {
    std::size_t written = static_cast<std::size_t>(at_ - out_->data());
    out_->resize(written + n + kAhead);
    at_ = out_->data() + written;
    end_ = out_->data() + out_->size();
  }

  std::string *out_;
  char *at_;
  char *end_;
};

// What each problem of a record begins with, the same for all: written
// for the first, copied for the others.
class Repeated {
 public:
  template <typename Write>
  void put(Appender *out, Write write) {
    if (size_ > 0) return out->again(from_, size_);
    from_ = out->size();
    write();
    size_ = out->size() - from_;
  }

 private:
  std::size_t from_ = 0;
  std::size_t size_ = 0;
};

// A field's text as UTF-8, the form that a problem read in place keeps.
void utf8Form(std::string *out, std::string_view text) { appendUtf8(out, text); }

std::string counted(std::int64_t n, const char *one, const char *many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

void appendPlace(const Place &place, Appender *out) {
  out->put(place.line > 0 ? "line " : "record ");
  out->number(place.line > 0 ? place.line : place.record);
  out->put(": ");
}

class TextFormat : public ProblemFormat {
 public:
  void appendRecord(const Place &place, const std::vector<Problem> &problems, std::string *text) const override {
    append(place, StoredProblems(problems), text);
  }
  void appendRecord(const Place &place, const FoundProblems &problems, std::string *text) const override {
    append(place, problems, text);
  }

  void appendFailure(const Place &place, const std::string &message, std::string *text) const override {
    Appender out(text);
    appendPlace(place, &out);
    out.put("not checked: ");
    out.utf8(std::string_view(message));
    out.put('\n');
  }

  // The table of ids first, so that the counts stay the last line.
  void appendSummary(const Summary &summary, std::string *out) const override {
    auto ids = summary.byId();
    if (!ids.empty()) {
      std::vector<std::string> names;
      int width = 7;  // "problem", "(no id)"
      for (const auto &entry : ids) {
        names.push_back(entry.first.empty() ? "(no id)" : toUtf8(entry.first.c_str()));
        width = std::max(width, static_cast<int>(names.back().size()));
      }
      char line[160];
      std::snprintf(line, sizeof line, "\n%-*s  %9s %9s %6s\n", width, "problem", "problems", "records", "share");
      *out += line;
      for (std::size_t i = 0; i < ids.size(); ++i) {
        const Summary::IdCounts &counts = ids[i].second;
        *out += names[i] + std::string(static_cast<std::size_t>(width) - names[i].size(), ' ');
        std::snprintf(line, sizeof line, "  %9lld %9lld %5.1f%%\n", static_cast<long long>(counts.problems),
                      static_cast<long long>(counts.records),
                      100.0 * static_cast<double>(counts.records) / static_cast<double>(summary.records));
        *out += line;
      }
    }
    *out += countsText(summary);
    *out += '\n';
  }

 private:
  template <typename Problems>
  static void append(const Place &place, const Problems &problems, std::string *text) {
    Appender out(text);
    Repeated placed;
    for (std::size_t i = 0; i < problems.size(); ++i) {
      const auto p = problems[i];
      placed.put(&out, [&] { appendPlace(place, &out); });
      // Type 2 is a hint by the bundled modules' convention; other types
      // are the module's own.
      ProblemType type = p.type();
      if (type == PROBLEM_ERROR || type == 2) {
        out.put(type == PROBLEM_ERROR ? "error " : "hint ");
      } else {
        out.put("type ");
        out.number(type);
        out.put(' ');
      }
      out.utf8(p.id());
      out.put(" (weight ");
      out.number(p.weight());
      out.put("): ");
      out.utf8(p.text());
      out.put('\n');
      if (std::optional<std::string_view> details = p.details()) {
        out.put("  ");
        out.utf8(*details);
        out.put('\n');
      }
      if (!p.field().empty()) {
        out.put("  field: ");
        out.put(p.field(utf8Form));
        out.put('\n');
      }
      if (p.accessedCount() > 0) {
        out.put("  read:");
        for (std::size_t f = 0; f < p.accessedCount(); ++f) {
          out.put(' ');
          out.put(p.accessed(f, utf8Form));
        }
        out.put('\n');
      }
      out.put("  sections:");
      for (std::size_t s = 0; s < p.sectionCount(); ++s) {
        out.put(s > 0 ? " < " : " ");
        out.utf8(p.section(s));
      }
      out.put('\n');
    }
  }
};

// JSON written directly: a check's output is mostly these lines, and a
// generic JSON value per line would cost more than the check. Texts are
// escaped as JSON requires; everything else passes as UTF-8.
class JsonLinesFormat : public ProblemFormat {
 public:
  JsonLinesFormat() {
    for (int i = 0; i < kProblemColumnCount; ++i) {
      keys_[static_cast<std::size_t>(i)] = (i > 0 ? ",\"" : "\"") + std::string(kProblemColumns[i]) + "\":";
    }
  }

  void appendRecord(const Place &place, const std::vector<Problem> &problems, std::string *text) const override {
    append(place, StoredProblems(problems), text);
  }
  void appendRecord(const Place &place, const FoundProblems &problems, std::string *text) const override {
    append(place, problems, text);
  }

  void appendFailure(const Place &place, const std::string &message, std::string *text) const override {
    Appender out(text);
    start(place, &out);
    for (int column = 2; column < kProblemColumnCount - 1; ++column) {
      key(column, &out);
      out.put(column >= 8 ? "[]" : "null");  // field_indices, accessed, sections are lists
    }
    key(kProblemColumnCount - 1, &out);
    string(std::string_view(message), &out);
    out.put("}\n");
  }

  void appendSummary(const Summary &summary, std::string *out) const override {
    nlohmann::ordered_json counts{{"records", summary.records},
                                  {"checked", summary.checked()},
                                  {"not_checked", summary.notChecked},
                                  {"problems", summary.problems},
                                  {"errors", summary.errors}};
    *out += nlohmann::ordered_json{{"summary", counts}}.dump();
    *out += '\n';
  }

 private:
  // At most "\u001f" for a byte.
  static constexpr std::size_t kEscapedGrowth = 6;

  std::array<std::string, kProblemColumnCount> keys_;

  template <typename Problems>
  void append(const Place &place, const Problems &problems, std::string *text) const {
    Appender out(text);
    Repeated started;
    for (std::size_t i = 0; i < problems.size(); ++i) {
      const auto p = problems[i];
      started.put(&out, [&] { start(place, &out); });
      key(2, &out);
      nullable(p.id(), &out);
      key(3, &out);
      out.number(p.type());
      key(4, &out);
      out.number(p.weight());
      key(5, &out);
      nullable(p.text(), &out);
      key(6, &out);
      nullable(p.details(), &out);
      key(7, &out);
      if (p.field().empty()) {
        out.put("null");
      } else {
        out.put(p.field(stringForm));
      }
      key(8, &out);
      out.put('[');
      for (std::size_t k = 0; k < p.indexCount(); ++k) {
        if (k > 0) out.put(',');
        out.number(p.index(k));
      }
      out.put(']');
      key(9, &out);
      list(p.accessedCount(), [&p, &out](std::size_t f) { out.put(p.accessed(f, stringForm)); }, &out);
      key(10, &out);
      list(p.sectionCount(), [&p, &out](std::size_t s) { string(p.section(s), &out); }, &out);
      key(11, &out);
      out.put("null}\n");
    }
  }

  // {"record":2,"line":3 (or null)
  void start(const Place &place, Appender *out) const {
    out->put('{');
    key(0, out);
    out->number(place.record);
    key(1, out);
    if (place.line > 0) {
      out->number(place.line);
    } else {
      out->put("null");
    }
  }
  // ,"name": for the column of kProblemColumns, without the comma first.
  void key(int column, Appender *out) const { out->put(keys_[static_cast<std::size_t>(column)]); }
  // A Windows-1252 text as a JSON string of UTF-8. Bytes that need neither
  // an escape nor conversion go over a word at a time.
  static void string(std::string_view text, Appender *out) {
    static_assert(kEscapedGrowth >= kUtf8Growth, "an escaped byte takes the most room");
    char *at = out->reserve(kEscapedGrowth * text.size() + 2);
    *at++ = '"';
    at = words::copyUnmarked(
        at, text,
        [](std::uint64_t word) {
          return (word & words::kHighBits) | words::bytesBelow(word, 0x20) | words::firstBytesOf(word, '"') |
                 words::firstBytesOf(word, '\\');
        },
        [](char *to, unsigned char byte) { return byte >= 0x80 ? writeUtf8Byte(to, byte) : escape(byte, to); });
    *at++ = '"';
    out->wrote(at);
  }
  // A control, '"' or '\' escaped at `at`; the end of it.
  static char *escape(unsigned char byte, char *at) {
    static const char kShort[] = "btn\0fr";  // for 8 to 13, none for 11
    *at++ = '\\';
    if (byte == '"' || byte == '\\') {
      *at++ = static_cast<char>(byte);
    } else if (byte >= 8 && byte <= 13 && byte != 11) {
      *at++ = kShort[byte - 8];
    } else {
      static const char kHex[] = "0123456789abcdef";
      std::memcpy(at, "u00", 3);
      at[3] = kHex[byte >> 4];
      at[4] = kHex[byte & 0xF];
      at += 5;
    }
    return at;
  }
  // A list of count entries, each written by put(i).
  template <typename Put>
  static void list(std::size_t count, Put put, Appender *out) {
    out->put('[');
    for (std::size_t i = 0; i < count; ++i) {
      if (i > 0) out->put(',');
      put(i);
    }
    out->put(']');
  }
  // A field's text as a JSON string, the form that a problem read in place
  // keeps.
  static void stringForm(std::string *out, std::string_view text) {
    Appender appender(out);
    string(text, &appender);
  }
  // A text or null.
  static void nullable(std::optional<std::string_view> text, Appender *out) {
    if (text) {
      string(*text, out);
    } else {
      out->put("null");
    }
  }
};

}  // namespace

std::string countsText(const Summary &summary) {
  return counted(summary.records, "record", "records") + ": " + std::to_string(summary.checked()) + " checked, " +
         std::to_string(summary.notChecked) + " not checked; " + counted(summary.problems, "problem", "problems") +
         ", " + counted(summary.errors, "error", "errors");
}

std::unique_ptr<ProblemFormat> ProblemFormat::create(const std::string &name) {
  if (name == "text") return std::make_unique<TextFormat>();
  if (name == "json") return std::make_unique<JsonLinesFormat>();
  return nullptr;
}

}  // namespace host
}  // namespace quorel
