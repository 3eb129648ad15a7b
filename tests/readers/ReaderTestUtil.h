// Helpers for the reader tests: fixture paths and throwaway input files.
#ifndef TARVO_TESTS_READERS_READERTESTUTIL_H_
#define TARVO_TESTS_READERS_READERTESTUTIL_H_

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace tarvo::cli {

inline std::string fixturePath(const std::string& relative) {
  return std::string(TARVO_FIXTURES_DIR) + "/" + relative;
}

// Writes content to a file named `name` in a directory of this process's
// own, and returns its path. The directory is left for the OS to clean, so
// a failing test's input can be inspected.
inline std::string writeInput(const std::string& name,
                              const std::string& content) {
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() /
      ("tarvo-readers-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const std::string path = (dir / name).string();
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

}  // namespace tarvo::cli

#endif  // TARVO_TESTS_READERS_READERTESTUTIL_H_
