/// @file tarvo.h
/// @brief The library's C interface, for hosts in C and for other languages
/// (Swift, Kotlin/JNI, Rust, Python ctypes).
///
/// It drives the same process-wide monitor as the C++ interface
/// (tarvo::Tarvo::sharedManager()): registering and removing areas, handing
/// in fixes, reading the monitor's state and the six look-ahead points,
/// hearing the two notices through C callbacks, draining the main queue,
/// routing the log and checking the store.
///
/// **Errors.** Every function that can fail returns a ::tarvo_status; 0
/// (::TARVO_OK) is success, negative values are failures and positive ones
/// are answers that are not failures (::TARVO_ABSENT, ::TARVO_GUID_STORED).
/// No C++ exception crosses this interface: an exception inside the library
/// becomes ::TARVO_ERROR_NO_MEMORY or ::TARVO_ERROR_INTERNAL, and
/// tarvo_last_error() tells its message.
///
/// **Strings.** Every string goes in as a NUL-terminated UTF-8 `const char*`
/// that the library copies before it returns; the caller keeps ownership.
/// Every string comes out into a buffer the caller owns (`buffer`, `size`
/// in bytes, NUL included). When `size` is too small the call writes
/// nothing but the NUL at `buffer[0]` (when `size` > 0), returns
/// ::TARVO_ERROR_BUFFER_TOO_SMALL and stores in `*length` the length the
/// text needs, without its NUL; call again with `*length + 1` bytes.
/// `buffer` may be NULL when `size` is 0. Strings handed to a callback
/// belong to the library and live until the callback returns: copy them to
/// keep them. tarvo_status_text() is the one exception: it returns a static
/// string that lives as long as the process.
///
/// **Threading.** The rules of the C++ monitor hold: call every function
/// from one and the same thread (the one that hands in the fixes and drains
/// the main queue), except the angle conversions, tarvo_status_text() and
/// the version symbols, which any thread may call. Callbacks arrive on that
/// thread, inside tarvo_check_fix(); the log callback arrives on whatever
/// thread logs. No callback may call back into the library, except that a
/// notice callback may read the monitor's state.
///
/// **Units.** Latitudes and longitudes in decimal degrees (north and east
/// positive), speeds in km/h, headings in degrees clockwise from true north.
/// Nothing is validated, clamped or wrapped: values are used as given.
#ifndef TARVOFRAMEWORK_TARVO_C_H_
#define TARVOFRAMEWORK_TARVO_C_H_

#include <stddef.h>
#include <stdint.h>

#include "TarvoFramework/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Results of the C interface. Negative: failed, nothing was done unless
/// the function says otherwise. Positive: a valid answer that is not a
/// plain success.
typedef enum tarvo_status {
  TARVO_OK = 0,                       ///< Done.
  TARVO_ABSENT = 1,                   ///< The string asked for is absent
                                      ///< (not set); `*length` is 0.
  TARVO_GUID_STORED = 2,              ///< tarvo_add_polygons(): the GUID is
                                      ///< (still) stored, nothing was added.
  TARVO_ERROR_NULL_ARGUMENT = -1,     ///< A required pointer was NULL.
  TARVO_ERROR_BUFFER_TOO_SMALL = -2,  ///< See "Strings" above.
  TARVO_ERROR_STORE = -3,             ///< The store failed (see the log).
  TARVO_ERROR_INVALID_ARGUMENT = -4,  ///< A value out of its documented range.
  TARVO_ERROR_NO_MEMORY = -5,         ///< An allocation failed.
  TARVO_ERROR_INTERNAL = -6           ///< Any other failure inside the
                                      ///< library; tarvo_last_error() says.
} tarvo_status;

/// A position: latitude then longitude, decimal degrees.
typedef struct tarvo_coordinate {
  double latitude;   ///< Degrees, north positive; not validated.
  double longitude;  ///< Degrees, east positive; not validated or wrapped.
} tarvo_coordinate;

/// The six look-ahead points of the latest fix: "far" is 4 s ahead, "mid"
/// 2 s ahead; left and right are 10 degrees either side of the heading.
typedef enum tarvo_lookahead {
  TARVO_FAR_LEFT = 0,    ///< 4 s ahead, heading - 10 degrees.
  TARVO_FAR_MIDDLE = 1,  ///< 4 s ahead, on the heading.
  TARVO_FAR_RIGHT = 2,   ///< 4 s ahead, heading + 10 degrees.
  TARVO_MID_LEFT = 3,    ///< 2 s ahead, heading - 10 degrees.
  TARVO_MID_MIDDLE = 4,  ///< 2 s ahead, on the heading.
  TARVO_MID_RIGHT = 5    ///< 2 s ahead, heading + 10 degrees.
} tarvo_lookahead;

