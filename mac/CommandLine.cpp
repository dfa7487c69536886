#include "mac/CommandLine.h"

#include <algorithm>
#include <ostream>

#include "mac/Texts.h"
#include "mac/Version.h"
#include "ovlib/base_ui_framework/mac/MacUtil.h"
#include "platform/CFHolder.h"
#include "platform/CoreFoundation.h"
#include "platform/Terminal.h"

int ReadCommandLine(const ProgramDescription& program, const std::vector<std::string>& arguments,
                    std::ostream& out, std::ostream& err,
                    std::map<std::string, std::string>& values, std::vector<std::string>& files) {
  const std::string usage = Localized(program.usage);
  const auto usageError = [&](const std::string& why) {
    err << program.name << ": " << why << '\n' << usage << '\n';
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
      out << usage << "\n\n" << Localized(program.help);
      return 0;
    } else if (argument == "--version") {
      out << program.name << ' ' << kVersion << '\n';
      return 0;
    } else if (isValued && i + 1 < arguments.size()) {
      values[argument] = arguments[++i];
    } else if (isValued) {
      // Translators: a command-line error; %0 is the option, such as --into.
      return usageError(Localized(LOCALIZABLE_TEXT("option %0 needs a value"), argument));
    } else {
      // Translators: a command-line error; %0 is the option as it was typed.
      return usageError(Localized(LOCALIZABLE_TEXT("unknown option %0"), TerminalText(argument)));
    }
  }
  if (files.empty()) {
    err << usage << '\n';
    return 2;
  }
  return -1;
}
