// The tool's check of the store before a command reads or writes it: a
// store that cannot be opened, read or trusted stops the command with a
// message that says what is wrong and what to do, and nothing is changed.
//
// The check runs on the store's own connection inside a read transaction
// (StoreSnapshot) that lasts until the command has loaded what it needs, so
// the command reads exactly what was checked, and a load shorter than the
// checked store is an error, never a shorter list.
#ifndef TARVO_TOOLS_TARVO_STOREGATE_H_
#define TARVO_TOOLS_TARVO_STOREGATE_H_

#include <TarvoFramework/DMPolygon.h>
#include <TarvoFramework/StoreSnapshot.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace tarvo::cli {

// A store the command must not use, or a write that did not reach it.
// what() is the whole message, possibly several lines; main() prints it
// after "tarvo COMMAND: " and exits with status 1.
class StoreFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class StoreUse { kRead, kWrite };

// The store in the documents directory (after --data-dir took effect),
// checked and held in one state until release().
//
// A write that a crash interrupted is rolled back first (the tool may
// write), and standard error says so: "recovered an interrupted write; the
// store is as it was before it". Throws StoreFailure when the store cannot
// be read or trusted, or, for kWrite, cannot be written. A store that does
// not exist yet passes: reads find no areas and the first write creates it.
class CheckedStore {
 public:
  explicit CheckedStore(StoreUse use);

  const StoreCheckReport& report() const { return snapshot_.report(); }
  bool missing() const {
    return report().status == StoreCheckReport::Status::kMissing;
  }

  // Throws StoreFailure, saying how to import areas, when the store holds
  // none: a command that warns of areas must not run quietly on none.
  void requireAreas() const;

  // Throws StoreFailure when what was loaded is less than what was checked.
  void requireWholeLoad(std::size_t areas, std::size_t vertices) const;
  void requireWholeLoad(const DMPolygonArray* loaded) const;

  // Lets other programs write again; call it once the loads are done, and
  // before this command writes (its writes would otherwise wait for it).
  void release() { snapshot_.release(); }

 private:
  StoreSnapshot snapshot_;
};

// A store file without any table (empty, or its first creation was
// interrupted) holds nothing, yet the store would never make its tables:
// removes it, saying so on standard error, so that the next write creates
// the store anew. Must run before anything touches the store.
void replaceEmptyStore();

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_STOREGATE_H_
