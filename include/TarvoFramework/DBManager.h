/// @file
/// The polygon store: a SQLite database of areas and their vertices.
#ifndef TARVOFRAMEWORK_DBMANAGER_H_
#define TARVOFRAMEWORK_DBMANAGER_H_

#include <cstdint>
#include <memory>
#include <string>

#include "TarvoFramework/DMPoint.h"
#include "TarvoFramework/DMPolygon.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// Keeps every registered area, with its vertices, in "Polygon.db" in the
/// documents directory (Directories.h), so areas survive restarts.
///
/// Schema: polygon (polygonid integer primary key, polygonname text,
/// polygonguid text) and polygonPoints (polygonid integer, latitude text,
/// longitude text); a vertex's coordinates are stored as the text the host
/// gave. Vertices come back in insertion order, areas in ascending id.
///
/// The store is a process-wide singleton with one connection that is opened
/// on first use and never closed; its statements are never finalized. Values
/// are spliced into the SQL between double quotes, unescaped: a name, GUID or
/// coordinate text containing a double quote breaks the statement (the insert
/// then fails and is logged; a query finds nothing), and a GUID that names a
/// column is read as that column. Hosts refuse such text with
/// storeTextProblem() (StoreText.h), which lists what an unchecked value can
/// do. checkStore() (StoreCheck.h) tells whether a store can be trusted.
///
/// Failures are results and log lines (Log.h), never exceptions: inserts log
/// their SQL text, and "Database returned error %d: %s" when they fail;
/// queries and deletes log nothing. A store that cannot be opened fails
/// every call below the same way (-1, false or an empty list), and is not
/// opened again later in the process.
///
/// Ownership: strings are read during the call and not kept; the lists
/// returned are new and owned by the caller.
///
/// Threading: SQLite runs in serialized mode, but the write operations share
/// one statement slot without a lock: call the store from one thread.
class TARVO_EXPORT DBManager {
 public:
  /// The shared store, made and prepared (createDB) on the first call. Never
  /// null, also when createDB() failed. Not safe against two threads making
  /// the first call at once.
  /// @return a reference to the process's own pointer, valid until exit.
  static const std::shared_ptr<DBManager>& getSharedInstance();

  /// Puts SQLite into serialized threading mode (shutdown, configure,
  /// initialise). Run just before the connection is first opened; its
  /// results are not checked. Calling it while any SQLite connection of the
  /// process is open (the host's own included) disturbs that connection.
  void databaseSerialize();

  /// Sets databasePath and, when the file does not exist yet, creates it with
  /// both tables. True when the file existed or was created with both tables;
  /// false (and a log line) when it could not be opened or a table could not
  /// be created.
  bool createDB();

  /// Inserts an area row and returns its new id, or -1 on failure (the
  /// store not open, or the insert failed; logged). Logs the SQL text.
  /// @param name the area's name, spliced into the SQL as given.
  /// @param PolgonGuid the area's GUID, spliced into the SQL as given; not
  ///        checked for being stored already.
  std::int32_t addPolygonName(const std::string& name,
                              const std::string& PolgonGuid);

  /// Inserts one vertex row for the area with that id; the coordinates are
  /// stored as given. Logs the SQL text; failures are logged only.
  /// @param latitude the vertex's latitude as text, spliced as given.
  /// @param Longitude the vertex's longitude as text, spliced as given.
  /// @param forPolygonID the area's row id; not checked to exist.
  void addPolygonPoint(const std::string& latitude,
                       const std::string& Longitude, std::int32_t forPolygonID);

  /// Whether an area is stored under the GUID, compared byte for byte. Also
  /// false when the store is unavailable or the GUID breaks the query.
  /// @param guid the GUID, spliced into the query as given.
  bool isPolygonGuidExist(const std::string& guid);

  /// Every stored area (id, name, GUID; vertices not set), in ascending id. A
  /// new list, empty when the store is unavailable; a failure while reading
  /// ends the list early, silently. Names and GUIDs stored as NULL read
  /// back absent.
  std::shared_ptr<DMPolygonArray> getAllPolygons();

  /// The vertices of one area in insertion order, each coordinate read as the
  /// longest leading decimal number of its text (0.0 when there is none). A
  /// new list, empty for an unknown id or an unavailable store. No range
  /// check: "123" reads as 123 and "inf" or "nan" as 0.0.
  /// @param polygonID the area's row id; any value.
  std::shared_ptr<DMPointArray> getAllPolygonPointsforPolygonID(
      std::int32_t polygonID);

  ///@{
  /// Deletes the vertices of one area / the area row / all vertices / all
  /// areas. True when the statement ran (also when nothing matched); false
  /// when the store is unavailable or the statement failed, not logged.
  /// polygonID: the area's row id, any value; -1 matches only the vertices
  /// of an area whose insert failed (Tarvo::addPolygons).
  bool deletePointsforID(std::int32_t polygonID);
  bool deltePolygonforID(std::int32_t polygonID);
  bool deleteAllPoints();
  bool delteAllPolygons();
  ///@}

  /// The id stored under the GUID (the last one read when several are), or -1
  /// (also when the store is unavailable or the GUID breaks the query).
  /// @param guid the GUID, spliced into the query as given.
  std::int32_t getPolygonIDforGUID(const std::string& guid);

  /// Path of "Polygon.db" (absolute unless the documents directory is
  /// relative); set by createDB(), empty before. The connection is opened
  /// on this path once; changing it later has no effect on it.
  std::string databasePath;
};

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_DBMANAGER_H_
