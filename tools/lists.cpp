// import, export and find: between lists of names and images.
#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <optional>
#include <unistd.h>

#include "tools/list_reader.hpp"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

void storeList(NamesManager *mgr, const std::string &list, Progress &progress) {
    ListReader reader(list);
    while (reader.next()) {
        const int32_t first = NamesManager_GetNumNames(mgr);
        const auto last = static_cast<int32_t>(reader.linesRead() - 1);
        if (NamesManager_AddNames(mgr, first, last, 0, reader.lines().data()) != 0)
            fail(reader.name(), "out of memory after line " + std::to_string(NamesManager_GetNumNames(mgr)));
        progress.set("storing", reader.linesRead());
    }
}

void printImportSummary(const NamesManager *mgr, double seconds) {
    int64_t nTextBytes = 0;
    for (int32_t i = 0; i < mgr->nBlocks; ++i)
        nTextBytes += mgr->pBlocks[i].nUsed;
    std::printf("%" PRId32 " names, %" PRId64 " bytes of text, %" PRId32 " blocks, %" PRId32 " segments\n", mgr->nNames, nTextBytes,
                mgr->nBlocks, mgr->nSegments);
    std::printf("%.3f s, %.0f names per second\n", seconds, mgr->nNames / std::max(seconds, 1e-6));
}

// A name that the lines of a list cannot hold: it would be read back as two names, or without its end.
bool breaksLine(const char *szName) {
    const size_t nLength = std::strlen(szName);
    return (nLength > 0 && szName[nLength - 1] == '\r') || std::strchr(szName, '\n');
}

void refuseLineBreaks(NamesManager *mgr, const std::string &image) {
    visitNames(mgr, [&](int32_t first, int32_t count, const char *const *names) {
        for (int32_t i = 0; i < count; ++i)
            if (breaksLine(names[i])) fail(image, "name " + std::to_string(first + i) + " holds a line break; --null can export it");
    });
}

void writeList(NamesManager *mgr, std::FILE *pFile, char cEnd) {
    visitNames(mgr, [&](int32_t, int32_t count, const char *const *names) {
        for (int32_t i = 0; i < count; ++i) {
            std::fputs(names[i], pFile);
            std::fputc(cEnd, pFile);
        }
    });
}

// Prints "index<TAB>name" for each name. Returns how many are missing.
int64_t printIndices(NamesManager *mgr, const std::vector<const char *> &names, bool bOneBased) {
    std::vector<int32_t> indices(names.size());
    if (NamesManager_FindNameList(mgr, names.data(), static_cast<int32_t>(names.size()), bOneBased, indices.data()) != 0)
        throw std::bad_alloc();
    for (size_t i = 0; i < names.size(); ++i)
        std::printf("%" PRId32 "\t%s\n", indices[i], names[i]);
    std::fflush(stdout);
    return std::count(indices.begin(), indices.end(), -1);
}

}  // namespace

int runImport(const std::string &list, const std::string &image) {
    const auto begin = std::chrono::steady_clock::now();
    const ManagerHandle mgr = makeManager();
    {
        Progress progress("storing");
        storeList(mgr.get(), list, progress);
        progress.set("saving", mgr->nNames);
        saveImage(mgr.get(), image);
    }
    printImportSummary(mgr.get(), std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    return 0;
}

int runExport(const std::string &image, const std::string &list, bool bNull) {
    const ManagerHandle mgr = loadImage(image);
    if (!bNull) refuseLineBreaks(mgr.get(), image);
    OutputFile file(list, image);
    std::optional<Progress> progress;
    if (!isatty(fileno(file.pFile))) progress.emplace("exporting");
    writeList(mgr.get(), file.pFile, bNull ? '\0' : '\n');
    file.finish();
    return 0;
}

int runFind(const std::string &image, const std::vector<std::string> &names, bool bOneBased) {
    const ManagerHandle mgr = loadImage(image);
    int64_t nMissing = 0;
    if (names.empty()) {
        ListReader reader("-", true);
        while (reader.next())
            nMissing += printIndices(mgr.get(), reader.lines(), bOneBased);
    } else {
        std::vector<const char *> texts;
        texts.reserve(names.size());
        for (const std::string &name : names)
            texts.push_back(name.c_str());
        nMissing = printIndices(mgr.get(), texts, bOneBased);
    }
    return nMissing > 0 ? 1 : 0;
}

}  // namespace tool
