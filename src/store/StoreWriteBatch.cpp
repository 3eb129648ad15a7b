#include "TarvoFramework/StoreWriteBatch.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "store/Savepoint.h"
#include "store/StoreConnection.h"

namespace tarvo {

struct StoreWriteBatch::State {
  store::Savepoint savepoint{"tarvo_write_batch"};
  std::uint64_t failuresBefore = store::writeFailureCount();
  std::optional<bool> committed;
  StoreError error;

  bool writesFailed() const {
    return store::writeFailureCount() != failuresBefore;
  }
  void fail(StoreError why) {
    if (error.message.empty()) error = std::move(why);
  }
  void failFromLastWrite() {
    const store::WriteFailure last = store::lastWriteFailure();
    fail({last.code, last.message});
  }
};

StoreWriteBatch::StoreWriteBatch() : state_(std::make_unique<State>()) {
  if (!state_->savepoint.active()) {
    state_->fail({0, "the store could not be opened"});
  }
}

StoreWriteBatch::~StoreWriteBatch() = default;

bool StoreWriteBatch::ok() const {
  return !state_->committed && state_->savepoint.intact() &&
         !state_->writesFailed();
}

bool StoreWriteBatch::commit() {
  State& s = *state_;
  if (s.committed) return *s.committed;
  if (!ok()) {
    if (s.writesFailed()) s.failFromLastWrite();
    s.fail({0, "the store rolled the writes back"});
    s.savepoint.rollback();
    s.committed = false;
    return false;
  }
  s.committed = s.savepoint.release();
  if (!*s.committed) s.failFromLastWrite();
  return *s.committed;
}

StoreError StoreWriteBatch::error() const { return state_->error; }

}  // namespace tarvo
