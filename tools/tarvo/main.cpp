// tarvo: try the runway-incursion warnings on a real airport and a recorded
// track, and manage the stored areas.
#include <TarvoFramework/version.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "readers/Records.h"

namespace {

using tarvo::cli::ParsedArgs;

int dispatch(const std::string& name, const ParsedArgs& args) {
  if (name == "import") return tarvo::cli::runImport(args);
  if (name == "list") return tarvo::cli::runList(args);
  if (name == "remove") return tarvo::cli::runRemove(args);
  if (name == "clear") return tarvo::cli::runClear(args);
  if (name == "export") return tarvo::cli::runExport(args);
  if (name == "watch") return tarvo::cli::runWatch(args);
  return tarvo::cli::runReplay(args);
}

// The project version the tool was built with, and the version number the
// loaded library exports, so a mismatched library shows.
std::string versionText() {
  char number[32];
  std::snprintf(number, sizeof number, "%.1f", TarvoFrameworkVersionNumber);
  return std::string("tarvo ") + TARVO_TOOL_VERSION +
         " (TarvoFramework version number " + number + ")";
}

bool wantsHelp(const std::vector<std::string>& args) {
  for (const std::string& arg : args) {
    if (arg == "--help" || arg == "-h") return true;
  }
  return false;
}

int usageError(const std::string& command, const std::string& message) {
  std::cerr << "tarvo" << (command.empty() ? "" : " " + command) << ": "
            << message << "\nTry 'tarvo"
            << (command.empty() ? "" : " " + command) << " --help'.\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return usageError("", "missing command");
  const std::string& first = args.front();
  if (first == "--help" || first == "-h" || first == "help") {
    std::cout << tarvo::cli::toolHelp();
    return 0;
  }
  if (first == "--version") {
    std::cout << versionText() << "\n";
    return 0;
  }
  const tarvo::cli::CommandSpec* command = tarvo::cli::findCommand(first);
  if (command == nullptr) {
    return usageError("", "unknown command '" + first + "'");
  }
  std::vector<std::string> rest(args.begin() + 1, args.end());
  if (wantsHelp(rest)) {
    std::cout << command->help;
    return 0;
  }
  try {
    return dispatch(first, tarvo::cli::parseArguments(*command, rest));
  } catch (const tarvo::cli::UsageError& e) {
    return usageError(e.command(), e.what());
  } catch (const tarvo::cli::InputFailure& e) {
    std::cerr << "tarvo " << first << ": " << e.error().what() << "\n";
    return 1;
  } catch (const std::exception& e) {
    std::cerr << "tarvo " << first << ": " << e.what() << "\n";
    return 1;
  }
}