/// A short English text for a status, e.g. "buffer too small". Static: never
/// free it. An unknown value gives "unknown status". Thread-safe.
/// @param status any value.
/// @return never NULL.
TARVO_EXPORT const char* tarvo_status_text(int status);

/// The message of the last ::TARVO_ERROR_INTERNAL or ::TARVO_ERROR_NO_MEMORY
/// on the calling thread (empty when none happened), into a caller buffer.
/// @param buffer where the text goes; may be NULL when size is 0.
/// @param size bytes available at buffer, NUL included.
/// @param length receives the text's length without the NUL; required.
/// @return ::TARVO_OK, ::TARVO_ERROR_NULL_ARGUMENT or
///         ::TARVO_ERROR_BUFFER_TOO_SMALL.
TARVO_EXPORT int tarvo_last_error(char* buffer, size_t size, size_t* length);

/// @name The monitor's life
/// @{

/// Makes the process-wide monitor if needed, loads the stored areas and
/// makes the caution-sound player (tarvo::Tarvo::initializes()). A missing
/// sound file leaves the monitor silent, not failed. Calling it again
/// reloads the areas and replaces the player.
/// @return ::TARVO_OK, or a negative status on an internal failure.
TARVO_EXPORT int tarvo_initializes(void);

/// Sets the directory of the store ("Polygon.db") before the store's first
/// use (tarvo::setDocumentsDirectory()); the store reads it once. NULL or
/// "" restores the default lookup ($TARVO_DOCUMENTS_DIR, then the XDG data
/// directory).
/// @param path a directory; created with its parents when missing.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_set_documents_directory(const char* path);

/// The documents directory in use (tarvo::documentsDirectory()).
/// @param buffer, size, length see "Strings" above; length is required.
/// @return ::TARVO_OK, ::TARVO_ERROR_NULL_ARGUMENT or
///         ::TARVO_ERROR_BUFFER_TOO_SMALL.
TARVO_EXPORT int tarvo_documents_directory(char* buffer, size_t size,
                                           size_t* length);

/// Turns the caution sound off or on for players made from now on: 0
/// installs a player factory that makes none (the monitor still notifies,
/// silently), non-zero restores the library's default player. Call it before
/// tarvo_initializes(). Useful for batch work and machines without audio.
/// @param enabled 0 or non-zero.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_set_sound_enabled(int enabled);

/// @}
/// @name Registry: areas in the store
/// Changes reach the monitoring only after tarvo_get_polygons() or
/// tarvo_initializes().
/// @{

/// Replaces the monitored list with every stored area, in store order
/// (tarvo::Tarvo::getPolygons()). An unavailable store gives an empty list.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_get_polygons(void);

/// Number of areas in the monitored list; 0 before the first
/// tarvo_get_polygons().
/// @param count receives the number; required.
/// @return ::TARVO_OK or ::TARVO_ERROR_NULL_ARGUMENT.
TARVO_EXPORT int tarvo_polygon_count(size_t* count);

/// Stores an area (tarvo::Tarvo::addPolygons()). Check the name and GUID
/// with tarvo_store_text_problem() first: the store's SQL misreads some.
/// @param points "lon,lat lon,lat ..." with single blanks between vertices;
///        stored unvalidated (a text that is no number reads back as 0).
/// @param guid the host's identifier of the area.
/// @param name the area's name; one containing "HOLD SHORT" is a hold-short
///        area, any other a hazard area.
/// @param force_replace non-zero: an area stored under the GUID is deleted
///        first.
/// @return ::TARVO_OK (also when the store failed to write: see the log),
///         ::TARVO_GUID_STORED when the GUID is still stored, or
///         ::TARVO_ERROR_NULL_ARGUMENT.
TARVO_EXPORT int tarvo_add_polygons(const char* points, const char* guid,
                                    const char* name, int force_replace);

/// Deletes the area stored under the GUID, in one transaction; an unknown
/// GUID succeeds.
/// @param guid the identifier; required.
/// @return ::TARVO_OK, ::TARVO_ERROR_STORE or ::TARVO_ERROR_NULL_ARGUMENT.
TARVO_EXPORT int tarvo_remove_polygon(const char* guid);

/// Deletes every stored area.
/// @return ::TARVO_OK or ::TARVO_ERROR_STORE.
TARVO_EXPORT int tarvo_remove_all_polygons(void);

