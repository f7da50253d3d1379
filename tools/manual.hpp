// The manual, made of the texts that --help prints.
#ifndef TOOLS_MANUAL_HPP
#define TOOLS_MANUAL_HPP

#include <string>

namespace CLI {
class App;
}

namespace tool {

// As a page of section 1 for man; date: when the texts were last changed.
std::string manPage(const CLI::App &app, const std::string &version, const std::string &date);

// As the page docs/tool.md.
std::string markdownPage(const CLI::App &app);

}  // namespace tool

#endif
