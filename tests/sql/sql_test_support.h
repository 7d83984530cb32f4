// Databases for the tests of the host kit's SQL layer: a fresh SQLite file
// per test, or the PostgreSQL server that tests/sql/with_postgresql.sh
// starts (its connection string in QUOREL_TEST_POSTGRESQL), whose tables each
// test drops and makes anew.

#ifndef QUOREL_TESTS_SQL_SQL_TEST_SUPPORT_H_
#define QUOREL_TESTS_SQL_SQL_TEST_SUPPORT_H_

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/host/sql/sql_connection.h"
#include "quorel/host/sql/sql_source.h"

namespace quorel {
namespace host {
namespace testing {

class TestDatabase {
 public:
  // "sqlite" or "postgresql"; skips the test when the server is not there.
  explicit TestDatabase(const std::string &backend) {
    if (backend == "sqlite") {
      char file[] = "/tmp/quorel-sql-test-XXXXXX";
      int fd = mkstemp(file);
      close(fd);
      file_ = file;
      url_ = "sqlite:" + file_;
    } else {
      const char *url = std::getenv("QUOREL_TEST_POSTGRESQL");
      if (url == nullptr) return;
      url_ = url;
    }
    std::string message;
    EXPECT_TRUE(SqlSource::parse(url_, &source_, &message)) << message;
    connection_ = SqlConnection::open(source_, true, &message);
    EXPECT_NE(nullptr, connection_) << message;
  }
  ~TestDatabase() {
    connection_.reset();
    if (file_.empty()) return;
    // A file in WAL mode that another process wrote last keeps its side
    // files after our connection closes.
    for (const char *suffix : {"", "-wal", "-shm", "-journal"}) std::remove((file_ + suffix).c_str());
  }

  bool available() const { return connection_ != nullptr; }
  // The connection string, with parameters appended ("table=T").
  std::string url(const std::string &parameters = "") const {
    if (parameters.empty()) return url_;
    return url_ + (url_.find('?') == std::string::npos ? "?" : "&") + parameters;
  }
  SqlConnection *connection() { return connection_.get(); }

  // Runs statements separated by ";\n"; fails the test on an error.
  void execute(const std::string &script) {
    std::string message;
    std::size_t begin = 0;
    while (begin < script.size()) {
      std::size_t end = script.find(";\n", begin);
      if (end == std::string::npos) end = script.size();
      std::string statement = script.substr(begin, end - begin);
      if (statement.find_first_not_of(" \n") != std::string::npos) {
        ASSERT_TRUE(connection_->execute(statement, &message)) << statement << ": " << message;
      }
      begin = end + 2;
    }
  }
  // Drops the table if it is there.
  void drop(const std::string &table) {
    std::string ignored;
    connection_->execute("DROP TABLE IF EXISTS " + quoteIdentifier(table), &ignored);
  }

 private:
  std::string file_, url_;
  SqlSource source_;
  std::unique_ptr<SqlConnection> connection_;
};

inline std::vector<std::string> backends() { return {"sqlite", "postgresql"}; }

#define QUOREL_NEED_DATABASE(db)                                                             \
  if (!(db).available()) {                                                                   \
    GTEST_SKIP() << "no PostgreSQL server: run through tests/sql/with_postgresql.sh (ctest " \
                    "runs it as SqlOnPostgresql)";                                           \
  }

}  // namespace testing
}  // namespace host
}  // namespace quorel

#endif  // QUOREL_TESTS_SQL_SQL_TEST_SUPPORT_H_
