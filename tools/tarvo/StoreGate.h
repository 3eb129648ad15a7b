// The tool's check of the store before a command reads or writes it: a
// store that cannot be opened, read or trusted stops the command with a
// message that says what is wrong and what to do, and nothing is changed.
#ifndef TARVO_TOOLS_TARVO_STOREGATE_H_
#define TARVO_TOOLS_TARVO_STOREGATE_H_

#include <TarvoFramework/StoreCheck.h>

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

// Checks the store in the documents directory (after --data-dir took
// effect). Throws StoreFailure when it cannot be read or trusted, or, for
// kWrite, cannot be written. A store that does not exist yet passes: reads
// find no areas and the first write creates it.
StoreCheckReport requireTrustedStore(StoreUse use);

// Throws StoreFailure, saying how to import areas, when the checked store
// holds none: a command that warns of areas must not run quietly on none.
void requireAreas(const StoreCheckReport& report);

// A store file without any table (empty, or its first creation was
// interrupted) holds nothing, yet the store would never make its tables:
// removes it, saying so on standard error, so that the next write creates
// the store anew. Must run before anything touches the store.
void replaceEmptyStore();

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_STOREGATE_H_
