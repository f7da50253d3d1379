// The storage of a manager as an SVG picture.
#ifndef TOOLS_PICTURE_HPP
#define TOOLS_PICTURE_HPP

#include <string>

#include "tools/facts.hpp"
#include "tools/files.hpp"

namespace tool {

// Writes the picture: a row per block, each as wide as any other; of more than 40 blocks, several
// share a row. From left to right a row shows its bytes: live ones in the colour of the names'
// indices, dead ones, free ones. Its size is bounded whatever mgr holds.
void drawPicture(Output &output, NamesManager *mgr, const Facts &facts, const std::string &image);

}  // namespace tool

#endif
