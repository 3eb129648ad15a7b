#include "StoreGate.h"

#include <filesystem>
#include <iostream>
#include <system_error>

namespace tarvo::cli {
namespace {

constexpr int kSqliteBusy = 5;  // SQLite's code for a lock held elsewhere

using Status = StoreCheckReport::Status;

std::string advice(const StoreCheckReport& report) {
  if (report.status == Status::kUnreadable) {
    return report.error.sqliteCode == kSqliteBusy
               ? "Close the program that holds it, or wait, and try again."
               : "Check the path and its permissions, or choose another "
                 "store with --data-dir.";
  }
  return "Nothing was changed. Keep the file for analysis, restore it from a "
         "backup, or move it aside and import the airport's areas again into "
         "a new store.";
}

}  // namespace

StoreCheckReport requireTrustedStore(StoreUse use) {
  StoreCheckReport report = checkStore();
  if (!report.trusted()) {
    std::string message;
    for (const std::string& line : report.describe()) message += line + "\n  ";
    throw StoreFailure(message + advice(report));
  }
  if (use == StoreUse::kWrite && !report.writable) {
    throw StoreFailure("the store " + report.path +
                       " cannot be written (no write permission on the file "
                       "or its directory). Nothing was changed.");
  }
  return report;
}

void requireAreas(const StoreCheckReport& report) {
  if (report.areaCount > 0) return;
  throw StoreFailure("no areas are stored in " + report.path +
                     ", so there is nothing to warn about. Import the "
                     "airport's areas first: tarvo import FILE");
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
