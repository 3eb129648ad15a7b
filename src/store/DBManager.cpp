// The polygon store: one SQLite file, one connection for the whole process.
//
// Deliberate and kept: values are spliced into the SQL between double quotes
// without escaping; the connection is never closed and no statement is ever
// finalized or reset; createDB opens the new file twice and abandons the
// first handle. Hosts have stored data through exactly these statements, so
// their texts, results and log lines must not drift.
#include "TarvoFramework/DBManager.h"

#include <sqlite3.h>

#include <filesystem>
#include <system_error>
#include <vector>

#include "TarvoFramework/Directories.h"
#include "TarvoFramework/Log.h"
#include "store/CoordinateText.h"
#include "store/StoreConnection.h"

namespace tarvo {
namespace {

// The one connection. Set by the first sqlite3_open, failed or not, and
// never set back to null: a failed handle is kept, and later statements
// then fail to compile on it instead of opening again.
sqlite3* database = nullptr;

// The slot shared by the inserts and deletes; each prepares over the last.
sqlite3_stmt* statement = nullptr;

// Handles and messages that are abandoned on purpose (the first connection
// of a new file, the error texts of failed table creations) are listed here.
// Nothing reads the list: it only keeps them reachable, so that leak
// checkers in hosts and tests do not report the deliberate abandonment.
void keepReachable(void* abandoned) {
  static auto* kept = new std::vector<void*>;
  kept->push_back(abandoned);
}

const char kCreatePolygonTable[] =
    "create table if not exists polygon (polygonid integer primary key, "
    "polygonname text, polygonguid text)";
const char kCreatePointsTable[] =
    "create table if not exists polygonPoints (polygonid integer, latitude "
    "text, longitude text)";
// Without it every vertex query scans the whole vertex table, which makes
// loading n areas quadratic. Rows with equal polygonid stay in row id (that
// is, insertion) order in the index, so the vertex order does not change.
const char kCreatePointsIndex[] =
    "create index if not exists polygonPoints_polygonid on polygonPoints "
    "(polygonid)";

// Every add looks its GUID up first; without this index each lookup scans
// all areas, which makes adding n areas quadratic. Rows with one GUID stay
// in id order, so the last id read for a GUID is the same.
const char kCreateGuidIndex[] =
    "create index if not exists polygon_polygonguid on polygon (polygonguid)";

// Both inserts have a run of 31 blanks after "into".
const char kInsertInto[] = "insert into                               ";

std::string quoted(const std::string& value) { return '"' + value + '"'; }

// The open-on-demand step every record operation starts with. `path` is
// taken by the caller before anything else, also when already open.
bool openOnDemand(DBManager& store, const char* path) {
  if (database != nullptr) return true;
  store.databaseSerialize();
  return sqlite3_open(path, &database) == SQLITE_OK;
}

void logDatabaseError() {
  logMessage("Database returned error " +
             std::to_string(sqlite3_errcode(database)) + ": " +
             sqlite3_errmsg(database));
}

std::uint64_t failedWrites = 0;
std::uint64_t environmentFailures = 0;
store::WriteFailure lastFailure;

// Remembers a failed write for the store's extensions; changes nothing the
// record operations return or log.
void noteWriteFailure(sqlite3* connection) {
  ++failedWrites;
  const int code = sqlite3_errcode(connection) & 0xFF;
  // A statement refused because SQLite rolled the transaction back after a
  // disk or file failure: that failure stays the one to report.
  if (code == SQLITE_AUTH && store::isEnvironmentFailure(lastFailure.code)) {
    return;
  }
  lastFailure = {code, connection != nullptr ? sqlite3_errmsg(connection)
                                             : "the store is not open"};
  if (store::isEnvironmentFailure(code)) ++environmentFailures;
}

// Runs an insert or a delete in the shared slot; true on SQLITE_DONE. The
// compile result is not looked at: a failed compile leaves a null statement,
// whose step reports misuse.
bool stepWrite(const std::string& sql) {
  sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
  const bool done = sqlite3_step(statement) == SQLITE_DONE;
  if (!done) noteWriteFailure(database);
  return done;
}

// Compiles a query into a statement of its own; null when it does not
// compile. The statement is abandoned, unfinalized, after its last step.
sqlite3_stmt* prepareQuery(const std::string& sql) {
  sqlite3_stmt* query = nullptr;
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &query, nullptr) !=
      SQLITE_OK) {
    return nullptr;
  }
  return query;
}

