#include "quorel/host/problem_format.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

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
      *out += p.type == PROBLEM_ERROR ? "error " : "hint ";
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

class JsonLinesFormat : public ProblemFormat {
 public:
  using Json = nlohmann::ordered_json;

  void appendRecord(const Place &place, const std::vector<Problem> &problems, std::string *out) const override {
    for (const Problem &p : problems) {
      Json line = start(place);
      line[kProblemColumns[2]] = text(p.id);
      line[kProblemColumns[3]] = static_cast<int>(p.type);
      line[kProblemColumns[4]] = p.weight;
      line[kProblemColumns[5]] = text(p.text);
      line[kProblemColumns[6]] = text(p.details);
      line[kProblemColumns[7]] = p.field.empty() ? Json() : Json(toUtf8(p.field.c_str()));
      line[kProblemColumns[8]] = p.fieldIndices;
      line[kProblemColumns[9]] = texts(p.accessed);
      line[kProblemColumns[10]] = texts(p.sections);
      line[kProblemColumns[11]] = Json();
      append(line, out);
    }
  }

  void appendFailure(const Place &place, const std::string &message, std::string *out) const override {
    Json line = start(place);
    for (int column = 2; column < kProblemColumnCount - 1; ++column) {
      bool list = column >= 8;  // field_indices, accessed, sections
      line[kProblemColumns[column]] = list ? Json::array() : Json();
    }
    line[kProblemColumns[11]] = toUtf8(message.c_str());
    append(line, out);
  }

  void appendSummary(const Summary &summary, std::string *out) const override {
    Json counts{{"records", summary.records},
                {"checked", summary.checked()},
                {"not_checked", summary.notChecked},
                {"problems", summary.problems},
                {"errors", summary.errors}};
    append(Json{{"summary", counts}}, out);
  }

 private:
  static Json start(const Place &place) {
    Json line;
    line[kProblemColumns[0]] = place.record;
    line[kProblemColumns[1]] = place.line > 0 ? Json(place.line) : Json();
    return line;
  }
  static Json text(const std::optional<std::string> &text) { return text ? Json(toUtf8(text->c_str())) : Json(); }
  static Json texts(const std::vector<std::string> &texts) {
    Json list = Json::array();
    for (const std::string &text : texts) list.push_back(toUtf8(text.c_str()));
    return list;
  }
  static void append(const Json &line, std::string *out) {
    *out += line.dump();
    *out += '\n';
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
