// A savepoint on the store's connection: the writes made while it is open
// reach the file together when the outermost one is released, or not at all.
// Private to the library.
#ifndef TARVO_SRC_STORE_SAVEPOINT_H_
#define TARVO_SRC_STORE_SAVEPOINT_H_

#include <sqlite3.h>

namespace tarvo::store {

// With SQLite's rollback journal, a transaction that a crash or kill -9
// interrupts is undone the next time the file is opened, so a group of
// statements run inside one is whole or absent afterwards.
//
// SQLite itself rolls a transaction back after some failures (a full disk,
// an I/O error). The statements that follow would then each commit on their
// own, and a half-written area would reach the file after all. While any
// Savepoint is open, the connection therefore refuses to compile a
// statement outside a transaction: such a statement fails with SQLITE_AUTH
// ("not authorized") and is reported like any other failed statement.
//
// Savepoints nest; only the outermost commits. Use one per scope, on the
// thread that uses the store.
class Savepoint {
 public:
  // Begins the savepoint `name` (a constant SQL identifier). Inactive when
  // the store cannot be opened or the savepoint cannot begin; the writes
  // then run as they would without it.
  explicit Savepoint(const char* name);
  ~Savepoint();  // rolls back unless released or rolled back already

  Savepoint(const Savepoint&) = delete;
  Savepoint& operator=(const Savepoint&) = delete;

  bool active() const { return connection_ != nullptr; }

  // Whether any savepoint is open, that is, whether writes now go into a
  // transaction that is kept or dropped as a whole.
  static bool anyOpen();

  // Whether the transaction is still open (SQLite has not rolled it back).
  bool intact() const;

  // Keeps the writes: at the outermost level they are committed to the file.
  // False when that failed; the failure is then logged with the store's
  // error line and counted, and the writes are rolled back.
  bool release();

  // Drops every write made since the savepoint began.
  void rollback();

 private:
  void finish();

  sqlite3* connection_ = nullptr;
  const char* name_;
};

}  // namespace tarvo::store

#endif  // TARVO_SRC_STORE_SAVEPOINT_H_
