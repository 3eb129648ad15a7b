// The main queue: where the monitor sends the tasks that start and stop the
// caution sound.
//
// The library starts no thread. Everything it does happens inside the host's
// calls, except the play and stop tasks, which it hands to the main-queue
// executor to run later, one after another, on the host's main thread.
//
// With the default executor the host runs the queued tasks itself from its
// main loop:
//
//   while (running) {
//     ... hand fixes to Tarvo ...
//     tarvo::mainQueue().runPending();
//   }
//
// A host with an event loop of its own (a GUI toolkit, an app framework)
// installs an executor that posts each task to that loop instead.
#ifndef TARVOFRAMEWORK_MAINQUEUE_H_
#define TARVOFRAMEWORK_MAINQUEUE_H_

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "TarvoFramework/export.h"

namespace tarvo {

using Task = std::function<void()>;

// A serial executor: runs tasks in the order they were queued, one at a
// time, after the call that queued them has returned.
class TARVO_EXPORT MainQueueExecutor {
 public:
  virtual ~MainQueueExecutor();

  // Queues a task; never runs it before returning. Thread-safe.
  virtual void dispatchAsync(Task task) = 0;
};

// The default executor: a FIFO that the host drains from its main thread.
class TARVO_EXPORT MainQueue : public MainQueueExecutor {
 public:
  void dispatchAsync(Task task) override;

  // Runs the tasks queued so far, in order, on the calling thread (the host's
  // main thread) and returns how many ran. A task queued while it runs waits
  // for the next call. Must not be called from inside a task.
  std::size_t runPending();

  // Number of tasks waiting.
  std::size_t pendingCount() const;

 private:
  mutable std::mutex mutex_;
  std::deque<Task> tasks_;
};

// The process's default queue. It exists for the whole process.
TARVO_EXPORT MainQueue& mainQueue();

// Replaces the executor that the monitor sends its tasks to; null restores
// the default queue. Tasks already queued stay where they are. Install it
// before the first fix.
TARVO_EXPORT void setMainQueueExecutor(
    std::shared_ptr<MainQueueExecutor> executor);

// Queues a task on the current executor.
TARVO_EXPORT void dispatchToMainQueue(Task task);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_MAINQUEUE_H_
