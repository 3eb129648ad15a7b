// Option parsing for the tarvo tool, and the help text of every command.
//
// Each command declares its options in one table (CommandLine.cpp) together
// with its help text, so that the parser and --help never disagree.
#ifndef TARVO_TOOLS_TARVO_COMMANDLINE_H_
#define TARVO_TOOLS_TARVO_COMMANDLINE_H_

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvo::cli {

// A command line the tool cannot make sense of. main() prints the message
// with a pointer to --help and exits with status 2.
class UsageError : public std::runtime_error {
 public:
  UsageError(std::string command, const std::string& message)
      : std::runtime_error(message), command_(std::move(command)) {}
  const std::string& command() const { return command_; }

 private:
  std::string command_;
};

// How an option takes its value.
enum class OptionValue {
  None,      // a flag: --json
  Required,  // --format tsv or --format=tsv
  Optional,  // --realtime, --realtime 2 or --realtime=2 (numbers only)
};

struct OptionSpec {
  const char* name;  // without the leading "--"
  OptionValue value;
};

// One subcommand: its name, its positional arguments, its options and its
// help text (printed as it stands for `tarvo COMMAND --help`).
struct CommandSpec {
  const char* name;
  const char* summary;  // one line for `tarvo --help`
  int minPositional;
  int maxPositional;  // -1: any number
  std::vector<OptionSpec> options;
  const char* help;
};

// The parsed arguments of one command. A flag given without a value maps to
// the empty string, so has() tells presence and value() the text.
class ParsedArgs {
 public:
  std::vector<std::string> positional;
  std::map<std::string, std::string> options;

  bool has(const std::string& name) const { return options.count(name) > 0; }
  std::optional<std::string> value(const std::string& name) const;
};

// The command of that name, or null.
const CommandSpec* findCommand(const std::string& name);

// Every command, in the order `tarvo --help` lists them.
const std::vector<CommandSpec>& allCommands();

// The text for `tarvo --help`.
std::string toolHelp();

// Parses args (everything after the command name). Throws UsageError for an
// unknown option, a missing value or a wrong number of positional arguments.
// "--help" is not handled here: main() checks for it first.
ParsedArgs parseArguments(const CommandSpec& command,
                          const std::vector<std::string>& args);

// Parses a whole decimal number (no trailing text); throws UsageError naming
// the option otherwise.
double parseNumberOption(const std::string& command, const std::string& option,
                         const std::string& text);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_COMMANDLINE_H_
