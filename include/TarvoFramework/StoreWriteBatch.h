/// @file
/// Registering many areas at once: all of them, or none.
#ifndef TARVOFRAMEWORK_STOREWRITEBATCH_H_
#define TARVOFRAMEWORK_STOREWRITEBATCH_H_

#include <memory>
#include <string>

#include "TarvoFramework/export.h"

namespace tarvo {

/// A failure of the store: SQLite's primary result code (SQLITE_FULL is 13,
/// SQLITE_BUSY 5, and so on; 0 when SQLite gave none) and its message. A
/// plain value.
struct StoreError {
  int sqliteCode = 0;   ///< SQLite's primary result code; 0: none
  std::string message;  ///< SQLite's message; empty: no failure
};

/// Groups the registry's writes (Tarvo::addPolygons, removePolygon,
/// removeAllPolygons) into one store transaction. They reach the file
/// together on commit(); if commit() is not reached, fails, or any write in
/// between fails (a full disk, an I/O error, a lock held by another process,
/// a statement that does not compile), nothing of the batch stays in the
/// store. A kill or a crash before commit() returns leaves the store as it
/// was before the batch. Commit is also much faster than one transaction per
/// statement: one sync to disk for the whole batch.
///
///   tarvo::StoreWriteBatch batch;
///   for (const Area& a : areas) monitor->addPolygons(a.points, a.guid, ...);
///   if (!batch.commit()) showStoreError(batch.error().message);
///
/// The registry's results are those it always gives (addPolygons answers YES
/// even when the store failed); the batch is how a host learns whether the
/// writes really happened. Reads (getPolygons) inside a batch see its
/// uncommitted writes. Batches nest: an inner batch commits into the outer
/// one, and only the outermost writes to the file.
///
/// Threading: create, use and destroy it on the thread that uses the store.
/// Not copyable or movable. Batches must end in the reverse order of their
/// creation (scoped objects do). Nothing throws but std::bad_alloc.
class TARVO_EXPORT StoreWriteBatch {
 public:
  /// Begins the batch, opening the store if it is not open yet. When the
  /// store cannot be opened, ok() is false from the start.
  StoreWriteBatch();
  /// Rolls back whatever the batch wrote, unless commit() succeeded.
  ~StoreWriteBatch();
  StoreWriteBatch(const StoreWriteBatch&) = delete;
  StoreWriteBatch& operator=(const StoreWriteBatch&) = delete;

  /// True while the batch is open and every write so far went through.
  bool ok() const;

  /// Makes the batch's writes durable (at the outermost level: synced to
  /// disk) and true; or, when any write failed or the commit itself did,
  /// rolls everything back and false, with the reason in error(). A batch
  /// commits once; later calls return the first answer.
  bool commit();

  /// Why the batch failed; empty message while nothing failed. The first
  /// failure is kept. A copy owned by the caller.
  StoreError error() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_STOREWRITEBATCH_H_
