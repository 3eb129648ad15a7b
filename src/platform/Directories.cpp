// The documents and resource directories.
#include "TarvoFramework/Directories.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <system_error>

#ifndef TARVO_RELATIVE_RESOURCE_DIR
#error \
    "TARVO_RELATIVE_RESOURCE_DIR must name the resource dir relative to the library"
#endif

namespace fs = std::filesystem;

namespace tarvo {
namespace {

struct Overrides {
  std::mutex mutex;
  std::string documents;
  std::string resources;
};

Overrides& overrides() {
  static Overrides* o = new Overrides;
  return *o;
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::string(value) : std::string();
}

std::string defaultDocumentsDirectory() {
  std::string dir = environment("TARVO_DOCUMENTS_DIR");
  if (!dir.empty()) return dir;
  const std::string xdg = environment("XDG_DATA_HOME");
  if (!xdg.empty()) return (fs::path(xdg) / "TarvoFramework").string();
  std::string home = environment("HOME");
  if (home.empty()) home = ".";
  return (fs::path(home) / ".local/share/TarvoFramework").string();
}

// The directory of the shared object that holds this function.
std::string libraryDirectory() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&libraryDirectory), &info) == 0 ||
      info.dli_fname == nullptr) {
    return ".";
  }
  std::error_code ec;
  fs::path file = fs::canonical(info.dli_fname, ec);
  if (ec) file = info.dli_fname;
  return file.parent_path().string();
}

}  // namespace

std::string documentsDirectory() {
  std::string dir;
  {
    std::lock_guard<std::mutex> lock(overrides().mutex);
    dir = overrides().documents;
  }
  if (dir.empty()) dir = defaultDocumentsDirectory();
  std::error_code ec;  // a failure shows up when the database fails to open
  fs::create_directories(dir, ec);
  return dir;
}

void setDocumentsDirectory(const std::string& path) {
  std::lock_guard<std::mutex> lock(overrides().mutex);
  overrides().documents = path;
}

std::string resourceDirectory() {
  {
    std::lock_guard<std::mutex> lock(overrides().mutex);
    if (!overrides().resources.empty()) return overrides().resources;
  }
  const std::string fromEnv = environment("TARVO_RESOURCE_DIR");
  if (!fromEnv.empty()) return fromEnv;
  return (fs::path(libraryDirectory()) / TARVO_RELATIVE_RESOURCE_DIR)
      .lexically_normal()
      .string();
}

void setResourceDirectory(const std::string& path) {
  std::lock_guard<std::mutex> lock(overrides().mutex);
  overrides().resources = path;
}

}  // namespace tarvo
