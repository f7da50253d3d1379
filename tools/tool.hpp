// What the commands of names_tool share.
#ifndef TOOLS_TOOL_HPP
#define TOOLS_TOOL_HPP

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "names/names_manager.h"
#include "tools/files.hpp"

namespace tool {

// What ends a command: thrown anywhere, printed by main as "names_tool: <text>", exit 2.
struct Failure {
    std::string text;
};

[[noreturn]] void fail(const std::string &file, const std::string &what);

// What errno says.
std::string systemError();

// What messages call a file that is read.
std::string inputName(const std::string &file);

// "1 name", "2 names"
std::string counted(int64_t number, const std::string &noun);

// UTF-8's byte order mark, with which some programs begin a text.
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
bool startsWithMark(std::string_view text);

// The text in quotes, control characters escaped: names and formats of an image may hold anything.
std::string quoted(const char *text);

struct ManagerDeleter {
    void operator()(NamesManager *mgr) const { NamesManager_Destroy(mgr); }
};
using ManagerHandle = std::unique_ptr<NamesManager, ManagerDeleter>;

ManagerHandle makeManager();

// Loads the image into mgr. "" or what is wrong with the image; fails when the file cannot be read
// or memory runs out.
std::string loadProblem(NamesManager *mgr, const std::string &image);

// The names of an image, which must be sound.
ManagerHandle loadImage(const std::string &image);

// Writes the image and finishes the output.
void saveImage(NamesManager *mgr, Output &output);

// Calls visit for all names in order, some thousands at a time, until it answers false: the index
// of the first, how many, pointers to their texts.
using NamesVisitor = std::function<bool(int32_t first, int32_t count, const char *const *names)>;
void visitNames(NamesManager *mgr, const NamesVisitor &visit);

// The commands; each returns the exit status. bNull: names in lists and output end by NUL instead
// of a line's end.
int runImport(const std::string &list, const std::string &image, bool bNull);
int runExport(const std::string &image, const std::string &list, bool bNull);
struct FindOptions {
    bool bOneBased;
    bool bNull;
};
int runFind(const std::string &image, const std::vector<std::string> &names,
            const FindOptions &options);
// picture: the file to draw the storage into, instead of telling about it; "" for none.
int runShow(const std::string &image, bool bJson, const std::string &picture);
int runCheck(const std::string &image);
int runSelfCheck();

}  // namespace tool

#endif
