#include "store/Savepoint.h"

#include <string>

#include "store/StoreConnection.h"

namespace tarvo::store {
namespace {

int openSavepoints = 0;

// Installed while a savepoint is open: no statement may run on its own
// (autocommit) once SQLite has rolled the transaction back.
int refuseOutsideTransaction(void* connection, int, const char*, const char*,
                             const char*, const char*) {
  return sqlite3_get_autocommit(static_cast<sqlite3*>(connection)) != 0
             ? SQLITE_DENY
             : SQLITE_OK;
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
  connection_ = connection;
  if (openSavepoints++ == 0) {
    sqlite3_set_authorizer(connection_, refuseOutsideTransaction, connection_);
  }
}

Savepoint::~Savepoint() {
  if (active()) rollback();
}

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
  if (--openSavepoints == 0) {
    sqlite3_set_authorizer(connection_, nullptr, nullptr);
  }
  connection_ = nullptr;
}

}  // namespace tarvo::store
