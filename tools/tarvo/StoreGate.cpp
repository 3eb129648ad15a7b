#include "StoreGate.h"

#include <filesystem>
#include <iostream>
#include <system_error>

namespace tarvo::cli {
namespace {

constexpr int kSqliteBusy = 5;  // SQLite's code for a lock held elsewhere
constexpr int kBusyTimeoutMs = 2000;

using Status = StoreCheckReport::Status;

std::string advice(const StoreCheckReport& report) {
  switch (report.status) {
    case Status::kUnreadable:
      return report.error.sqliteCode == kSqliteBusy
                 ? "Close the program that holds it, or wait, and try again."
                 : "Check the path and its permissions, or choose another "
                   "store with --data-dir.";
    case Status::kNeedsRecovery:
      return "Run any tarvo command on it as a user who may write the file "
             "and its directory; nothing was changed.";
    default:
      return "Nothing was changed. Keep the file for analysis, restore it "
             "from a backup, or move it aside and import the airport's areas "
             "again into a new store.";
  }
}

}  // namespace

CheckedStore::CheckedStore(StoreUse use)
    : snapshot_(kBusyTimeoutMs, InterruptedWrite::kRecover) {
  const StoreCheckReport& r = report();
  if (r.recovered) {
    std::cerr << "tarvo: recovered an interrupted write; the store is as it "
                 "was before it ("
              << r.path << ")\n";
  }
  if (!r.trusted()) {
    std::string message;
    for (const std::string& line : r.describe()) message += line + "\n  ";
    throw StoreFailure(message + advice(r));
  }
  if (use == StoreUse::kWrite && !r.writable) {
    throw StoreFailure("the store " + r.path +
                       " cannot be written (no write permission on the file "
                       "or its directory). Nothing was changed.");
  }
}

void CheckedStore::requireAreas() const {
  if (report().areaCount > 0) return;
  throw StoreFailure("no areas are stored in " + report().path +
                     ", so there is nothing to warn about. Import the "
                     "airport's areas first: tarvo import FILE");
}

void CheckedStore::requireWholeLoad(std::size_t areas,
                                    std::size_t vertices) const {
  if (const auto why = snapshot_.loadProblem(areas, vertices)) {
    throw StoreFailure(*why + ". Nothing was done; try again.");
  }
}

void CheckedStore::requireWholeLoad(const DMPolygonArray* loaded) const {
  if (const auto why = snapshot_.loadProblem(loaded)) {
    throw StoreFailure(*why + ". Nothing was done; try again.");
  }
}

void replaceEmptyStore() {
  const StoreCheckReport report = checkStore();
  if (report.status != Status::kDamaged || report.hasTables) return;
  std::error_code ec;
  if (!std::filesystem::remove(report.path, ec) || ec) {
    throw StoreFailure(
        "the store " + report.path +
        " holds no tables and cannot be removed: " + ec.message());
  }
  std::cerr << "tarvo: the store " << report.path
            << " held no tables (its creation was interrupted); it is made "
               "anew\n";
}

}  // namespace tarvo::cli