bool nextRow(sqlite3_stmt* query) {
  return query != nullptr && sqlite3_step(query) == SQLITE_ROW;
}

// The store never writes a null text; one read back stays absent.
OptionalString columnString(sqlite3_stmt* query, int column) {
  const unsigned char* text = sqlite3_column_text(query, column);
  if (text == nullptr) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(text));
}

double columnCoordinate(sqlite3_stmt* query, int column) {
  return store::coordinateFromText(
      reinterpret_cast<const char*>(sqlite3_column_text(query, column)));
}

}  // namespace

namespace store {

sqlite3* sharedConnection() {
  DBManager& store = *DBManager::getSharedInstance();
  const char* dbpath = store.databasePath.c_str();
  return openOnDemand(store, dbpath) ? database : nullptr;
}

std::uint64_t writeFailureCount() { return failedWrites; }

WriteFailure lastWriteFailure() { return lastFailure; }

std::uint64_t environmentFailureCount() { return environmentFailures; }

void reportWriteFailure(sqlite3* connection) {
  noteWriteFailure(connection);
  logMessage("Database returned error " + std::to_string(lastFailure.code) +
             ": " + lastFailure.message);
}

bool isEnvironmentFailure(int code) {
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_NOMEM:
    case SQLITE_READONLY:
    case SQLITE_INTERRUPT:
    case SQLITE_IOERR:
    case SQLITE_CORRUPT:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_PROTOCOL:
    case SQLITE_NOTADB:
    case SQLITE_ABORT:
      return true;
    default:
      return false;
  }
}

}  // namespace store

const std::shared_ptr<DBManager>& DBManager::getSharedInstance() {
  // Never destroyed: the store outlives every caller.
  static auto* sharedInstance = new std::shared_ptr<DBManager>;
  if (!*sharedInstance) {
    *sharedInstance = std::make_shared<DBManager>();
    (*sharedInstance)->createDB();  // a failed store still hands out itself
  }
  return *sharedInstance;
}

void DBManager::databaseSerialize() {
  // Results ignored: configuring fails only when the library is in use,
  // which it is not before the first connection.
  sqlite3_shutdown();
  sqlite3_config(SQLITE_CONFIG_SERIALIZED);
  sqlite3_initialize();
}

bool DBManager::createDB() {
  databasePath =
      (std::filesystem::path(documentsDirectory()) / "Polygon.db").string();
  bool isSuccess = true;
  std::error_code ec;
  // An existing file is taken as it is: not opened here, tables not checked.
  if (std::filesystem::exists(databasePath, ec)) return isSuccess;

  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) {
    logMessage("Failed to open/create database");
    return false;
  }
  // Opened a second time on purpose; the first handle stays open, unused.
  keepReachable(database);
  if (sqlite3_open(dbpath, &database) != SQLITE_OK) return isSuccess;

  // One transaction for the tables and indexes, so that a kill while the
  // file is being made leaves either all of them or an empty file, never a
  // store with one table. The statements and their results are as before.
  sqlite3_exec(database, "BEGIN", nullptr, nullptr, nullptr);
  char* errMsg = nullptr;  // handed out by SQLite and never freed
  if (sqlite3_exec(database, kCreatePolygonTable, nullptr, nullptr, &errMsg) !=
      SQLITE_OK) {
    isSuccess = false;
    keepReachable(errMsg);
    logMessage("Failed to create table");
  }
  if (sqlite3_exec(database, kCreatePointsTable, nullptr, nullptr, &errMsg) !=
      SQLITE_OK) {
    isSuccess = false;
    keepReachable(errMsg);
    logMessage(std::string("Failed to create table ") +
               (errMsg != nullptr ? errMsg : "(null)"));
  }
  // Only speed-ups: a store without the indexes works the same, so their
  // failure is neither logged nor part of the result.
  sqlite3_exec(database, kCreatePointsIndex, nullptr, nullptr, nullptr);
  sqlite3_exec(database, kCreateGuidIndex, nullptr, nullptr, nullptr);
  sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr);
  return isSuccess;
}

