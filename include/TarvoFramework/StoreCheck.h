/// @file
/// Can the stored areas be trusted? A check a host runs at start-up.
#ifndef TARVOFRAMEWORK_STORECHECK_H_
#define TARVOFRAMEWORK_STORECHECK_H_

#include <cstdint>
#include <string>
#include <vector>

#include "TarvoFramework/StoreWriteBatch.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// One thing found wrong in a readable store.
struct StoreFinding {
  /// What was found.
  enum class Kind {
    kIntegrity,       ///< SQLite's quick_check or the schema: damaged pages,
                      ///< a missing table; `detail` is SQLite's text
    kShortArea,       ///< an area with fewer than 3 vertices (count in
                      ///< `count`): the monitor would test the wrong shape
    kOrphanVertices,  ///< vertex rows (`count` of them) whose polygon id has
                      ///< no area: left by an interrupted or failed write
    kDuplicateGuid,   ///< a GUID stored for `count` areas; the registry
                      ///< finds only one of them
    kMisreadText,     ///< a name or GUID that the store's quoting misreads
                      ///< (StoreText.h); `detail` says which and why
    kBadCoordinate,   ///< a vertex text that is not a finite number in range
                      ///< (it would read back as another number, or 0)
  };
  Kind kind;                    ///< what was found
  std::int32_t polygonID = -1;  ///< the area or vertex rows concerned; -1: none
  std::int64_t count = 0;       ///< how many rows or areas; see Kind
  std::string detail;  ///< SQLite's text or the misread text; may be empty
};

/// What checkStore() found. A store is trusted when it is healthy or does
/// not exist yet (a fresh install: the store creates it on first use).
struct TARVO_EXPORT StoreCheckReport {
  /// The store's state as a whole.
  enum class Status {
    kHealthy,        ///< readable, intact, every area sound
    kMissing,        ///< no file yet
    kUnreadable,     ///< cannot be opened or read: see `error` (a lock held by
                     ///< another process is SQLITE_BUSY; not a database,
                     ///< a directory, no permission)
    kDamaged,        ///< readable, but SQLite finds damage or the tables are
                     ///< missing: what is read from it may be incomplete
    kInconsistent,   ///< intact, but some areas are not sound (findings)
    kNeedsRecovery,  ///< a crash, kill or power cut interrupted a write and
                     ///< left SQLite's hot journal: intact, but readable only
                     ///< once a connection that may write has rolled the
                     ///< write back (InterruptedWrite::kRecover, the tool,
                     ///< or the store's own first use in initializes())
  };
  Status status = Status::kMissing;  ///< the store's state
  std::string path;                  ///< the file checked
  StoreError error;       ///< kUnreadable (and a read failing midway)
  bool writable = false;  ///< the file and its directory can be written
  /// True when this check found an interrupted write and rolled it back
  /// (InterruptedWrite::kRecover): the store is as it was before that write,
  /// and the rest of the report describes it so. Tell the user.
  bool recovered = false;
  /// False only for a database read in full that has no table at all (true
  /// when that could not be read): an empty file, or one
  /// whose first creation was interrupted. The store takes such a file as
  /// it is and never creates the tables in it (every write then fails), but
  /// it holds nothing: a host may delete it before the store's first use,
  /// and the store then makes it anew.
  bool hasTables = true;
  std::int64_t areaCount = 0;          ///< rows of the area table
  std::int64_t vertexCount = 0;        ///< rows of the vertex table
  std::vector<StoreFinding> findings;  ///< what is wrong, in store order

  /// Whether the monitor can rely on the store: healthy or missing.
  bool trusted() const {
    return status == Status::kHealthy || status == Status::kMissing;
  }
  /// The report in words, one line per problem (at most `perKind` lines per
  /// kind of finding, then a count of the rest). Empty when trusted
  /// (healthy or missing). English text for people, not for parsing.
  /// @param perKind the most lines per kind; 0 shows only the counts.
  std::vector<std::string> describe(std::size_t perKind = 5) const;
};

/// What a check does with a write that a crash interrupted (a hot journal).
enum class InterruptedWrite {
  kReport,   ///< reads only and reports kNeedsRecovery
  kRecover,  ///< rolls the write back on a connection of its own that may
             ///< write, exactly as SQLite does on any such open, then
             ///< checks again and sets `recovered`. The only write a check
             ///< ever makes; it needs write access to the file's directory.
};

/// The store file's path: "Polygon.db" in the documents directory.
TARVO_EXPORT std::string storeFilePath();

/// Checks the store file "Polygon.db" in the documents directory
/// (Directories.h). Opens its own read-only connection, waits up to
/// `busyTimeoutMs` for a lock held by another connection, and closes it
/// again: it creates nothing, writes nothing and changes no result of the
/// store or the monitor, so it can run before initializes(). Never throws.
///
/// Cost: one quick_check (reads every page) and one pass over the rows;
/// about 10 ms for 1,000 areas of 20 vertices.
///
/// Call it at start-up, and tell the pilot when the area database cannot be
/// trusted (trusted() false): the monitor then warns about fewer or
/// wrong-shaped areas, without any other sign.
///
/// Threading: call it from the thread that uses the store.
/// @param busyTimeoutMs how long to wait for another connection's lock, in
///        milliseconds; 0 or less does not wait (a lock then fails at
///        once with SQLITE_BUSY).
/// @return a report owned by the caller.
/// @param interrupted whether to recover an interrupted write (see above).
TARVO_EXPORT StoreCheckReport
checkStore(int busyTimeoutMs = 2000,
           InterruptedWrite interrupted = InterruptedWrite::kReport);

/// The same for a store file at another path; nothing in the library needs
/// to be set up first. A directory at that path is kUnreadable.
/// @param path the database file, copied into the report.
/// @param busyTimeoutMs, interrupted as for checkStore().
TARVO_EXPORT StoreCheckReport
checkStoreFile(const std::string& path, int busyTimeoutMs = 2000,
               InterruptedWrite interrupted = InterruptedWrite::kReport);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_STORECHECK_H_
