// The checks behind checkStore(), run on any open connection to a store
// file: the check's own read-only one, or the store's own inside a read
// transaction (StoreSnapshot). Private to the library.
#ifndef TARVO_SRC_STORE_STORECHECKER_H_
#define TARVO_SRC_STORE_STORECHECKER_H_

#include <sqlite3.h>

#include <filesystem>
#include <string>

#include "TarvoFramework/StoreCheck.h"

namespace tarvo::store {

// Runs the checks in order of severity on `connection` and fills `report`'s
// status, error, counts and findings. Reads only. A store left with an
// interrupted write that this connection cannot roll back (a read-only
// connection meeting a hot journal) is kNeedsRecovery.
void checkConnection(sqlite3* connection, StoreCheckReport& report);

// Whether `file` (when it exists) and its directory can be written: SQLite
// creates its rollback journal beside the file.
bool isWritableStore(const std::filesystem::path& file);

// Whether `path` holds a hot journal that a read-only connection cannot roll
// back: a write to it was interrupted. Opens the file read-only and reads
// one page; false when it cannot tell (the check then says why).
bool hasInterruptedWrite(const std::string& path);

// SQLite's primary code and message for the connection's last failure.
StoreError lastError(sqlite3* connection);

}  // namespace tarvo::store

#endif  // TARVO_SRC_STORE_STORECHECKER_H_
