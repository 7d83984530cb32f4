#include "quorel/host/csv_reader.h"

namespace quorel {
namespace host {

bool CsvReader::next(std::vector<std::string> *cells) {
  cells->clear();
  error_.clear();
  std::string line;
  if (!std::getline(in_, line)) return false;
  rowLine_ = nextLine_++;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  if (separator_ == '\0') {
    std::size_t semicolon = line.find(';');
    std::size_t comma = line.find(',');
    separator_ = comma < semicolon ? ',' : ';';
  }
  std::string cell;
  bool quoted = false;
  for (std::size_t i = 0;; ++i) {
    if (i == line.size()) {
      if (!quoted) break;
      // A quoted cell goes on on the next line.
      std::string more;
      if (!std::getline(in_, more)) {
        error_ = "Anf\xFC" "hrungszeichen nicht geschlossen";
        break;
      }
      ++nextLine_;
      if (!more.empty() && more.back() == '\r') more.pop_back();
      line += '\n';
      line += more;
    }
    char c = line[i];
    if (quoted) {
      if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
        cell += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        cell += c;
      }
    } else if (c == '"') {
      quoted = true;
    } else if (c == separator_) {
      cells->push_back(cell);
      cell.clear();
    } else {
      cell += c;
    }
  }
  cells->push_back(cell);
  return true;
}

}  // namespace host
}  // namespace quorel
