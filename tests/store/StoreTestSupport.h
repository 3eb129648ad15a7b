// Helpers for the store tests: a throwaway documents directory, a captured
// log, and direct access to the database file through SQLite itself.
#ifndef TARVOFRAMEWORK_TESTS_STORE_STORETESTSUPPORT_H_
#define TARVOFRAMEWORK_TESTS_STORE_STORETESTSUPPORT_H_

#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace storetest {

namespace fs = std::filesystem;

// A fresh, empty directory, removed again at the end of the test. It is
// made under the build tree when the test runs from CTest.
class TempDir {
 public:
  TempDir() {
    const char* base = std::getenv("TARVO_TEST_BINARY_DIR");
    std::string pattern =
        (fs::path(base != nullptr ? base : fs::temp_directory_path().c_str()) /
         "store-test-XXXXXX")
            .string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "mkdtemp";
    path_ = pattern;
  }
  ~TempDir() {
    std::error_code ec;
    fs::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// A temporary directory that the store uses as its documents directory.
// Must be made before the first use of the store in the process.
class TempDocuments : public TempDir {
 public:
  TempDocuments() { tarvo::setDocumentsDirectory(path().string()); }
  fs::path database() const { return path() / "Polygon.db"; }
};

// Collects every log line while alive.
class LogCapture {
 public:
  LogCapture() {
    previous_ = tarvo::setLogSink(
        [this](const std::string& line) { lines_.push_back(line); });
  }
  ~LogCapture() { tarvo::setLogSink(std::move(previous_)); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The lines logged since the last call.
  std::vector<std::string> take() {
    std::vector<std::string> out;
    out.swap(lines_);
    return out;
  }

 private:
  tarvo::LogSink previous_;
  std::vector<std::string> lines_;
};

// A connection of the test's own to a database file, closed at the end.
class Db {
 public:
  explicit Db(const fs::path& file) {
    if (sqlite3_open(file.c_str(), &db_) != SQLITE_OK) {
      ADD_FAILURE() << "open " << file << ": " << sqlite3_errmsg(db_);
    }
  }
  ~Db() { sqlite3_close(db_); }
  Db(const Db&) = delete;
  Db& operator=(const Db&) = delete;

  sqlite3* handle() { return db_; }

  void exec(const std::string& sql) {
    char* err = nullptr;
    if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
      ADD_FAILURE() << sql << ": " << (err ? err : "?");
    }
    sqlite3_free(err);
  }

  // Every row of the query, its columns joined with '|'.
  std::vector<std::string> rows(const std::string& sql) {
    std::vector<std::string> out;
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &st, nullptr) != SQLITE_OK) {
      ADD_FAILURE() << sql << ": " << sqlite3_errmsg(db_);
      return out;
    }
    while (sqlite3_step(st) == SQLITE_ROW) {
      std::string row;
      for (int c = 0; c < sqlite3_column_count(st); ++c) {
        const unsigned char* text = sqlite3_column_text(st, c);
        if (c > 0) row += '|';
        row += text ? reinterpret_cast<const char*>(text) : "NULL";
      }
      out.push_back(row);
    }
    sqlite3_finalize(st);
    return out;
  }

 private:
  sqlite3* db_ = nullptr;
};

// The inserts exactly as the store logs them.
inline std::string polygonInsert(const std::string& name,
                                 const std::string& guid) {
  return "insert into" + std::string(31, ' ') +
         "polygon (polygonname, polygonguid) values (\"" + name + "\", \"" +
         guid + "\")";
}

inline std::string pointInsert(const std::string& lat, const std::string& lon,
                               int id) {
  return "insert into" + std::string(31, ' ') +
         "polygonPoints (latitude, longitude, polygonid) values (\"" + lat +
         "\", \"" + lon + "\", " + std::to_string(id) + " )";
}

// The two tables as the store creates them, for files made by the tests.
inline void createTables(Db& db) {
  db.exec(
      "create table polygon (polygonid integer primary key, polygonname text, "
      "polygonguid text);"
      "create table polygonPoints (polygonid integer, latitude text, "
      "longitude text)");
}

// Writes `bytes` over a file's contents at byte offset `at`.
inline void overwrite(const fs::path& file, std::streamoff at,
                      const std::string& bytes) {
  std::fstream f(file, std::ios::in | std::ios::out | std::ios::binary);
  f.seekp(at);
  f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace storetest

#endif  // TARVOFRAMEWORK_TESTS_STORE_STORETESTSUPPORT_H_
