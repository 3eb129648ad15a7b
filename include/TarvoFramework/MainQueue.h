/// @file
/// The main queue: where the monitor sends the tasks that start and stop the
/// caution sound.
///
/// The monitor starts no thread. Everything it does happens inside the host's
/// calls, except the play and stop tasks, which it hands to the main-queue
/// executor to run later, one after another.
///
/// One thread for fixes and tasks. A task reads the monitor's state (the
/// player, the name of the area last announced) when it runs, not when it is
/// queued, and the monitor takes no lock. So the host must run the tasks on
/// the thread that hands in the fixes (Tarvo::checkPointinPolygonLatitude):
/// handing in fixes on one thread while another drains the queue is a data
/// race on that state. A host whose fixes arrive on a thread of its own (a GPS
/// reader) passes them to its main thread, which hands each one in and then
/// drains the queue:
///
///   // GPS reader thread: only reads and forwards.
///   hostFixQueue.push(readFix());
///
///   // Main thread: the only thread that talks to the library.
///   while (std::optional<Fix> fix = hostFixQueue.pop()) {
///     tarvo::Tarvo::sharedManager()->checkPointinPolygonLatitude(
///         fix->lat, fix->lon, fix->speedKmh, fix->headingDeg);
///     tarvo::mainQueue().runPending();
///   }
///
/// A host with an event loop of its own (a GUI toolkit, an app framework)
/// installs an executor that posts each task to that loop instead, and hands
/// in its fixes from the same loop. Either way the delegate's notices, the
/// tasks and every call on the sound player happen on that one thread. (The
/// default player mixes on SDL's audio thread, which touches only the
/// player's own state, and that under its own synchronisation.)
#ifndef TARVOFRAMEWORK_MAINQUEUE_H_
#define TARVOFRAMEWORK_MAINQUEUE_H_

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "TarvoFramework/export.h"

namespace tarvo {

/// A task of the main queue: run once, on the host's main thread.
using Task = std::function<void()>;

/// A serial executor: runs tasks in the order they were queued, one at a
/// time, after the call that queued them has returned.
class TARVO_EXPORT MainQueueExecutor {
 public:
  virtual ~MainQueueExecutor();

  /// Queues a task; never runs it before returning. Thread-safe: the
  /// monitor calls it on the thread that hands in fixes. It takes the task
  /// over (a monitor owned by a std::shared_ptr is kept alive by its tasks
  /// until they are destroyed) and must run it exactly once, on that
  /// thread. It
  /// must not throw: an exception passes out of the monitor's fix call.
  /// @param task never empty when the monitor queues it.
  virtual void dispatchAsync(Task task) = 0;
};

/// The default executor: a FIFO that the host drains from the thread that
/// hands in the fixes. Queueing and counting are thread-safe (a mutex);
/// running is the host's, on that thread. Tasks left in it at exit are
/// never run.
class TARVO_EXPORT MainQueue : public MainQueueExecutor {
 public:
  /// Appends the task, taking it over; an empty task is kept and skipped
  /// when the queue is drained. Thread-safe; never runs the task here.
  void dispatchAsync(Task task) override;

  /// Runs the tasks queued so far, in order, on the calling thread (the one
  /// that hands in the fixes) and returns how many ran (empty tasks
  /// included). A task queued while it runs waits for the next call. Must
  /// not be called from inside a task. An exception thrown by a task passes
  /// out of this call, and the tasks taken with it that have not run yet
  /// are dropped. Each task is destroyed after the batch, releasing what it
  /// held (the monitor's sound tasks hold the monitor).
  std::size_t runPending();

  /// Number of tasks waiting; thread-safe, a snapshot that other threads
  /// may change at once.
  std::size_t pendingCount() const;

 private:
  mutable std::mutex mutex_;
  std::deque<Task> tasks_;
};

/// The process's default queue. It exists for the whole process (never
/// destroyed); the reference stays valid until exit. Thread-safe.
TARVO_EXPORT MainQueue& mainQueue();

/// Replaces the executor that the monitor sends its tasks to; null restores
/// the default queue. Tasks already queued stay where they are. Install it
/// before the first fix. Thread-safe (a mutex). The executor is held
/// strongly until replaced; the previous one is released here (it is kept
/// alive meanwhile by a queueing call that is using it).
TARVO_EXPORT void setMainQueueExecutor(
    std::shared_ptr<MainQueueExecutor> executor);

/// Queues a task on the current executor (the default queue when none is
/// installed), taking it over. Thread-safe; never runs the task itself.
/// Passes on an exception thrown by an installed executor.
TARVO_EXPORT void dispatchToMainQueue(Task task);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_MAINQUEUE_H_