/// Why a name or GUID cannot be stored safely (tarvo::storeTextProblem()):
/// a double quote, a control character, bytes that are not UTF-8 or a store
/// column's name.
/// @param text the name or GUID; required.
/// @param buffer, size, length the reason (see "Strings"); length required.
/// @return ::TARVO_OK with the reason when the text has a problem,
///         ::TARVO_ABSENT when it has none, or a negative status.
TARVO_EXPORT int tarvo_store_text_problem(const char* text, char* buffer,
                                          size_t size, size_t* length);

/// @}
/// @name Monitoring
/// @{

/// Hands in one fix (tarvo::Tarvo::checkPointinPolygonLatitude()): projects
/// the six look-ahead points, evaluates the areas, calls the notice
/// callbacks and queues the sound tasks. Drain them with
/// tarvo_run_pending() on the same thread afterwards.
/// @param latitude degrees. @param longitude degrees.
/// @param speed_kmh ground speed, km/h; at or below 0 counts as 0.
/// @param heading_deg degrees clockwise from true north, used as given.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_check_fix(double latitude, double longitude,
                                 double speed_kmh, double heading_deg);

/// Runs the main queue's pending tasks (the sound's start and stop) on the
/// calling thread, which must be the one that hands in the fixes. Not
/// from inside a callback.
/// @param ran receives how many tasks ran; may be NULL.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_run_pending(size_t* ran);

/// Number of tasks waiting in the main queue.
/// @param count receives it; required.
/// @return ::TARVO_OK or ::TARVO_ERROR_NULL_ARGUMENT.
TARVO_EXPORT int tarvo_pending_count(size_t* count);

/// One of the six look-ahead points of the latest fix; (0, 0) before the
/// first fix.
/// @param which a ::tarvo_lookahead value.
/// @param point receives the point; required.
/// @return ::TARVO_OK, ::TARVO_ERROR_NULL_ARGUMENT, or
///         ::TARVO_ERROR_INVALID_ARGUMENT for a value outside 0..5.
TARVO_EXPORT int tarvo_lookahead_point(int which, tarvo_coordinate* point);

/// @}
/// @name State of the monitor after the latest fix
/// @{

/// The latest fix as handed in: position, speed (km/h) and heading
/// (degrees). Any pointer may be NULL to skip that value.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_current_fix(tarvo_coordinate* location,
                                   double* speed_kmh, double* heading_deg);

/// Flags of the last evaluation: whether the area found is a hazard area,
/// and whether the aircraft itself stands in it. Either may be NULL.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_area_flags(int* is_hazard_area, int* on_runway);

/// Name of the area found by the last evaluation ("" after a fix outside
/// every area).
/// @param buffer, size, length see "Strings"; length required.
/// @return ::TARVO_OK, ::TARVO_ABSENT before any area was found, or a
///         negative status.
TARVO_EXPORT int tarvo_current_polygon_name(char* buffer, size_t size,
                                            size_t* length);

/// GUID of the area last matched; never reset by a fix outside.
/// @param buffer, size, length see "Strings"; length required.
/// @return ::TARVO_OK, ::TARVO_ABSENT before any match, or a negative
///         status.
TARVO_EXPORT int tarvo_current_polygon_guid(char* buffer, size_t size,
                                            size_t* length);

/// Name of the area for which the sound was last started ("" after a fix
/// outside every area).
/// @param buffer, size, length see "Strings"; length required.
/// @return ::TARVO_OK, ::TARVO_ABSENT before the first entry, or a negative
///         status.
TARVO_EXPORT int tarvo_last_polygon_name(char* buffer, size_t size,
                                         size_t* length);

/// @}
/// @name Notices and log
/// @{

/// Called on every fix on which an area is occupied, by the aircraft or a
/// look-ahead point.
/// @param user the pointer given to tarvo_set_delegate().
/// @param name the area's name, or NULL when absent; library-owned, valid
///        until the callback returns.
/// @param guid the area's GUID, or NULL when absent; likewise.
/// @param on_runway 1 when the aircraft itself stands in that hazard area.
typedef void (*tarvo_occurred_fn)(void* user, const char* name,
                                  const char* guid, int on_runway);

/// Called on every fix on which no area is occupied.
/// @param user the pointer given to tarvo_set_delegate().
/// @param name the area for which the sound was last started ("" once a fix
///        outside has been reported), or NULL when absent.
/// @param guid the GUID last matched, or NULL when absent.
typedef void (*tarvo_removed_fn)(void* user, const char* name,
                                 const char* guid);

/// Installs the monitor's delegate as two callbacks. Either may be NULL to
/// ignore that notice; both NULL removes the delegate. The library keeps
/// `user` and passes it back unchanged; the caller keeps it alive until the
/// delegate is replaced or removed.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_set_delegate(tarvo_occurred_fn occurred,
                                    tarvo_removed_fn removed, void* user);

