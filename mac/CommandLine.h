// CommandLine.h: how both applications read their command lines. Options come first and end at
// "--"; everything else is a file. --help and --version answer and end the program.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

// The usage and the help are keys of the main bundle's texts (marked LOCALIZABLE_TEXT), shown in
// the user's language; their English texts are the keys themselves.
struct ProgramDescription {
  const char* name;                        // as in "kestrail: ..." and "kestrail 0.1.0"
  const char* usage;                       // the usage line
  const char* help;                        // what --help adds after the usage line
  std::vector<std::string> valuedOptions;  // options that take the next argument as their value
};

// Sorts `arguments` (those after the program's name) into option values and files. Returns -1
// to go on with them, or the status the program is to end with: 0 after answering --help or
// --version on `out`, 2 after saying on `err` what is wrong (an unknown option, an option without
// its value, no file at all).
int ReadCommandLine(const ProgramDescription& program, const std::vector<std::string>& arguments,
                    std::ostream& out, std::ostream& err,
                    std::map<std::string, std::string>& values, std::vector<std::string>& files);
