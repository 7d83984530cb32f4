#include "quorel/host/sql/sql_material_access.h"

#include "quorel/host/column_check.h"
#include "quorel/host/encoding.h"
#include "quorel/host/sql/sql_cells.h"
#include "quorel/host/sql/sql_connection.h"

namespace quorel {
namespace host {

namespace {

bool sameIgnoringCase(const std::string &a, const std::string &b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

// The position of the name among the columns: exactly, else ignoring case;
// -1 for none.
int find(const std::vector<std::string> &columns, const std::string &name) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] == name) return static_cast<int>(i);
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (sameIgnoringCase(columns[i], name)) return static_cast<int>(i);
  }
  return -1;
}

[[noreturn]] void fail(std::int32_t type, const std::string &message) {
  throw PlausiException(type, messageText(message).c_str());
}

const char *comparison(OperatorType op) {
  switch (op) {
    case OPERATOR_GREATER: return " > ";
    case OPERATOR_GREATER_EQUAL: return " >= ";
    case OPERATOR_LESS: return " < ";
    case OPERATOR_LESS_EQUAL: return " <= ";
    default: return nullptr;
  }
}

}  // namespace

struct SqlMaterialAccess::Database {
  SqlSource source;
};

struct SqlMaterialAccess::Material {
  std::string name;
  Database *database;
  std::string table;  // as named, for messages
  std::vector<std::string> columns;
  std::vector<std::string> numberTypes;  // of the columns (SqlStatement::numberType)
  std::vector<std::string> order;
  std::map<std::string, std::string> mapped;  // hierarchy text -> column
  std::string from;  // the quoted table and the ORDER BY, for statements
  std::string orderBy;

  // For messages (UTF-8); the name is the library's (Windows-1252).
  std::string where() const {
    return "material " + toUtf8(name.c_str()) + " (" + database->source.where() + ", table " + table + ")";
  }

  // The column of the field, or -1 when the table has none.
  int findColumnOf(FieldDescriptor *field) const {
    std::string hierarchy = field->getHierarchyText();
    auto it = mapped.find(hierarchy);
    if (it != mapped.end()) return find(columns, it->second);  // checked when added
    std::vector<std::string> candidates;
    if (const char *dataset = field->getTypeDescriptor()->getFieldNameDataset()) candidates.push_back(dataset);
    candidates.push_back(hierarchy);
    std::size_t dot = hierarchy.find('.');
    if (dot != std::string::npos) candidates.push_back(hierarchy.substr(dot + 1));
    for (const std::string &candidate : candidates) {
      int column = find(columns, candidate);
      if (column >= 0) return column;
    }
    return -1;
  }

  // The same, throwing when the table has none.
  int columnOf(FieldDescriptor *field) const {
    int column = findColumnOf(field);
    if (column < 0) {
      fail(EXCEPTION_MATERIAL_ACCESS,
           where() + ": no column for the field " + toUtf8(field->getHierarchyText().c_str()));
    }
    return column;
  }
};

// One thread's connections, statements and records.
struct SqlMaterialAccess::Session {
  struct Link {
    std::unique_ptr<SqlConnection> connection;
    std::unordered_map<std::string, std::unique_ptr<SqlStatement>> statements;
  };
  std::map<const Database *, Link> links;
  std::vector<std::unique_ptr<SimpleDataRecord>> records;

  // The thread's connection to the database, opened anew when it was lost.
  Link *link(const Database *database, std::string *message) {
    Link &link = links[database];
    if (link.connection != nullptr && link.connection->broken()) {
      link.statements.clear();
      link.connection.reset();
    }
    if (link.connection == nullptr) link.connection = SqlConnection::open(database->source, false, message);
    return link.connection != nullptr ? &link : nullptr;
  }
};

// One query: its conditions and wanted columns, which make the statement's
// shape, and the values bound.
struct SqlMaterialAccess::Query {
  struct Condition {
    int column;
    OperatorType op;
    bool text;  // ordered by bytes
  };
  bool exists = false;  // one row at most, no columns
  std::vector<Condition> conditions;
  std::vector<int> columns;
  std::vector<SqlParam> params;

  std::string key() const {
    std::string key(exists ? "e" : "r");
    for (const Condition &c : conditions) {
      key += std::to_string(c.column) + (c.text ? "t" : "") + "." + std::to_string(c.op) + ",";
    }
    key += ":";
    for (int column : columns) key += std::to_string(column) + ",";
    return key;
  }

