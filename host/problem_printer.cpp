#include "quorel/host/problem_printer.h"

#include <cstdio>

namespace quorel {
namespace host {

namespace {

// The code points of 0x80..0x9F in Windows-1252; 0 where the code page has
// no character (those bytes are written as U+FFFD).
const unsigned kHighControls[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void appendUtf8(std::string *out, unsigned code) {
  if (code < 0x80) {
    *out += static_cast<char>(code);
  } else if (code < 0x800) {
    *out += static_cast<char>(0xC0 | (code >> 6));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    *out += static_cast<char>(0xE0 | (code >> 12));
    *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

std::string fieldText(quorel::FieldDescriptor *field) { return field != nullptr ? field->getHierarchyText() : ""; }

}  // namespace

std::string toUtf8(const char *text) {
  std::string out;
  for (const char *p = text; p != nullptr && *p != '\0'; ++p) {
    auto byte = static_cast<unsigned char>(*p);
    unsigned code = byte;
    if (byte >= 0x80 && byte < 0xA0) code = kHighControls[byte - 0x80] != 0 ? kHighControls[byte - 0x80] : 0xFFFD;
    appendUtf8(&out, code);
  }
  return out;
}

std::string jsonString(const char *text) {
  if (text == nullptr) return "null";
  std::string out = "\"";
  for (char c : toUtf8(text)) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
          out += escaped;
        } else {
          out += c;
        }
    }
  }
  return out + "\"";
}

void ProblemPrinter::printRecord(int line, const quorel::PlausiContext &context) {
  for (std::int32_t i = 0; i < context.getNumOfProblems(); ++i) {
    const quorel::PlausiProblem &p = *context.getProblem(i);
    std::string field = fieldText(p.getReferenceField());
    if (json_) {
      out_ << "{\"line\":" << line << ",\"id\":" << jsonString(p.getId()) << ",\"type\":" << p.getType()
           << ",\"weight\":" << p.getWeight() << ",\"text\":" << jsonString(p.getShortDescription())
           << ",\"details\":" << jsonString(p.getLongDescription())
           << ",\"field\":" << (field.empty() ? "null" : jsonString(field.c_str())) << ",\"accessed\":[";
      for (std::int32_t f = 0; f < p.getNumOfAccessedFields(); ++f) {
        out_ << (f ? "," : "") << jsonString(fieldText(p.getAccessedField(f)).c_str());
      }
      out_ << "],\"sections\":[";
      for (std::int32_t s = 0; s < p.getNumOfPlausiSections(); ++s) {
        out_ << (s ? "," : "") << jsonString(p.getPlausiSection(s));
      }
      out_ << "]}\n";
      continue;
    }
    out_ << "Zeile " << line << ": " << (p.getType() == quorel::PROBLEM_ERROR ? "Fehler" : "Hinweis") << " "
         << toUtf8(p.getId()) << " (Gewicht " << p.getWeight() << "): " << toUtf8(p.getShortDescription()) << "\n";
    if (p.getLongDescription() != nullptr) out_ << "  " << toUtf8(p.getLongDescription()) << "\n";
    if (!field.empty()) out_ << "  Feld: " << toUtf8(field.c_str()) << "\n";
    if (p.getNumOfAccessedFields() > 0) {
      out_ << "  Gelesen:";
      for (std::int32_t f = 0; f < p.getNumOfAccessedFields(); ++f) {
        out_ << " " << toUtf8(fieldText(p.getAccessedField(f)).c_str());
      }
      out_ << "\n";
    }
    out_ << "  Abschnitte:";
    for (std::int32_t s = 0; s < p.getNumOfPlausiSections(); ++s) {
      out_ << (s ? " < " : " ") << toUtf8(p.getPlausiSection(s));
    }
    out_ << "\n";
  }
}

void ProblemPrinter::printFailure(int line, const std::string &message) {
  if (json_) {
    out_ << "{\"line\":" << line << ",\"failure\":" << jsonString(message.c_str()) << "}\n";
  } else {
    out_ << "Zeile " << line << ": nicht gepr\xC3\xBC" "ft: " << toUtf8(message.c_str()) << "\n";
  }
}

void ProblemPrinter::printSummary(int records, int failed, int problems, int errors) {
  if (json_) {
    out_ << "{\"summary\":{\"records\":" << records << ",\"failed\":" << failed << ",\"problems\":" << problems
         << ",\"errors\":" << errors << "}}\n";
  } else {
    out_ << records << " Datens\xC3\xA4" "tze gepr\xC3\xBC" "ft, " << problems << " Probleme, davon " << errors
         << " Fehler";
    if (failed > 0) out_ << ", " << failed << " nicht gepr\xC3\xBC" "ft";
    out_ << "\n";
  }
}

}  // namespace host
}  // namespace quorel
