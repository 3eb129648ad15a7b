// The default main-queue executor: first in, first out, and never running a
// task inside the call that queued it.
#include <TarvoFramework/MainQueue.h>
#include <gtest/gtest.h>

#include <string>

namespace tarvo {
namespace {

TEST(MainQueue, RunsInOrderAndDefersTasksQueuedWhileRunning) {
  MainQueue queue;
  std::string ran;
  queue.dispatchAsync([&] { ran += "a"; });
  queue.dispatchAsync([&] {
    ran += "b";
    queue.dispatchAsync([&] { ran += "c"; });  // waits for the next drain
  });
  EXPECT_EQ("", ran);
  EXPECT_EQ(2u, queue.pendingCount());
  EXPECT_EQ(2u, queue.runPending());
  EXPECT_EQ("ab", ran);
  EXPECT_EQ(1u, queue.runPending());
  EXPECT_EQ("abc", ran);
  EXPECT_EQ(0u, queue.runPending());
}

TEST(MainQueue, InstalledExecutorReceivesTasksUntilRemoved) {
  struct Counting : MainQueueExecutor {
    void dispatchAsync(Task) override { ++received; }
    int received = 0;
  };
  auto mine = std::make_shared<Counting>();
  setMainQueueExecutor(mine);
  dispatchToMainQueue([] {});
  EXPECT_EQ(1, mine->received);
  EXPECT_EQ(0u, mainQueue().pendingCount());

  setMainQueueExecutor(nullptr);
  dispatchToMainQueue([] {});
  EXPECT_EQ(1, mine->received);
  EXPECT_EQ(1u, mainQueue().runPending());
}

}  // namespace
}  // namespace tarvo
