#include "quorel/host/sql/sql_row_source.h"

#include <limits>

#include "quorel/host/column_check.h"
#include "quorel/host/encoding.h"
#include "quorel/host/sql/sql_cells.h"
#include "quorel/host/sql/sql_connection.h"

namespace quorel {
namespace host {

namespace {

// " ORDER BY" the columns, or "" for none.
std::string orderBy(const std::vector<std::string> &order) {
  std::string sql;
  for (std::size_t i = 0; i < order.size(); ++i) sql += (i == 0 ? " ORDER BY " : ", ") + quoteIdentifier(order[i]);
  return sql;
}

// The SELECT of the source's rows, its columns checked; empty with a message
// when the table or an order column is missing. A slice of the rows needs
// an order that gives the rows the same places in every statement: without
// one, a database may hand each slice its rows in another order, and rows
// go missing or come twice.
std::string selectOf(const SqlSource &source, SqlConnection *connection, bool slice, std::string *message) {
  if (!source.query.empty()) {
    if (slice && source.order.empty()) {
      *message = "the rows of a query are read in slices only in a stable order: name the columns that order "
                 "them uniquely with order=A,B";
      return std::string();
    }
    return source.order.empty() ? source.query
                                : "SELECT * FROM (" + source.query + ") AS quorel_query" + orderBy(source.order);
  }
  if (source.table.empty()) {
    *message = "no table or query in " + source.where() + " (add ?table=NAME or ?query=SELECT...)";
    return std::string();
  }
  SqlTable table;
  if (!connection->describe(source.table, &table, message)) return std::string();
  std::string sql = "SELECT * FROM " + quoteIdentifier(source.table);
  const std::vector<std::string> &order = source.order.empty() ? table.key : source.order;
  if (slice && order.empty()) {
    *message = "table " + source.table + " has no primary key, so its rows have no stable order to be read in "
               "slices: name the columns that order them uniquely with order=A,B";
    return std::string();
  }
  for (const std::string &column : order) {
    bool known = column == "rowid";
    for (const std::string &c : table.columns) known = known || c == column;
    if (!known) {
      *message = "table " + source.table + " has no column " + column + " to order by";
      return std::string();
    }
  }
  return sql + orderBy(order);
}

}  // namespace

SqlRowSource::~SqlRowSource() {
  statement_.reset();  // before its connection
}

std::unique_ptr<SqlRowSource> SqlRowSource::open(const SqlSource &source, std::string *message,
                                                 const SqlReadOptions &options) {
  std::unique_ptr<SqlRowSource> rows(new SqlRowSource());
  rows->connection_ = SqlConnection::open(source, false, message);
  if (rows->connection_ == nullptr) return nullptr;
  std::string error;
  const bool slice = options.limit >= 0 || options.offset > 0;
  std::string sql = selectOf(source, rows->connection_.get(), slice, &error);
  std::vector<SqlParam> params;
  if (!sql.empty() && slice) {
    SqlConnection &c = *rows->connection_;
    sql = "SELECT * FROM (" + sql + ") AS quorel_rows LIMIT " + c.placeholder(1) + " OFFSET " + c.placeholder(2);
    params = {SqlParam::ofInteger(options.limit < 0 ? std::numeric_limits<std::int64_t>::max() : options.limit), SqlParam::ofInteger(options.offset)};
  }
  if (!sql.empty()) rows->statement_ = rows->connection_->prepare(sql, &error);
  if (rows->statement_ == nullptr || !rows->statement_->run(params, &error)) {
    *message = "cannot read " + source.where() + ": " + error;
    return nullptr;
  }
  for (int i = 0; i < rows->statement_->columnCount(); ++i) {
    const std::string &name = rows->statement_->columnName(i);
    rows->columns_.push_back(options.utf8 ? name : messageText(name));
    rows->numberTypes_.push_back(options.utf8 ? rows->statement_->numberType(i)
                                              : messageText(rows->statement_->numberType(i)));
  }
  rows->dateMasks_.resize(rows->columns_.size());
  rows->table_ = source.table.empty() ? "(query)" : source.table;
  rows->name_ = source.where() + (source.table.empty() ? "" : "?table=" + source.table);
  rows->utf8_ = options.utf8;
  return rows;
}

bool SqlRowSource::count(const SqlSource &source, std::int64_t *count, std::string *message) {
  auto connection = SqlConnection::open(source, false, message);
  if (connection == nullptr) return false;
  std::string error;
  std::string sql = selectOf(source, connection.get(), false, &error);
  std::unique_ptr<SqlStatement> statement;
  if (!sql.empty()) statement = connection->prepare("SELECT count(*) FROM (" + sql + ") AS quorel_rows", &error);
  if (statement == nullptr || !statement->run({}, &error) || !statement->next(&error)) {
    *message = "cannot count the rows of " + source.where() + ": " + error;
    return false;
  }
  *count = std::stoll(std::string(statement->text(0)));
  statement->finish();
  return true;
}

bool SqlRowSource::next(Row *row) {
  if (ended_) return false;
  row->error.clear();
  row->place = {++read_, 0};
  std::string failure;
  if (!statement_->next(&failure)) {
    ended_ = true;
    if (failure.empty()) return false;
    failed_ = true;
    row->cells.clear();
    row->error = messageText("read error after record " + std::to_string(read_ - 1) + ": " + failure);
    return true;
  }
  row->cells.resize(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::string message;
    int column = static_cast<int>(i);
    const std::string &mask = dateMasks_[i];
    CellRead read = utf8_ ? readCellUtf8(statement_.get(), column, table_, &row->cells[i], &message, mask)
                          : readCell(statement_.get(), column, table_, &row->cells[i], &message, mask);
    if (read == CellRead::kFailed && row->error.empty()) row->error = message;
  }
  return true;
}

void SqlRowSource::giveDatesAsFieldsHoldThem(Plausi *plausi) {
  ColumnCheck fields(plausi);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    dateMasks_[i] = fields.dateMask(utf8_ ? messageText(columns_[i]) : columns_[i]);
  }
}

std::vector<std::string> numberColumnsForTexts(const SqlRowSource &rows, Plausi *plausi) {
  std::vector<std::string> warnings;
  std::unique_ptr<ColumnCheck> check;  // made for the first column of numbers
  for (std::size_t i = 0; i < rows.columns().size(); ++i) {
    if (rows.numberTypes()[i].empty()) continue;
    if (check == nullptr) check = std::make_unique<ColumnCheck>(plausi);
    if (check->readsText(rows.columns()[i])) {
      warnings.push_back(numbersInDatabase(rows.columns()[i], rows.numberTypes()[i]));
    }
  }
  return warnings;
}

}  // namespace host
}  // namespace quorel
