#include "quorel/host/sql/sql_cells.h"

#include <charconv>
#include <cstdio>
#include <ctime>

#include <quorel/quorel.h>

#include "quorel/host/column_check.h"
#include "quorel/host/encoding.h"

namespace quorel {
namespace host {

namespace {

bool digits(std::string_view text) {
  for (char c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

// Whether the text is a date as databases write it: YYYY-MM-DD.
bool isIsoDate(std::string_view text) {
  return text.size() == 10 && text[4] == '-' && text[7] == '-' && digits(text.substr(0, 4)) &&
         digits(text.substr(5, 2)) && digits(text.substr(8, 2));
}

// Whether the time after a date is the day's start: " 00:00:00" or
// "T00:00:00", with or without a fraction of zeros.
bool midnight(std::string_view time) {
  if (time.size() < 9 || (time[0] != ' ' && time[0] != 'T') || time.substr(1, 8) != "00:00:00") return false;
  time.remove_prefix(9);
  if (time.empty()) return true;
  return time[0] == '.' && time.size() > 1 && time.find_first_not_of('0', 1) == std::string_view::npos;
}

std::string where(const std::string &table, SqlStatement *statement, int column) {
  return "table " + table + ", column " + statement->columnName(column);
}

}  // namespace

CellRead readCellUtf8(SqlStatement *statement, int column, const std::string &table, std::string *utf8,
                      std::string *message, const std::string &dateMask) {
  SqlCellKind kind = statement->kind(column);
  std::string_view raw = statement->text(column);
  utf8->clear();
  switch (kind) {
    case SqlCellKind::kNull: return CellRead::kEmpty;
    case SqlCellKind::kBinary:
      *message = where(table, statement, column) + ": binary data cannot be a field";
      return CellRead::kFailed;
    case SqlCellKind::kReal: {
      double number = 0.0;
      auto [end, fault] = std::from_chars(raw.data(), raw.data() + raw.size(), number);
      if (fault != std::errc() || end != raw.data() + raw.size()) break;  // NaN, Infinity: as written
      // The shortest text that reads back as the same number, with the
      // decimal comma that the library's numbers read.
      char text[400];
      auto written = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed);
      utf8->assign(text, written.ptr);
      std::size_t point = utf8->find('.');
      if (point != std::string::npos) (*utf8)[point] = ',';
      return CellRead::kValue;
    }
    case SqlCellKind::kDecimal:
      // Every digit as the server wrote it, with the decimal comma (NaN as written).
      utf8->assign(raw.data(), raw.size());
      if (std::size_t point = utf8->find('.'); point != std::string::npos) (*utf8)[point] = ',';
      return CellRead::kValue;
    case SqlCellKind::kTimestamp:
      // A date field takes a midnight as its date: nothing is lost.
      if (dateMask.empty() || raw.size() < 10 || !isIsoDate(raw.substr(0, 10)) || !midnight(raw.substr(10))) break;
      raw = raw.substr(0, 10);
      [[fallthrough]];
    case SqlCellKind::kDate:
      if (isIsoDate(raw)) {
        std::string german = std::string(raw.substr(8, 2)) + "." + std::string(raw.substr(5, 2)) + "." +
                             std::string(raw.substr(0, 4));
        *utf8 = toUtf8(dateUnderMask(german, dateMask).c_str());
        return CellRead::kValue;
      }
      break;
    case SqlCellKind::kBool:
      *utf8 = raw == "t" || raw == "true" || raw == "1" ? "WAHR" : "FALSCH";
      return CellRead::kValue;
    case SqlCellKind::kInteger:
    case SqlCellKind::kText: break;
  }
  utf8->assign(raw.data(), raw.size());
  return utf8->empty() ? CellRead::kEmpty : CellRead::kValue;
}

CellRead readCell(SqlStatement *statement, int column, const std::string &table, std::string *cell,
                  std::string *message, const std::string &dateMask) {
  std::string utf8;
  CellRead read = readCellUtf8(statement, column, table, &utf8, message, dateMask);
  if (read == CellRead::kFailed) {
    *message = messageText(*message);
    return read;
  }
  std::size_t offset = 0;
  if (read == CellRead::kValue && !fromUtf8(utf8, cell, &offset)) {
    *message = where(table, statement, column) + ": " + fromUtf8Fault(utf8, offset) + ": " + messageText(utf8);
    *message = messageText(*message);
    return CellRead::kFailed;
  }
  if (read == CellRead::kEmpty) cell->clear();
  return read;
}

std::string isoDate(const std::tm &date) {
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", date.tm_year + 1900, date.tm_mon + 1, date.tm_mday);
  return text;
}

}  // namespace host
}  // namespace quorel
