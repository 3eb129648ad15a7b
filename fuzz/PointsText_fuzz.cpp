// Fuzzes points text on both sides: the tool's check of a TSV points cell,
// and the library's registry, which cuts the text into vertices, stores
// them and lists them again.
//
// The registry keeps a real store in a directory of its own under /dev/shm
// (or the temporary directory), removed at exit. Each input is added,
// listed and removed again, so the store stays small; inputs are capped at
// kMaxBytes because every vertex is one store write.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "FuzzSupport.h"
#include "TarvoFramework/Directories.h"
#include "TarvoFramework/Log.h"
#include "TarvoFramework/Tarvo.h"

namespace {

constexpr std::size_t kMaxBytes = 512;
const char kGuid[] = "fuzz-guid";

std::filesystem::path& storeDirectory() {
  static std::filesystem::path directory;
  return directory;
}

// The store echoes every insert to the log; only the last message is kept,
// to explain a finding.
std::string& lastLogMessage() {
  static std::string message;
  return message;
}

void removeStore() {
  std::error_code ignored;
  std::filesystem::remove_all(storeDirectory(), ignored);
}

// Vertices the registry must store: elements (cut at single blanks) that
// contain a comma.
std::size_t elementsWithComma(const std::string& points) {
  std::size_t count = 0;
  std::size_t start = 0;
  while (true) {
    const std::size_t end = points.find(' ', start);
    const std::size_t stop = end == std::string::npos ? points.size() : end;
    if (points.find(',', start) < stop) ++count;
    if (end == std::string::npos) return count;
    start = end + 1;
  }
}

void checkRegistry(const std::string& points) {
  const std::shared_ptr<tarvo::Tarvo>& monitor = tarvo::Tarvo::sharedManager();
  if (!monitor->addPolygons(points, kGuid, "fuzz area", false)) {
    tarvo::fuzz::broken("a new GUID is added", "addPolygons gave false");
  }
  monitor->getPolygons();
  std::size_t stored = 0;
  bool found = false;
  for (const auto& polygon : *monitor->polygons()) {
    if (polygon->polygonGUID() != kGuid) continue;
    found = true;
    stored = polygon->polygonPoints() ? polygon->polygonPoints()->size() : 0;
  }
  if (!found) tarvo::fuzz::broken("the added area is listed", points);
  if (stored != elementsWithComma(points)) {
    tarvo::fuzz::broken("one stored vertex per element with a comma",
                        std::to_string(stored) + " stored for '" + points +
                            "'; last log message: " + lastLogMessage());
  }
  if (!monitor->removePolygon(kGuid)) {
    tarvo::fuzz::broken("the area is removed again", points);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::error_code error;
  std::filesystem::path base = "/dev/shm";
  if (!std::filesystem::is_directory(base, error)) {
    base = std::filesystem::temp_directory_path();
  }
  storeDirectory() = base / ("tarvo-fuzz-" + std::to_string(::getpid()));
  std::filesystem::create_directories(storeDirectory());
  tarvo::setDocumentsDirectory(storeDirectory().string());
  tarvo::setLogSink(
      [](const std::string& message) { lastLogMessage() = message; });
  std::atexit(removeStore);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  if (size > kMaxBytes) return 0;
  const std::string points = tarvo::fuzz::asText(data, size);
  try {
    const int vertices = tarvo::cli::detail::checkPointsText(
        points, {tarvo::fuzz::kPath, 1, ""});
    if (static_cast<std::size_t>(vertices) != elementsWithComma(points)) {
      tarvo::fuzz::broken("checked text has a comma in every element", points);
    }
  } catch (const tarvo::cli::InputFailure&) {
    // A refusal naming the vertex: the expected answer.
  }
  // The store writes every text between double quotes and its statements
  // end at a NUL byte; the library's header leaves such text to the host to
  // refuse, and the tool's check does.
  if (points.find('"') == std::string::npos &&
      points.find('\0') == std::string::npos) {
    checkRegistry(points);
  }
  return 0;
}
