// The store writes of one registry call (an add, a replace, a removal):
// whole or absent. Private to the library.
#ifndef TARVO_SRC_STORE_AREAWRITE_H_
#define TARVO_SRC_STORE_AREAWRITE_H_

#include <cstdint>
#include <optional>

#include "store/Savepoint.h"
#include "store/StoreConnection.h"

namespace tarvo::store {

// Open for the whole call. At its end the writes are committed together,
// unless one of them failed because of the disk or the file (full disk, I/O
// error, lock, damage): then none of them stays, so a kill, a crash or a
// full disk never leaves an area with only some of its vertices. A
// statement that failed for its own text (it did not compile) keeps the
// result the registry has always given: the other writes stay.
//
// Inside a write batch the batch's transaction already makes the call
// whole or absent, so no savepoint of its own is opened.
class AreaWrite {
 public:
  AreaWrite() {
    if (!Savepoint::anyOpen()) savepoint_.emplace("tarvo_area_write");
  }
  ~AreaWrite() {
    if (!savepoint_) return;
    if (environmentFailureCount() != environmentFailuresBefore_) {
      savepoint_->rollback();
    } else {
      savepoint_->release();
    }
  }
  AreaWrite(const AreaWrite&) = delete;
  AreaWrite& operator=(const AreaWrite&) = delete;

 private:
  std::optional<Savepoint> savepoint_;
  std::uint64_t environmentFailuresBefore_ = environmentFailureCount();
};

}  // namespace tarvo::store

#endif  // TARVO_SRC_STORE_AREAWRITE_H_
