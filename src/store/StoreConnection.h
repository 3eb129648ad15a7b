// What the store's extensions (whole-area writes, batches) need from the
// store's one connection. Private to the library.
#ifndef TARVO_SRC_STORE_STORECONNECTION_H_
#define TARVO_SRC_STORE_STORECONNECTION_H_

#include <sqlite3.h>

#include <cstdint>
#include <string>

namespace tarvo::store {

// The store's connection, opened on demand exactly as a record operation
// opens it (so opening here first changes nothing a record operation would
// do or log). Null when the open failed; a handle kept from an earlier
// failed open is returned as it is, and statements on it then fail.
sqlite3* sharedConnection();

// A failed insert or delete: SQLite's primary result code and message for
// the connection at that moment (what the store's error line logs).
struct WriteFailure {
  int code = 0;
  std::string message;
};

// Every failed insert or delete since the process started is counted here,
// so a caller can tell whether the writes of one call all went through even
// where the specified result does not say so.
std::uint64_t writeFailureCount();
WriteFailure lastWriteFailure();
// The failures among them for which isEnvironmentFailure() holds.
std::uint64_t environmentFailureCount();

// Counts a failure that an extension itself met (a commit that did not
// reach the disk), and logs it with the store's own error line.
void reportWriteFailure(sqlite3* connection);

// Whether a failure code says the disk or the file, not the statement, was
// at fault (full disk, I/O error, lock, damaged file, out of memory). After
// such a failure the writes of the call are rolled back; a statement that
// does not compile keeps its logged, partial result.
bool isEnvironmentFailure(int code);

}  // namespace tarvo::store

#endif  // TARVO_SRC_STORE_STORECONNECTION_H_