  std::string sql(const Material &material, const SqlConnection &connection) const {
    std::string sql = "SELECT ";
    for (std::size_t i = 0; i < columns.size(); ++i) {
      sql += (i > 0 ? ", " : "") + quoteIdentifier(material.columns[columns[i]]);
    }
    if (columns.empty()) sql += "1";
    sql += " FROM " + material.from;
    int parameter = 0;
    for (std::size_t i = 0; i < conditions.size(); ++i) {
      const Condition &c = conditions[i];
      std::string column = quoteIdentifier(material.columns[c.column]);
      sql += i == 0 ? " WHERE " : " AND ";
      if (c.op == OPERATOR_EQUAL) {
        sql += column + " = " + connection.placeholder(++parameter);
      } else if (c.op == OPERATOR_NOT_EQUAL) {
        sql += "(" + column + " IS NULL OR " + column + " <> " + connection.placeholder(++parameter) + ")";
      } else if (const char *compare = comparison(c.op)) {
        if (c.text) column += std::string(" COLLATE ") + connection.byteCollation();
        sql += column + compare + connection.placeholder(++parameter);
      } else {
        sql += "1 = 0";
      }
    }
    sql += exists ? " LIMIT 1" : material.orderBy;
    return sql;
  }

  // Adds a condition on the field with the value bound in the field's type.
  void add(const Material &material, FieldDescriptor *field, OperatorType op, Value *value) {
    int column = material.columnOf(field);
    FieldType type = field->getTypeDescriptor()->getFieldType();
    bool text = type != FieldTypeInteger && type != FieldTypeReal && type != FieldTypeDate;
    conditions.push_back({column, op, text});
    if (comparison(op) == nullptr && op != OPERATOR_EQUAL && op != OPERATOR_NOT_EQUAL) return;
    if (value == nullptr || value->isNil() || !value->isValid()) {
      params.emplace_back();  // NULL: equal to nothing
      return;
    }
    try {
      switch (type) {
        case FieldTypeInteger: params.push_back(SqlParam::ofInteger(value->asInteger())); break;
        case FieldTypeReal: params.push_back(SqlParam::ofReal(value->asReal())); break;
        case FieldTypeDate: params.push_back(SqlParam::ofText(isoDate(*value->asDate()))); break;
        default: params.push_back(SqlParam::ofText(toUtf8(value->asString()))); break;
      }
    } catch (const PlausiException &e) {
      fail(e.getType(), material.where() + ", column " + material.columns[column] + ": " + toUtf8(e.getMessage()));
    }
  }
};

SqlMaterialAccess::SqlMaterialAccess() = default;

SqlMaterialAccess::~SqlMaterialAccess() = default;

bool SqlMaterialAccess::addMaterial(const std::string &name, const SqlSource &source, std::string *message) {
  // Messages are UTF-8; the name is the library's (Windows-1252).
  const std::string shown = "material " + toUtf8(name.c_str());
  if (!source.query.empty()) {
    *message = shown + ": a material is a table or view, not a query";
    return false;
  }
  Database *database = nullptr;
  for (const auto &known : databases_) {
    if (known->source.kind == source.kind && known->source.database == source.database) database = known.get();
  }
  if (database == nullptr) {
    databases_.push_back(std::make_unique<Database>(Database{source}));
    database = databases_.back().get();
  }
  auto material = std::make_unique<Material>();
  material->name = name;
  material->database = database;
  material->table = source.table.empty() ? name : source.table;
  SqlTable table;
  std::string error;
  Session::Link *link = session()->link(database, &error);
  bool described = link != nullptr && link->connection->describe(material->table, &table, &error);
  releaseRecords();
  if (!described) {
    *message = shown + " (" + source.where() + "): " + error;
    return false;
  }
  material->columns = table.columns;
  // The columns' types, as a statement on the table tells them.
  std::unique_ptr<SqlStatement> all = link->connection->prepare("SELECT * FROM " + quoteIdentifier(material->table),
                                                                  &error);
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    bool known = all != nullptr && static_cast<int>(i) < all->columnCount();
    material->numberTypes.push_back(known ? all->numberType(static_cast<int>(i)) : std::string());
  }
  all.reset();
  for (const auto &column : source.columns) {
    if (find(table.columns, column.second) < 0) {
      *message = shown + ": table " + material->table + " has no column " + column.second;
      return false;
    }
    material->mapped[column.first] = column.second;
  }
  material->from = quoteIdentifier(material->table);
  const std::vector<std::string> &order = source.order.empty() ? table.key : source.order;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (order[i] != "rowid" && find(table.columns, order[i]) < 0) {
      *message = shown + ": table " + material->table + " has no column " + order[i] + " to order by";
      return false;
    }
    material->orderBy += (i == 0 ? " ORDER BY " : ", ") + quoteIdentifier(order[i]);
  }
  materials_[name] = std::move(material);
  return true;
}

SqlMaterialAccess::Session *SqlMaterialAccess::session() {
  std::lock_guard<std::mutex> lock(mutex_);
  std::unique_ptr<Session> &session = active_[std::this_thread::get_id()];
  if (session == nullptr) {
    if (idle_.empty()) {
      session = std::make_unique<Session>();
    } else {
      session = std::move(idle_.back());
      idle_.pop_back();
    }
  }
  return session.get();
}