/// Receives one log line without its newline; `message` is library-owned
/// and valid until the callback returns. Called while the library holds a
/// lock, on the thread that logs: it must not call the library.
typedef void (*tarvo_log_fn)(void* user, const char* message);

/// Routes the library's log (tarvo::setLogSink()). NULL restores the
/// default, which writes each line to standard error.
/// @param sink the callback, or NULL.
/// @param user passed back to the callback unchanged.
/// @return ::TARVO_OK or a negative status.
TARVO_EXPORT int tarvo_set_log_sink(tarvo_log_fn sink, void* user);

/// @}
/// @name Store check
/// @{

/// The store's state, as tarvo::StoreCheckReport::Status.
typedef enum tarvo_store_state {
  TARVO_STORE_HEALTHY = 0,        ///< Readable, intact, every area sound.
  TARVO_STORE_MISSING = 1,        ///< No file yet: a fresh install.
  TARVO_STORE_UNREADABLE = 2,     ///< Cannot be opened or read.
  TARVO_STORE_DAMAGED = 3,        ///< SQLite finds damage or no tables.
  TARVO_STORE_INCONSISTENT = 4,   ///< Intact, but some areas are not sound.
  TARVO_STORE_NEEDS_RECOVERY = 5  ///< A crash interrupted a write; see
                                  ///< tarvo_recover_store().
} tarvo_store_state;

/// What tarvo_check_store() found.
typedef struct tarvo_store_report {
  int state;              ///< A ::tarvo_store_state.
  int trusted;            ///< 1 when healthy or missing: safe to monitor.
  int writable;           ///< 1 when the file and its directory are writable.
  int has_tables;         ///< 0 only for a readable file with no table.
  int sqlite_code;        ///< SQLite's result code when unreadable, else 0.
  int64_t area_count;     ///< Rows of the area table.
  int64_t vertex_count;   ///< Rows of the vertex table.
  int64_t finding_count;  ///< Problems found in a readable store.
} tarvo_store_report;

/// Checks the store file read-only (tarvo::checkStoreFile()) and describes
/// what is wrong, one problem per line ("" when healthy or missing). Writes
/// nothing; safe before tarvo_initializes().
/// @param path the database file, or NULL for "Polygon.db" in the documents
///        directory.
/// @param busy_timeout_ms how long to wait for another program's lock, ms,
///        0 or more.
/// @param report receives the result; required.
/// @param text, size, length the description (see "Strings"); length
///        required. On ::TARVO_ERROR_BUFFER_TOO_SMALL the report is filled.
/// @return ::TARVO_OK (whatever the store's state), or a negative status.
TARVO_EXPORT int tarvo_check_store(const char* path, int busy_timeout_ms,
                                   tarvo_store_report* report, char* text,
                                   size_t size, size_t* length);

/// The same check, but a write that a crash interrupted
/// (::TARVO_STORE_NEEDS_RECOVERY) is first rolled back on a connection of
/// the check's own, as SQLite does on any open that may write; the store is
/// then as it was before that write, and the report describes it so. Call
/// it at start-up, before tarvo_initializes(), and tell the user when
/// `recovered` is 1. The only write any check makes.
/// @param path, busy_timeout_ms, report, text, size, length as for
///        tarvo_check_store().
/// @param recovered receives 1 when a write was rolled back, else 0;
///        required.
/// @return as tarvo_check_store().
TARVO_EXPORT int tarvo_recover_store(const char* path, int busy_timeout_ms,
                                     int* recovered, tarvo_store_report* report,
                                     char* text, size_t size, size_t* length);

/// @}
/// @name Angles and version
/// The same symbols as Coordinate.h and version.h declare, for C.
/// @{

/// Degrees to radians as (x * pi) / 180; NaN and infinities pass through.
/// Thread-safe.
TARVO_EXPORT double DegreesToRadians(double degrees);

/// Radians to degrees as (x * 180) / pi; NaN and infinities pass through.
/// Thread-safe.
TARVO_EXPORT double RadiansToDegrees(double radians);

/// The library's version as a number: 1.0.
TARVO_EXPORT extern const double TarvoFrameworkVersionNumber;

/// "@(#)PROGRAM:TarvoFramework  PROJECT:TarvoFramework-1" and a newline,
/// NUL-terminated.
TARVO_EXPORT extern const unsigned char TarvoFrameworkVersionString[];

/// @}

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // TARVOFRAMEWORK_TARVO_C_H_
