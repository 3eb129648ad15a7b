// The default main-queue executor and the process-wide executor slot.
#include "TarvoFramework/MainQueue.h"

#include <utility>

namespace tarvo {
namespace {

std::mutex& executorMutex() {
  static std::mutex* mutex = new std::mutex;
  return *mutex;
}

// Null while the default queue is in use.
std::shared_ptr<MainQueueExecutor>& installedExecutor() {
  static auto* executor = new std::shared_ptr<MainQueueExecutor>;
  return *executor;
}

}  // namespace

MainQueueExecutor::~MainQueueExecutor() = default;

void MainQueue::dispatchAsync(Task task) {
  std::lock_guard<std::mutex> lock(mutex_);
  tasks_.push_back(std::move(task));
}

std::size_t MainQueue::runPending() {
  std::deque<Task> batch;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    batch.swap(tasks_);
  }
  for (Task& task : batch) {
    if (task) task();
  }
  return batch.size();
}

std::size_t MainQueue::pendingCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return tasks_.size();
}

MainQueue& mainQueue() {
  // Never destroyed: queued tasks may hold the monitor until the very end.
  static MainQueue* queue = new MainQueue;
  return *queue;
}

void setMainQueueExecutor(std::shared_ptr<MainQueueExecutor> executor) {
  std::lock_guard<std::mutex> lock(executorMutex());
  installedExecutor() = std::move(executor);
}

void dispatchToMainQueue(Task task) {
  std::shared_ptr<MainQueueExecutor> executor;
  {
    std::lock_guard<std::mutex> lock(executorMutex());
    executor = installedExecutor();
  }
  if (executor) {
    executor->dispatchAsync(std::move(task));
  } else {
    mainQueue().dispatchAsync(std::move(task));
  }
}

}  // namespace tarvo
