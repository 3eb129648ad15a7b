#include "store/Savepoint.h"

#include <string>

#include "store/StoreConnection.h"

namespace tarvo::store {
namespace {

int openSavepoints = 0;

// While a savepoint is open, no statement may run on its own (autocommit)
// once SQLite has rolled the transaction back.
int refuseOutsideTransaction(void* connection, int, const char*, const char*,
                             const char*, const char*) {
  return openSavepoints > 0 &&
                 sqlite3_get_autocommit(static_cast<sqlite3*>(connection)) != 0
             ? SQLITE_DENY
             : SQLITE_OK;
}

// Installed once per connection: installing an authorizer expires every
// prepared statement of the connection, and the store keeps all of its
// statements, so doing it per savepoint would cost more with every write.
void guardConnection(sqlite3* connection) {
  static sqlite3* guarded = nullptr;
  if (guarded == connection) return;
  sqlite3_set_authorizer(connection, refuseOutsideTransaction, connection);
  guarded = connection;
}

bool execute(sqlite3* connection, const std::string& sql) {
  return sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) ==
         SQLITE_OK;
}

}  // namespace

Savepoint::Savepoint(const char* name) : name_(name) {
  sqlite3* connection = sharedConnection();
  if (connection == nullptr) return;
  // A nested savepoint needs the outer transaction to be alive.
  if (openSavepoints > 0 && sqlite3_get_autocommit(connection) != 0) return;
  if (!execute(connection, std::string("SAVEPOINT ") + name_)) return;
  guardConnection(connection);
  connection_ = connection;
  ++openSavepoints;
}

Savepoint::~Savepoint() {
  if (active()) rollback();
}

bool Savepoint::anyOpen() { return openSavepoints > 0; }

bool Savepoint::intact() const {
  return active() && sqlite3_get_autocommit(connection_) == 0;
}

bool Savepoint::release() {
  if (!active()) return false;
  if (!intact()) {
    finish();
    return false;
  }
  if (execute(connection_, std::string("RELEASE ") + name_)) {
    finish();
    return true;
  }
  reportWriteFailure(connection_);
  rollback();
  return false;
}

void Savepoint::rollback() {
  if (!active()) return;
  if (intact()) {
    // ROLLBACK TO keeps the savepoint open; RELEASE then closes it empty.
    execute(connection_, std::string("ROLLBACK TO ") + name_);
    execute(connection_, std::string("RELEASE ") + name_);
  }
  finish();
}

void Savepoint::finish() {
  --openSavepoints;
  connection_ = nullptr;
}

}  // namespace tarvo::store
