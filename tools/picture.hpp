// The storage of a manager as an SVG picture.
#ifndef TOOLS_PICTURE_HPP
#define TOOLS_PICTURE_HPP

#include <string>

#include "tools/facts.hpp"
#include "tools/files.hpp"

namespace tool {

// Writes the picture: a row for each block, all of the same width; more than 40 blocks share rows.
// A row shows its bytes from left to right: live ones in the colour of their names' indices, dead
// ones, free ones. The size of the picture is bounded, however many names there are. title: what it
// shows.
void drawPicture(NamesManager *mgr, const Facts &facts, const std::string &title, Output *pOutput);

}  // namespace tool

#endif
