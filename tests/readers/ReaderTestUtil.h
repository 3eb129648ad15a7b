// Helpers for the reader tests: fixture paths, throwaway input files and the
// refusals of bad input.
#ifndef TARVO_TESTS_READERS_READERTESTUTIL_H_
#define TARVO_TESTS_READERS_READERTESTUTIL_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "readers/Records.h"

namespace tarvo::cli {

#ifdef TARVO_FIXTURES_DIR
inline std::string fixturePath(const std::string& relative) {
  return std::string(TARVO_FIXTURES_DIR) + "/" + relative;
}
#endif

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

// Expects read() to throw an InputFailure naming `file`, `line` and
// `field`, with `part` in its message.
template <class Read>
void expectRefusal(Read read, const std::string& file, int line,
                   const std::string& field, const std::string& part = "") {
  try {
    read();
    ADD_FAILURE() << "no InputFailure";
  } catch (const InputFailure& failure) {
    const InputError& e = failure.error();
    EXPECT_EQ(e.file, file);
    EXPECT_EQ(e.line, line);
    EXPECT_EQ(e.field, field);
    EXPECT_NE(e.message.find(part), std::string::npos) << e.message;
    // "FILE:LINE: FIELD: MESSAGE", without ":LINE" for line 0 and without
    // "FIELD: " for no field.
    EXPECT_EQ(std::string(failure.what()),
              e.file + (line > 0 ? ":" + std::to_string(line) : "") + ": " +
                  (field.empty() ? "" : field + ": ") + e.message);
  }
}

}  // namespace tarvo::cli

#endif  // TARVO_TESTS_READERS_READERTESTUTIL_H_
