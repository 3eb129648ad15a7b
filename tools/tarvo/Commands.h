// The tarvo tool's subcommands, and what they share.
//
// Each run function takes the parsed arguments of its command, prints its
// results to standard output and its errors to standard error, and returns
// the process exit status (0 success, 1 bad input or failure). Errors in
// input files reach main() as InputFailure, bad command lines as UsageError.
//
// Threading: everything that touches the library runs on the main thread,
// which is also the thread that drains the library's main queue. The only
// other thread is the spoken callout's (watch --voice), which is handed
// text and never touches the library.
#ifndef TARVO_TOOLS_TARVO_COMMANDS_H_
#define TARVO_TOOLS_TARVO_COMMANDS_H_

#include <string>

#include "CommandLine.h"

namespace tarvo::cli {

int runImport(const ParsedArgs& args);
int runList(const ParsedArgs& args);
int runRemove(const ParsedArgs& args);
int runClear(const ParsedArgs& args);
int runExport(const ParsedArgs& args);
int runReplay(const ParsedArgs& args);
int runWatch(const ParsedArgs& args);

// Points the library at --data-dir, if given. Must run before anything
// touches the store, which reads the directory once.
void applyDataDir(const ParsedArgs& args);

// "hazard" or "hold-short", by the library's rule: a name that contains
// "HOLD SHORT" (case-sensitive) marks a hold-short area.
std::string areaKind(const std::string& name);

// Takes over the library's log while it lives. The store logs the SQL text
// of every insert, which would bury the tool's own output, so those lines
// are shown only when verbose; its failure lines always go to standard error
// and are counted, because the registry reports success even when the store
// could not write.
class StoreLog {
 public:
  explicit StoreLog(bool verbose);
  ~StoreLog();
  StoreLog(const StoreLog&) = delete;
  StoreLog& operator=(const StoreLog&) = delete;

  int failures() const;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_COMMANDS_H_