std::int32_t DBManager::addPolygonName(const std::string& name,
                                       const std::string& PolgonGuid) {
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return -1;
  const std::string insertSQL = std::string(kInsertInto) +
                                "polygon (polygonname, polygonguid) values (" +
                                quoted(name) + ", " + quoted(PolgonGuid) + ")";
  logMessage(insertSQL);
  if (stepWrite(insertSQL)) {
    return static_cast<std::int32_t>(sqlite3_last_insert_rowid(database));
  }
  logDatabaseError();
  return -1;
}

void DBManager::addPolygonPoint(const std::string& latitude,
                                const std::string& Longitude,
                                std::int32_t forPolygonID) {
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return;
  const std::string insertSQL =
      std::string(kInsertInto) +
      "polygonPoints (latitude, longitude, polygonid) values (" +
      quoted(latitude) + ", " + quoted(Longitude) + ", " +
      std::to_string(forPolygonID) + " )";
  logMessage(insertSQL);
  if (!stepWrite(insertSQL)) logDatabaseError();
}

bool DBManager::isPolygonGuidExist(const std::string& guid) {
  const char* dbpath = databasePath.c_str();
  bool isExist = false;
  if (!openOnDemand(*this, dbpath)) return isExist;
  sqlite3_stmt* query = prepareQuery(
      "SELECT polygonname FROM polygon where polygonguid = " + quoted(guid));
  while (nextRow(query)) isExist = true;
  return isExist;
}

std::shared_ptr<DMPolygonArray> DBManager::getAllPolygons() {
  auto polygons = std::make_shared<DMPolygonArray>();
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return polygons;
  // The trailing blank belongs to the statement's stored text.
  sqlite3_stmt* query =
      prepareQuery("SELECT polygonid, polygonname, polygonguid FROM polygon ");
  while (nextRow(query)) {
    auto polygon = std::make_shared<DMPolygon>();
    polygon->setPolygonID(sqlite3_column_int(query, 0));
    polygon->setPolygonName(columnString(query, 1));
    polygon->setPolygonGUID(columnString(query, 2));
    polygons->push_back(std::move(polygon));
  }
  return polygons;
}

std::shared_ptr<DMPointArray> DBManager::getAllPolygonPointsforPolygonID(
    std::int32_t polygonID) {
  auto points = std::make_shared<DMPointArray>();
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return points;
  sqlite3_stmt* query = prepareQuery(
      "SELECT latitude, longitude FROM polygonPoints where polygonid = " +
      std::to_string(polygonID));
  while (nextRow(query)) {
    points->emplace_back(columnCoordinate(query, 0),
                         columnCoordinate(query, 1));
  }
  return points;
}

bool DBManager::deletePointsforID(std::int32_t polygonID) {
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return false;
  return stepWrite("delete from polygonPoints where polygonid = " +
                   std::to_string(polygonID));
}

bool DBManager::deltePolygonforID(std::int32_t polygonID) {
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return false;
  return stepWrite("delete from polygon where polygonid = " +
                   std::to_string(polygonID));
}

bool DBManager::deleteAllPoints() {
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return false;
  return stepWrite("delete from polygonPoints");
}

bool DBManager::delteAllPolygons() {
  const char* dbpath = databasePath.c_str();
  if (!openOnDemand(*this, dbpath)) return false;
  return stepWrite("delete from polygon");
}

std::int32_t DBManager::getPolygonIDforGUID(const std::string& guid) {
  const char* dbpath = databasePath.c_str();
  std::int32_t polygonID = -1;
  if (!openOnDemand(*this, dbpath)) return polygonID;
  sqlite3_stmt* query = prepareQuery(
      "SELECT polygonid FROM polygon where polygonguid = " + quoted(guid));
  // With several matching rows the last one read wins.
  while (nextRow(query)) polygonID = sqlite3_column_int(query, 0);
  return polygonID;
}

}  // namespace tarvo
