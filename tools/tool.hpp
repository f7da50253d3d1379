// What the commands of names_tool share.
#ifndef TOOLS_TOOL_HPP
#define TOOLS_TOOL_HPP

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "names/names_manager.h"
#include "tools/files.hpp"

namespace tool {

// Ends a command: thrown anywhere, printed by main as "names_tool: <text>", exit status 2.
struct Failure {
    std::string text;
};

[[noreturn]] void fail(const std::string &file, const std::string &what);

// The message for errno.
std::string systemError();

// What messages call a file that is read.
std::string inputName(const std::string &file);

// "1 name", "2 names"
std::string counted(int64_t number, const std::string &noun);

// UTF-8's byte order mark, with which some programs begin a text.
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
bool startsWithMark(std::string_view text);

// The text in quotes, control characters escaped: an image's names and formats may hold any bytes.
std::string quoted(const char *text);

struct ManagerDeleter {
    void operator()(NamesManager *mgr) const { NamesManager_Destroy(mgr); }
};
using ManagerHandle = std::unique_ptr<NamesManager, ManagerDeleter>;

ManagerHandle makeManager();

// Loads the image into mgr. Returns what is wrong with the image, or "". Fails when the file cannot
// be read or memory runs out.
std::string loadProblem(NamesManager *mgr, const std::string &image);

// Returns the names of an image. Fails when it is not sound.
ManagerHandle loadImage(const std::string &image);

// Returns the names of a file, which is read as an image if it begins as images do, else as a list
// (see ListInput for bNull). Fails on what is not sound.
ManagerHandle loadImageOrList(const std::string &name, bool bNull);

// Writes the image and finishes the output.
void saveImage(NamesManager *mgr, Output *pOutput);

// Builds the lookup index if there is none. Without one every lookup would read all names, so this
// fails when there is no memory for it.
void buildIndex(NamesManager *mgr);

// For FindNames: names end with a NUL and have no trailing blanks.
constexpr int32_t kTextUnchanged = -2;

// Points at the names from the 0-based index first on, as many as there are and have room; returns
// how many.
using NamePointers = std::array<const char *, 4096>;
int32_t readNames(NamesManager *mgr, int32_t first, NamePointers *pNames);

// Calls visit for all names in order, some thousands at a time, until it returns false. first: the
// 0-based index of the first of the count names.
using NamesVisitor = std::function<bool(int32_t first, int32_t count, const char *const *names)>;
void visitNames(NamesManager *mgr, const NamesVisitor &visit);

}  // namespace tool

#endif
