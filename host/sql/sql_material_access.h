// SqlMaterialAccess: materials that are tables or views of databases (SQLite
// files, PostgreSQL servers), queried where they lie.
//
// A material is the table that the host names for it, or the table of the
// material's own name. Each field of a query is a column: the one the host
// names for the field's hierarchy text, else the first of these that the
// table has (exactly, else ignoring ASCII case): the field's name in the
// data source (from the rule module's mapping), its hierarchy text
// (Gemeinden.PLZ), its hierarchy text below the material (PLZ).
//
// A filter becomes one parameterised WHERE clause, each condition compared
// in the database: 0 equal, 1 not equal (an empty cell, NULL, counts as not
// equal), 2 greater, 3 greater or equal, 4 less, 5 less or equal; another
// number holds for no row. The condition's value is bound in the type of the
// field: a text (Windows-1252 turned UTF-8), a whole number, a real, a date
// as ISO text; texts are ordered by their bytes. Names are quoted as
// identifiers; values never enter the SQL text. containsValues runs one
// query that stops at the first row; readRecords reads the rows in the order
// the host names, else in the order of the primary key (SQLite: of the
// rowid). Statements are prepared once per connection and query shape.
//
// Threads: queries may come from several threads at once; each thread that
// runs a query works on a session of its own (a connection per database and
// its statements), taken from a pool. The records of a query live until the
// thread that asked calls releaseRecords, which a host does after each run;
// that also gives the session back to the pool. addMaterial is not safe
// alongside queries.
//
// Failures during a run (a lost connection, a missing column, a cell that
// cannot be a field, a value that does not convert to the field's type)
// throw a PlausiException of type EXCEPTION_MATERIAL_ACCESS (or the
// conversion's own type) naming the material, the table and the column. A
// lost connection is opened anew at the thread's next query.

#ifndef QUOREL_HOST_SQL_SQL_MATERIAL_ACCESS_H_
#define QUOREL_HOST_SQL_SQL_MATERIAL_ACCESS_H_

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include <quorel/quorel.h>

#include "quorel/host/material_check.h"
#include "quorel/host/sql/sql_source.h"

namespace quorel {
namespace host {

class SqlStatement;

class SqlMaterialAccess : public MaterialAccess {
 public:
  SqlMaterialAccess();
  ~SqlMaterialAccess();

  SqlMaterialAccess(const SqlMaterialAccess &) = delete;
  SqlMaterialAccess &operator=(const SqlMaterialAccess &) = delete;

  // Makes the source's table the material of that name (its table parameter,
  // or the name when it has none). Opens the database and reads the table's
  // columns now: false with a message (UTF-8) when it cannot be opened, has
  // no such table, or lacks a column that the source names.
  bool addMaterial(const std::string &name, const SqlSource &source, std::string *message);
  // The column of the table of the material added under that name for the
  // field, found as a query finds it; none for a material not added. For
  // the check at start-up (see checkMaterialFields).
  TableColumn columnFor(const std::string &material, FieldDescriptor *field) const;
  // Releases the records that the calling thread's queries handed out and
  // gives its session back. Call on the run's thread once the run is over.
  void releaseRecords();

  bool isMaterialAvailable(MaterialDescriptor *material) override;
  bool containsValues(MaterialDescriptor *material, RecordFilter *filter, FieldSet *fields,
                      ValueSet *values) override;
  void readRecords(DataRecordSet *result, MaterialDescriptor *material, RecordFilter *filter,
                   FieldSet *fields) override;

 private:
  struct Database;
  struct Material;
  struct Session;
  struct Query;

  Material *materialOf(MaterialDescriptor *material) const;
  // The calling thread's session.
  Session *session();
  // Runs the query on the thread's session; the statement then stands on
  // its first row (or past the end). Throws a PlausiException on failure.
  SqlStatement *run(Session *session, Material *material, const Query &query);

  std::vector<std::unique_ptr<Database>> databases_;
  std::map<std::string, std::unique_ptr<Material>> materials_;
  std::mutex mutex_;  // guards the sessions
  std::unordered_map<std::thread::id, std::unique_ptr<Session>> active_;
  std::vector<std::unique_ptr<Session>> idle_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_SQL_SQL_MATERIAL_ACCESS_H_
