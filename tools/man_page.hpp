// The manual page, made of the texts that --help prints.
#ifndef TOOLS_MAN_PAGE_HPP
#define TOOLS_MAN_PAGE_HPP

#include <string>

namespace CLI {
class App;
}

namespace tool {

// The page of section 1 about the program and its commands, as input for man.
std::string manPage(const CLI::App &app, const std::string &version);

}  // namespace tool

#endif