void SqlMaterialAccess::releaseRecords() {
  std::unique_ptr<Session> session;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = active_.find(std::this_thread::get_id());
    if (it == active_.end()) return;
    session = std::move(it->second);
    active_.erase(it);
  }
  session->records.clear();
  std::lock_guard<std::mutex> lock(mutex_);
  idle_.push_back(std::move(session));
}

SqlMaterialAccess::Material *SqlMaterialAccess::materialOf(MaterialDescriptor *material) const {
  const char *name = material->getMaterialName();
  auto it = materials_.find(name != nullptr ? name : "");
  return it == materials_.end() ? nullptr : it->second.get();
}

TableColumn SqlMaterialAccess::columnFor(const std::string &material, FieldDescriptor *field) const {
  TableColumn column;
  auto it = materials_.find(material);
  int at = it != materials_.end() ? it->second->findColumnOf(field) : -1;
  if (at < 0) return column;
  column.found = true;
  column.name = it->second->columns[static_cast<std::size_t>(at)];
  column.numberType = it->second->numberTypes[static_cast<std::size_t>(at)];
  return column;
}

bool SqlMaterialAccess::isMaterialAvailable(MaterialDescriptor *material) { return materialOf(material) != nullptr; }

SqlStatement *SqlMaterialAccess::run(Session *session, Material *material, const Query &query) {
  std::string message;
  Session::Link *link = session->link(material->database, &message);
  if (link == nullptr) fail(EXCEPTION_MATERIAL_ACCESS, material->where() + ": " + message);
  std::unique_ptr<SqlStatement> &statement = link->statements[query.key()];
  if (statement == nullptr) statement = link->connection->prepare(query.sql(*material, *link->connection), &message);
  if (statement == nullptr) {
    link->statements.erase(query.key());
    fail(EXCEPTION_MATERIAL_ACCESS, material->where() + ": " + message);
  }
  if (!statement->run(query.params, &message)) fail(EXCEPTION_MATERIAL_ACCESS, material->where() + ": " + message);
  return statement.get();
}

bool SqlMaterialAccess::containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                                       ValueSet *values) {
  Material *m = materialOf(material);
  if (m == nullptr) return false;
  Query query;
  query.exists = true;
  for (std::int32_t i = 0; i < filter->getNumOfConditions(); ++i) {
    FilterCondition *condition = filter->getCondition(i);
    query.add(*m, condition->getField(), condition->getOperatorType(), condition->getComparativeValue());
  }
  for (std::int32_t i = 0; i < fields->getNumOfFields() && i < values->getNumOfValues(); ++i) {
    query.add(*m, fields->getField(i), OPERATOR_EQUAL, values->getValue(i));
  }
  SqlStatement *statement = run(session(), m, query);
  std::string message;
  bool found = statement->next(&message);
  statement->finish();
  if (!message.empty()) fail(EXCEPTION_MATERIAL_ACCESS, m->where() + ": " + message);
  return found;
}

void SqlMaterialAccess::readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                                    FieldSet *fields) {
  Material *m = materialOf(material);
  if (m == nullptr) return;
  Query query;
  for (std::int32_t i = 0; i < filter->getNumOfConditions(); ++i) {
    FilterCondition *condition = filter->getCondition(i);
    query.add(*m, condition->getField(), condition->getOperatorType(), condition->getComparativeValue());
  }
  std::vector<std::string> names, dateMasks;
  for (std::int32_t i = 0; i < fields->getNumOfFields(); ++i) {
    FieldDescriptor *field = fields->getField(i);
    query.columns.push_back(m->columnOf(field));
    names.push_back(field->getHierarchyText());
    dateMasks.push_back(dateMaskOf(field));
  }
  Session *owner = session();
  SqlStatement *statement = run(owner, m, query);
  std::string message, cell;
  while (statement->next(&message)) {
    auto record = std::make_unique<SimpleDataRecord>();
    for (std::size_t i = 0; i < names.size(); ++i) {
      CellRead read = readCell(statement, static_cast<int>(i), m->table, &cell, &message, dateMasks[i]);
      if (read == CellRead::kFailed) {
        statement->finish();
        fail(EXCEPTION_MATERIAL_ACCESS, "material " + toUtf8(m->name.c_str()) + ": " + toUtf8(message.c_str()));
      }
      if (read == CellRead::kValue) record->setValue(names[i].c_str(), cell.c_str());
    }
    result->addDataRecord(record.get());
    owner->records.push_back(std::move(record));
  }
  if (!message.empty()) fail(EXCEPTION_MATERIAL_ACCESS, m->where() + ": " + message);
}

}  // namespace host
}  // namespace quorel
