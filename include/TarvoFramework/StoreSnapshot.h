/// @file
/// One state of the store, from its check to the end of the loads after it.
#ifndef TARVOFRAMEWORK_STORESNAPSHOT_H_
#define TARVOFRAMEWORK_STORESNAPSHOT_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "TarvoFramework/DMPolygon.h"
#include "TarvoFramework/StoreCheck.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// Checks the store on the store's own connection and keeps that
/// connection's read transaction open until release() or destruction, so
/// that initializes(), getPolygons() and DBManager's queries made meanwhile
/// read exactly the state that was checked. Without it a check on one
/// connection and a load on another can disagree: another program's write
/// between them, or its short lock during the load, which the store's
/// queries take for the end of the rows, gives a shorter list.
///
/// What it does, in order:
///  - a store file that does not exist is reported kMissing and nothing is
///    opened or created; a directory is kUnreadable;
///  - a store left with an interrupted write (a hot journal) is reported
///    kNeedsRecovery, or with InterruptedWrite::kRecover rolled back by the
///    store's own connection (report().recovered is then true);
///  - the store's connection is opened as any record operation opens it and
///    given a busy timeout of `busyTimeoutMs`, which it keeps afterwards:
///    its later queries and writes wait that long for another program's
///    lock instead of failing at once;
///  - a read transaction begins and every check of checkStore() runs in it.
///
/// While it is held, other programs can read the store but not commit a
/// write; hold it only for the loads. Writes of this process made while it
/// is held go into its transaction and reach the file only at release():
/// release it before writing.
///
/// Threading: the thread that uses the store, like DBManager. Not copyable.
class TARVO_EXPORT StoreSnapshot {
 public:
  /// @param busyTimeoutMs how long to wait for another connection's lock, in
  ///        milliseconds (0 or less: not at all).
  /// @param interrupted what to do with an interrupted write.
  explicit StoreSnapshot(
      int busyTimeoutMs = 2000,
      InterruptedWrite interrupted = InterruptedWrite::kRecover);
  ~StoreSnapshot();  ///< release()
  StoreSnapshot(const StoreSnapshot&) = delete;
  StoreSnapshot& operator=(const StoreSnapshot&) = delete;

  /// What the check found, as checkStore() reports it.
  const StoreCheckReport& report() const { return report_; }

  /// Whether the read transaction is open: false for a missing, unreadable
  /// or unrecovered store, and after release().
  bool held() const;

  /// Why a load made while held is not the whole checked store: nullopt
  /// when `areas` areas with `vertices` vertices in all were read, which is
  /// what the check counted; otherwise a sentence for people ("read 12 of
  /// 59 areas ..."). A shorter load means a read failed midway.
  std::optional<std::string> loadProblem(std::size_t areas,
                                         std::size_t vertices) const;
  /// The same for a list loaded by getPolygons() (null counts as empty).
  std::optional<std::string> loadProblem(const DMPolygonArray* loaded) const;

  /// Ends the read transaction; no effect when not held.
  void release();

 private:
  struct Transaction;
  StoreCheckReport report_;
  std::unique_ptr<Transaction> transaction_;
};

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_STORESNAPSHOT_H_
