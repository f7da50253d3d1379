// What the commands of names_tool share.
#ifndef TOOLS_TOOL_HPP
#define TOOLS_TOOL_HPP

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "names/names_manager.h"

namespace tool {

// What ends a command: thrown anywhere, printed by main as "names_tool: <text>", exit 2.
struct Failure {
    std::string text;
};

[[noreturn]] void fail(const std::string &file, const std::string &what);

// What errno says.
std::string systemError();

// The text in quotes, control characters escaped: names and formats of an image may hold anything.
std::string quoted(const char *text);

struct ManagerDeleter {
    void operator()(NamesManager *mgr) const { NamesManager_Destroy(mgr); }
};
using ManagerHandle = std::unique_ptr<NamesManager, ManagerDeleter>;

ManagerHandle makeManager();

// Loads the image into mgr. "" or what is wrong with the image; fails when the file cannot be read.
std::string loadProblem(NamesManager *mgr, const std::string &image);

// The names of an image, which must be sound.
ManagerHandle loadImage(const std::string &image);

// Replaces the image in one step: whatever goes wrong, an older image stays whole and nothing is left beside it.
void saveImage(NamesManager *mgr, const std::string &image);

// Calls visit for all names in order, some thousands at a time: the index of the first, how many, pointers to their texts.
using NamesVisitor = std::function<void(int32_t first, int32_t count, const char *const *names)>;
void visitNames(NamesManager *mgr, const NamesVisitor &visit);

// A file that a command writes, or standard output for "-". Fails when it cannot be opened or is the image itself.
struct OutputFile {
    OutputFile(const std::string &file, const std::string &image);
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile();

    // Writes out what is still buffered and closes; fails when a byte could not be written.
    void finish();

    std::string name;
    std::FILE *pFile;
};

// The commands; each returns the exit code.
int runImport(const std::string &list, const std::string &image);
int runExport(const std::string &image, const std::string &list, bool bNull);
int runFind(const std::string &image, const std::vector<std::string> &names, bool bOneBased);
// picture: the file to draw the storage into, instead of telling about it; "" for none.
int runShow(const std::string &image, bool bJson, const std::string &picture);
int runCheck(const std::string &image);
int runSelfCheck();

}  // namespace tool

#endif
