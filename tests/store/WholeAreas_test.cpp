// Areas reach the store whole or not at all: through a write batch, and
// through the registry's own calls, also when the disk fills up midway.
// A full disk is made with a file size limit (RLIMIT_FSIZE): writes past it
// fail the way they fail on a full file system.
#include <TarvoFramework/DBManager.h>
#include <TarvoFramework/StoreCheck.h>
#include <TarvoFramework/StoreWriteBatch.h>
#include <TarvoFramework/Tarvo.h>
#include <signal.h>
#include <sys/resource.h>

#include "store/StoreTestSupport.h"

namespace {

using Status = tarvo::StoreCheckReport::Status;

const char kSquare[] = "10.0,50.0 10.1,50.0 10.1,50.1 10.0,50.1";

// A 40-vertex ring: big enough that a few areas fill a page.
std::string ring() {
  std::string points;
  for (int i = 0; i < 40; ++i) {
    points += (i ? " " : "") + std::to_string(10.0 + i * 0.001) + "," +
              std::to_string(50.0 + (i % 2) * 0.001);
  }
  return points;
}

std::size_t storedAreas() {
  return tarvo::DBManager::getSharedInstance()->getAllPolygons()->size();
}

// Limits the size of every file this process writes from now on.
void limitFileSize(off_t bytes) {
  signal(SIGXFSZ, SIG_IGN);  // a failed write, not a dead process
  const rlimit limit{static_cast<rlim_t>(bytes), RLIM_INFINITY};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
}

void liftFileSizeLimit() {
  const rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST(WholeAreas, BatchCommitsAllOrRollsBackAll) {
  storetest::TempDocuments docs;
  storetest::LogCapture log;
  const auto& monitor = tarvo::Tarvo::sharedManager();
  {
    tarvo::StoreWriteBatch batch;
    EXPECT_TRUE(monitor->addPolygons(kSquare, "a", "RWY A", false));
    EXPECT_TRUE(monitor->addPolygons(kSquare, "b", "RWY B", false));
    // A load inside the batch sees its writes and does not undo them.
    monitor->getPolygons();
    EXPECT_EQ(2u, monitor->polygons()->size());
    EXPECT_TRUE(batch.ok());
    EXPECT_TRUE(batch.commit());
    EXPECT_TRUE(batch.commit());  // answers again, commits once
  }
  EXPECT_EQ(2u, storedAreas());
  {
    tarvo::StoreWriteBatch forgotten;  // never committed
    monitor->addPolygons(kSquare, "c", "RWY C", false);
    monitor->removePolygon("a");
  }
  EXPECT_EQ(2u, storedAreas());
  {
    // A name that breaks the statement fails the whole batch.
    tarvo::StoreWriteBatch batch;
    monitor->addPolygons(kSquare, "d", "RWY D", false);
    monitor->addPolygons(kSquare, "e", "RWY \"E\"", false);
    EXPECT_FALSE(batch.ok());
    EXPECT_FALSE(batch.commit());
    EXPECT_EQ(SQLITE_ERROR, batch.error().sqliteCode);
    EXPECT_NE(std::string::npos, batch.error().message.find("E"))
        << batch.error().message;
  }
  EXPECT_EQ(2u, storedAreas());
  EXPECT_EQ(Status::kHealthy, tarvo::checkStore().status);
}

TEST(WholeAreas, FullDiskFailsTheBatchAndKeepsTheStore) {
  storetest::TempDocuments docs;
  storetest::LogCapture log;
  const auto& monitor = tarvo::Tarvo::sharedManager();
  monitor->addPolygons(kSquare, "kept", "RWY KEPT", false);
  const auto size = storetest::fs::file_size(docs.database());
  limitFileSize(static_cast<off_t>(size + 8192));
  {
    tarvo::StoreWriteBatch batch;
    for (int i = 0; i < 200 && batch.ok(); ++i) {
      monitor->addPolygons(ring(), "g" + std::to_string(i), "RWY", false);
    }
    EXPECT_FALSE(batch.commit());
    EXPECT_TRUE(batch.error().sqliteCode == SQLITE_FULL ||
                batch.error().sqliteCode == SQLITE_IOERR)
        << batch.error().sqliteCode << " " << batch.error().message;
  }
  liftFileSizeLimit();
  EXPECT_EQ(1u, storedAreas());
  EXPECT_EQ(Status::kHealthy, tarvo::checkStore().status);
}

TEST(WholeAreas, RegistryCallsNeverStoreHalfAnArea) {
  storetest::TempDocuments docs;
  storetest::LogCapture log;
  const auto& monitor = tarvo::Tarvo::sharedManager();
  monitor->addPolygons(kSquare, "first", "RWY", false);
  limitFileSize(
      static_cast<off_t>(storetest::fs::file_size(docs.database()) + 16384));
  // The registry answers YES whatever the store did; what counts is what
  // the file holds afterwards.
  for (int i = 0; i < 100; ++i) {
    monitor->addPolygons(ring(), "g" + std::to_string(i), "RWY", false);
  }
  liftFileSizeLimit();
  bool sawFailure = false;
  for (const std::string& line : log.take()) {
    sawFailure |= line.rfind("Database returned error", 0) == 0;
  }
  EXPECT_TRUE(sawFailure) << "the limit was never reached";
  const tarvo::StoreCheckReport r = tarvo::checkStore();
  EXPECT_EQ(Status::kHealthy, r.status)
      << ::testing::PrintToString(r.describe());
  EXPECT_EQ(4 + 40 * (r.areaCount - 1), r.vertexCount);  // square + rings
  EXPECT_LT(r.areaCount, 101);
}

}  // namespace
