// The manual in three forms, all written from the tables in tools/commands.hpp.
#ifndef TOOLS_MANUAL_HPP
#define TOOLS_MANUAL_HPP

#include <string>

#include "tools/commands.hpp"

namespace tool {

// What --help prints, without a command and with one.
std::string helpText(const Program &program);
std::string helpText(const Program &program, const Command &command);

// A page of section 1 for man; szDate: when the texts were last changed.
std::string manPage(const Program &program, const char *szVersion, const char *szDate);

// The page docs/tool.md.
std::string markdownPage(const Program &program);

}  // namespace tool

#endif
