// The check and the loads after it on the store's own connection, inside one
// read transaction (a savepoint that is only ever rolled back: nothing is
// written in it).
#include "TarvoFramework/StoreSnapshot.h"

#include <filesystem>
#include <system_error>

#include "store/Savepoint.h"
#include "store/StoreChecker.h"
#include "store/StoreConnection.h"

namespace tarvo {

using Status = StoreCheckReport::Status;

struct StoreSnapshot::Transaction {
  store::Savepoint savepoint{"tarvo_snapshot"};
};

namespace {

// Whether the file exists as something SQLite could open; a missing file
// or a directory is left to checkStoreFile(), which opens nothing for them.
bool isStoreFile(const std::string& path) {
  std::error_code ec;
  const auto type = std::filesystem::status(path, ec).type();
  return type != std::filesystem::file_type::not_found &&
         type != std::filesystem::file_type::directory;
}

}  // namespace

StoreSnapshot::StoreSnapshot(int busyTimeoutMs, InterruptedWrite interrupted) {
  const std::string path = storeFilePath();
  if (!isStoreFile(path)) {
    report_ = checkStoreFile(path, busyTimeoutMs);
    return;
  }
  // Asked before the store's connection opens the file: that connection may
  // write, so its first read would roll the write back without a sign.
  const bool interruptedWrite = store::hasInterruptedWrite(path);
  if (interruptedWrite && interrupted == InterruptedWrite::kReport) {
    report_ = checkStoreFile(path, busyTimeoutMs);
    return;
  }
  report_.path = path;
  report_.writable = store::isWritableStore(path);
  sqlite3* connection = store::sharedConnection();
  if (connection == nullptr) {
    report_.status = Status::kUnreadable;
    report_.error = {SQLITE_CANTOPEN, "the store cannot be opened"};
    return;
  }
  sqlite3_busy_timeout(connection, busyTimeoutMs);
  transaction_ = std::make_unique<Transaction>();
  if (!transaction_->savepoint.active()) {
    report_.status = Status::kUnreadable;
    report_.error = store::lastError(connection);
    transaction_.reset();
    return;
  }
  store::checkConnection(connection, report_);
  report_.recovered = interruptedWrite &&
                      report_.status != Status::kNeedsRecovery &&
                      report_.status != Status::kUnreadable;
  if (!report_.trusted()) release();  // no load follows an untrusted check
}

StoreSnapshot::~StoreSnapshot() { release(); }

bool StoreSnapshot::held() const { return transaction_ != nullptr; }

void StoreSnapshot::release() {
  if (transaction_) transaction_->savepoint.rollback();
  transaction_.reset();
}

std::optional<std::string> StoreSnapshot::loadProblem(
    std::size_t areas, std::size_t vertices) const {
  const auto checkedAreas = static_cast<std::size_t>(report_.areaCount);
  const auto checkedVertices = static_cast<std::size_t>(report_.vertexCount);
  if (areas == checkedAreas && vertices == checkedVertices) return std::nullopt;
  return "read " + std::to_string(areas) + " of " +
         std::to_string(checkedAreas) + " areas and " +
         std::to_string(vertices) + " of " + std::to_string(checkedVertices) +
         " vertices from the store " + report_.path + ": a read failed midway";
}

std::optional<std::string> StoreSnapshot::loadProblem(
    const DMPolygonArray* loaded) const {
  std::size_t areas = 0, vertices = 0;
  if (loaded != nullptr) {
    for (const auto& polygon : *loaded) {
      ++areas;
      if (polygon && polygon->polygonPoints()) {
        vertices += polygon->polygonPoints()->size();
      }
    }
  }
  return loadProblem(areas, vertices);
}

}  // namespace tarvo
