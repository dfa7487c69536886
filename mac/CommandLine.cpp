#include "mac/CommandLine.h"

#include <algorithm>
#include <ostream>

#include "mac/Version.h"
#include "platform/Terminal.h"

int ReadCommandLine(const ProgramDescription& program, const std::vector<std::string>& arguments,
                    std::ostream& out, std::ostream& err,
                    std::map<std::string, std::string>& values, std::vector<std::string>& files) {
  const auto usageError = [&](const std::string& why) {
    err << program.name << ": " << why << '\n' << program.usage << '\n';
    return 2;
  };
  bool options = true;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const bool isValued = std::find(program.valuedOptions.begin(), program.valuedOptions.end(),
                                    argument) != program.valuedOptions.end();
    if (!options || argument.size() < 2 || argument[0] != '-') {
      files.push_back(argument);
    } else if (argument == "--") {
      options = false;
    } else if (argument == "--help") {
      out << program.usage << "\n\n" << program.help;
      return 0;
    } else if (argument == "--version") {
      out << program.name << ' ' << kVersion << '\n';
      return 0;
    } else if (isValued && i + 1 < arguments.size()) {
      values[argument] = arguments[++i];
    } else if (isValued) {
      return usageError("option " + argument + " needs a value");
    } else {
      return usageError("unknown option " + TerminalText(argument));
    }
  }
  if (files.empty()) {
    err << program.usage << '\n';
    return 2;
  }
  return -1;
}
