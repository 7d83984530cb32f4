#include "quorel/host/problem_format.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <nlohmann/json.hpp>

#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

namespace {

void appendNumber(std::string *out, std::int64_t number) {
  char digits[24];
  auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out->append(digits, end);
}

void appendUtf8(std::string *out, const std::optional<std::string> &text) {
  if (text) host::appendUtf8(out, std::string_view(*text));
}

std::string counted(std::int64_t n, const char *one, const char *many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

void appendPlace(const Place &place, std::string *out) {
  *out += place.line > 0 ? "line " : "record ";
  appendNumber(out, place.line > 0 ? place.line : place.record);
  *out += ": ";
}

class TextFormat : public ProblemFormat {
 public:
  void appendRecord(const Place &place, const std::vector<Problem> &problems, std::string *out) const override {
    for (const Problem &p : problems) {
      appendPlace(place, out);
      // Type 2 is a hint by the bundled modules' convention; other types
      // are the module's own.
      if (p.type == PROBLEM_ERROR || p.type == 2) {
        *out += p.type == PROBLEM_ERROR ? "error " : "hint ";
      } else {
        *out += "type ";
        appendNumber(out, p.type);
        *out += ' ';
      }
      appendUtf8(out, p.id);
      *out += " (weight ";
      appendNumber(out, p.weight);
      *out += "): ";
      appendUtf8(out, p.text);
      *out += '\n';
      if (p.details) {
        *out += "  ";
        appendUtf8(out, p.details);
        *out += '\n';
      }
      if (!p.field.empty()) {
        *out += "  field: ";
        host::appendUtf8(out, std::string_view(p.field));
        *out += '\n';
      }
      if (!p.accessed.empty()) {
        *out += "  read:";
        for (const std::string &field : p.accessed) {
          *out += ' ';
          host::appendUtf8(out, std::string_view(field));
        }
        *out += '\n';
      }
      *out += "  sections:";
      for (std::size_t s = 0; s < p.sections.size(); ++s) {
        *out += s > 0 ? " < " : " ";
        host::appendUtf8(out, std::string_view(p.sections[s]));
      }
      *out += '\n';
    }
  }

  void appendFailure(const Place &place, const std::string &message, std::string *out) const override {
    appendPlace(place, out);
    *out += "not checked: ";
    host::appendUtf8(out, std::string_view(message));
    *out += '\n';
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
};

// JSON written directly: a check's output is mostly these lines, and a
// generic JSON value per line would cost more than the check. Texts are
// escaped as JSON requires; everything else passes as UTF-8.
class JsonLinesFormat : public ProblemFormat {
 public:
  void appendRecord(const Place &place, const std::vector<Problem> &problems, std::string *out) const override {
    for (const Problem &p : problems) {
      start(place, out);
      key(2, out);
      text(p.id, out);
      key(3, out);
      appendNumber(out, p.type);
      key(4, out);
      appendNumber(out, p.weight);
      key(5, out);
      text(p.text, out);
      key(6, out);
      text(p.details, out);
      key(7, out);
      if (p.field.empty()) {
        *out += "null";
      } else {
        string(p.field, out);
      }
      key(8, out);
      *out += '[';
      for (std::size_t i = 0; i < p.fieldIndices.size(); ++i) {
        if (i > 0) *out += ',';
        appendNumber(out, p.fieldIndices[i]);
      }
      *out += ']';
      key(9, out);
      texts(p.accessed, out);
      key(10, out);
      texts(p.sections, out);
      key(11, out);
      *out += "null}\n";
    }
  }

  void appendFailure(const Place &place, const std::string &message, std::string *out) const override {
    start(place, out);
    for (int column = 2; column < kProblemColumnCount - 1; ++column) {
      key(column, out);
      *out += column >= 8 ? "[]" : "null";  // field_indices, accessed, sections are lists
    }
    key(kProblemColumnCount - 1, out);
    string(message, out);
    *out += "}\n";
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
  // {"record":2,"line":3 (or null)
  static void start(const Place &place, std::string *out) {
    *out += '{';
    key(0, out);
    appendNumber(out, place.record);
    key(1, out);
    if (place.line > 0) {
      appendNumber(out, place.line);
    } else {
      *out += "null";
    }
  }
  // ,"name": for the column of kProblemColumns, without the comma first.
  static void key(int column, std::string *out) {
    static const std::vector<std::string> kKeys = [] {
      std::vector<std::string> keys;
      for (int i = 0; i < kProblemColumnCount; ++i) keys.push_back((i > 0 ? ",\"" : "\"") + std::string(kProblemColumns[i]) + "\":");
      return keys;
    }();
    *out += kKeys[static_cast<std::size_t>(column)];
  }
  // A Windows-1252 text as a JSON string of UTF-8. What needs no escape
  // goes over in runs.
  static void string(std::string_view text, std::string *out) {
    *out += '"';
    while (true) {
      std::size_t plain = plainRun(text);
      host::appendUtf8(out, text.substr(0, plain));
      if (plain == text.size()) break;
      escape(static_cast<unsigned char>(text[plain]), out);
      text.remove_prefix(plain + 1);
    }
    *out += '"';
  }
  // The length of the run that text begins with of bytes that JSON takes as
  // they are (once in UTF-8): all but controls, '"' and '\', looked at
  // eight bytes at a time.
  static std::size_t plainRun(std::string_view text) {
    constexpr std::uint64_t kOnes = 0x0101010101010101u, kHighBits = 0x8080808080808080u;
    // Whether a byte of the word is below n (n at most 0x80).
    auto below = [](std::uint64_t word, std::uint64_t n) { return (word - kOnes * n) & ~word & kHighBits; };
    std::size_t plain = 0;
    for (std::uint64_t word; plain + sizeof word <= text.size(); plain += sizeof word) {
      std::memcpy(&word, text.data() + plain, sizeof word);
      if ((below(word, 0x20) | below(word ^ (kOnes * '"'), 1) | below(word ^ (kOnes * '\\'), 1)) != 0) break;
    }
    for (; plain < text.size(); ++plain) {
      auto byte = static_cast<unsigned char>(text[plain]);
      if (byte < 0x20 || byte == '"' || byte == '\\') break;
    }
    return plain;
  }
  static void escape(unsigned char byte, std::string *out) {
    if (byte == '"' || byte == '\\') {
      *out += '\\';
      *out += static_cast<char>(byte);
      return;
    }
    static const char *const kShort[] = {"\\b", "\\t", "\\n", nullptr, "\\f", "\\r"};
    const char *shortForm = byte >= 8 && byte <= 13 ? kShort[byte - 8] : nullptr;
    if (shortForm != nullptr) {
      *out += shortForm;
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
      *out += escaped;
    }
  }
  static void text(const std::optional<std::string> &text, std::string *out) {
    if (text) {
      string(*text, out);
    } else {
      *out += "null";
    }
  }
  static void texts(const std::vector<std::string> &texts, std::string *out) {
    *out += '[';
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (i > 0) *out += ',';
      string(texts[i], out);
    }
    *out += ']';
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
