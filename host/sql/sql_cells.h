// How the cells of database rows become the cells of the host kit's tables,
// the same text a CSV file would carry for the value, so that rules see the
// same fields whichever source a table came from:
//   NULL and the empty text   an empty field
//   whole number              its digits (-12)
//   real number               the shortest exact decimal, with a comma (2800,5)
//   decimal (numeric)         every digit as stored, with a comma (0,10)
//   date (ISO YYYY-MM-DD)     TT.MM.JJJJ, or the text of the date under the
//                             date mask of the cell's field when one is
//                             given (see ColumnCheck::dateMask); a text in a
//                             DATE column that is no ISO date stays as it
//                             is, for the rules to judge
//   date and time             as written (2024-01-31 10:15:00); for a date
//                             field (a date mask given) a midnight is the
//                             date alone, as above
//   truth value               WAHR or FALSCH
//   text                      itself, in Windows-1252
//   binary                    no field: an error

#ifndef QUOREL_HOST_SQL_SQL_CELLS_H_
#define QUOREL_HOST_SQL_SQL_CELLS_H_

#include <string>
#include <string_view>
#include <ctime>

#include "quorel/host/sql/sql_connection.h"

namespace quorel {
namespace host {

enum class CellRead { kEmpty, kValue, kFailed };

// The cell of the statement's current row as UTF-8 text in *utf8. kFailed
// with a message (UTF-8) naming the column of the table for a binary cell.
CellRead readCellUtf8(SqlStatement *statement, int column, const std::string &table, std::string *utf8,
                      std::string *message, const std::string &dateMask = std::string());
// The same in Windows-1252; a text with a character that Windows-1252 lacks,
// or with bytes that are no UTF-8 (which SQLite keeps as given), fails too. The message is Windows-1252, as library texts are.
CellRead readCell(SqlStatement *statement, int column, const std::string &table, std::string *cell,
                  std::string *message, const std::string &dateMask = std::string());


// A date as ISO text (YYYY-MM-DD), the form databases compare.
std::string isoDate(const std::tm &date);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_SQL_SQL_CELLS_H_
