#include "quorel/host/problem_format.h"

#include <charconv>

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

// Zeile 3: Fehler PER-02 (Gewicht 8): text, then indented lines for the
// details, the reference field, the fields read and the section trail.
class TextFormat : public ProblemFormat {
 public:
  void appendRecord(std::int64_t position, const std::vector<Problem> &problems, std::string *out) const override {
    for (const Problem &p : problems) {
      appendLine(position, out);
      *out += p.type == PROBLEM_ERROR ? "Fehler " : "Hinweis ";
      appendUtf8(out, p.id);
      *out += " (Gewicht ";
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
        *out += "  Feld: ";
        host::appendUtf8(out, std::string_view(p.field));
        *out += '\n';
      }
      if (!p.accessed.empty()) {
        *out += "  Gelesen:";
        for (const std::string &field : p.accessed) {
          *out += ' ';
          host::appendUtf8(out, std::string_view(field));
        }
        *out += '\n';
      }
      *out += "  Abschnitte:";
      for (std::size_t s = 0; s < p.sections.size(); ++s) {
        *out += s > 0 ? " < " : " ";
        host::appendUtf8(out, std::string_view(p.sections[s]));
      }
      *out += '\n';
    }
  }

  void appendFailure(std::int64_t position, const std::string &message, std::string *out) const override {
    appendLine(position, out);
    *out += "nicht gepr\xC3\xBC" "ft: ";
    host::appendUtf8(out, std::string_view(message));
    *out += '\n';
  }

  void appendSummary(const Summary &summary, std::string *out) const override {
    appendNumber(out, summary.records);
    *out += " Datens\xC3\xA4" "tze gepr\xC3\xBC" "ft, ";
    appendNumber(out, summary.problems);
    *out += " Probleme, davon ";
    appendNumber(out, summary.errors);
    *out += " Fehler";
    if (summary.failed > 0) {
      *out += ", ";
      appendNumber(out, summary.failed);
      *out += " nicht gepr\xC3\xBC" "ft";
    }
    *out += '\n';
  }

 private:
  static void appendLine(std::int64_t position, std::string *out) {
    *out += "Zeile ";
    appendNumber(out, position);
    *out += ": ";
  }
};

// One JSON object per line, keys in a fixed order.
class JsonLinesFormat : public ProblemFormat {
 public:
  using Json = nlohmann::ordered_json;

  void appendRecord(std::int64_t position, const std::vector<Problem> &problems, std::string *out) const override {
    for (const Problem &p : problems) {
      Json line;
      line["line"] = position;
      line["id"] = text(p.id);
      line["type"] = static_cast<int>(p.type);
      line["weight"] = p.weight;
      line["text"] = text(p.text);
      line["details"] = text(p.details);
      line["field"] = p.field.empty() ? Json() : Json(toUtf8(p.field.c_str()));
      line["accessed"] = texts(p.accessed);
      line["sections"] = texts(p.sections);
      append(line, out);
    }
  }

  void appendFailure(std::int64_t position, const std::string &message, std::string *out) const override {
    append(Json{{"line", position}, {"failure", toUtf8(message.c_str())}}, out);
  }

  void appendSummary(const Summary &summary, std::string *out) const override {
    Json counts{{"records", summary.records},
                {"failed", summary.failed},
                {"problems", summary.problems},
                {"errors", summary.errors}};
    append(Json{{"summary", counts}}, out);
  }

 private:
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

std::unique_ptr<ProblemFormat> ProblemFormat::create(const std::string &name) {
  if (name == "text") return std::make_unique<TextFormat>();
  if (name == "json") return std::make_unique<JsonLinesFormat>();
  return nullptr;
}

}  // namespace host
}  // namespace quorel
