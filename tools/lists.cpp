// The commands import, export and find: they take names from lists to images and back.
#include <algorithm>
#include <array>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/commands.hpp"
#include "tools/files.hpp"
#include "tools/list_input.hpp"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

// ---- import ----

std::string importSummary(const NamesManager *mgr, double seconds) {
    int64_t nTextBytes = 0;
    for (int32_t i = 0; i < mgr->nBlocks; ++i) { nTextBytes += mgr->pBlocks[i].nUsed; }
    std::array<char, 32> duration{};
    std::snprintf(duration.data(), duration.size(), "%.3f s", seconds);
    return counted(mgr->nNames, "name") + ", " + counted(nTextBytes, "byte") + " of text, " +
           counted(mgr->nBlocks, "block") + ", " + counted(mgr->nSegments, "segment") + "\n" +
           duration.data() + ", " +
           counted(static_cast<int64_t>(mgr->nNames / std::max(seconds, 1e-6)), "name") +
           " per second\n";
}

// ---- export ----

// Returns why the name would be another one when it is read from a list of lines, or NULL.
const char *lineProblem(std::string_view name, bool bFirst) {
    if (name.find('\n') != std::string_view::npos || (!name.empty() && name.back() == '\r')) {
        return "holds a line break";
    }
    return bFirst && startsWithMark(name) ? "begins with a byte order mark" : nullptr;
}

// Fails if a list of lines cannot hold the names.
void refuseForLines(NamesManager *mgr, const std::string &image) {
    visitNames(mgr, [&](int32_t first, int32_t count, const char *const *names) {
        for (int32_t i = 0; i < count; ++i) {
            if (const char *szProblem = lineProblem(names[i], first + i == 0)) {
                fail(inputName(image), "name " + std::to_string(first + i) + " " + szProblem +
                                           "; --null can export it");
            }
        }
        return true;
    });
}

void writeList(NamesManager *mgr, char cEnd, Output *pOutput) {
    std::string text;
    visitNames(mgr, [&](int32_t, int32_t count, const char *const *names) {
        text.clear();
        for (int32_t i = 0; i < count; ++i) { (text += names[i]) += cEnd; }
        pOutput->write(text);
        return true;
    });
}

// ---- find ----

// An index of 2,000,000 names takes ten times as long to build as a walk through them, and still
// six times as long as a walk that looks for 100,000 names at once, more than a command line holds.
// A list on standard input may have no end: there the index pays once so many names are read at
// once, or after so many walks.
constexpr size_t kNamesForIndex = 20000;
constexpr int kWalksForIndex = 4;

using Names = std::vector<const char *>;
using Indices = std::vector<int32_t>;

// Stores the sought names and finds for each the first one that is equal to it. False without
// memory.
bool storeSought(NamesManager *sought, const Names &names, Indices *pFirstEqual) {
    const auto nNames = static_cast<int32_t>(names.size());
    pFirstEqual->resize(names.size());
    return NamesManager_AddNames(sought, 0, nNames - 1, 0, names.data()) == 0 &&
           NamesManager_FindNameList(sought, names.data(), nNames, 0, pFirstEqual->data()) == 0;
}

// Walks through mgr until each of nWanted sought names, which differ, is found; sets their indices,
// which are -1 before. False without memory.
bool walk(NamesManager *mgr, NamesManager *sought, int64_t nWanted, Indices *pIndices) {
    bool bSearched = true;
    Indices matches;
    visitNames(mgr, [&](int32_t first, int32_t count, const char *const *names) {
        matches.resize(static_cast<size_t>(count));
        bSearched =
            NamesManager_FindNames(sought, names, count, kTextUnchanged, 0, matches.data()) == 0;
        for (int32_t i = 0; bSearched && i < count; ++i) {
            const int32_t match = matches[static_cast<size_t>(i)];
            if (match >= 0 && (*pIndices)[static_cast<size_t>(match)] < 0) {
                (*pIndices)[static_cast<size_t>(match)] = first + i;
                --nWanted;
            }
        }
        return bSearched && nWanted > 0;
    });
    return bSearched;
}

// Finds the lowest index of each name the other way round: the names of mgr are looked up among
// those sought. False without memory.
bool findByWalk(NamesManager *mgr, const Names &names, Indices *pIndices) {
    const ManagerHandle sought = makeManager();
    Indices firstEqual;
    if (!storeSought(sought.get(), names, &firstEqual)) { return false; }
    int64_t nWanted = 0;
    for (size_t i = 0; i < names.size(); ++i) {
        nWanted += static_cast<size_t>(firstEqual[i]) == i ? 1 : 0;
    }
    pIndices->assign(names.size(), -1);
    if (!walk(mgr, sought.get(), nWanted, pIndices)) { return false; }
    for (size_t i = 0; i < names.size(); ++i) {
        (*pIndices)[i] = (*pIndices)[static_cast<size_t>(firstEqual[i])];
    }
    return true;
}

void findByIndex(NamesManager *mgr, const Names &names, Indices *pIndices) {
    pIndices->resize(names.size());
    if (NamesManager_FindNameList(mgr, names.data(), static_cast<int32_t>(names.size()), 0,
                                  pIndices->data()) != 0) {
        throw std::bad_alloc();
    }
}

// Prints index, tab and name for each name. Returns how many names are missing.
int64_t printIndices(const Names &names, const Indices &indices, const Request &request,
                     Output *pOutput) {
    const int32_t base = request.bOneBased ? 1 : 0;
    for (size_t i = 0; i < names.size(); ++i) {
        pOutput->print("%" PRId32 "\t%s%c", indices[i] + (indices[i] >= 0 ? base : 0), names[i],
                       request.bNull ? '\0' : '\n');
    }
    pOutput->flush();
    return std::count(indices.begin(), indices.end(), -1);
}

// Both return how many names are missing.
int64_t findGiven(NamesManager *mgr, const Request &request) {
    Names names;
    names.reserve(request.names.size());
    for (const std::string &name : request.names) { names.push_back(name.c_str()); }
    Indices indices;
    if (!findByWalk(mgr, names, &indices)) { findByIndex(mgr, names, &indices); }
    Output output;
    return printIndices(names, indices, request, &output);
}

int64_t findListed(NamesManager *mgr, const Request &request) {
    int64_t nMissing = 0;
    int nWalks = 0;
    Indices indices;
    Output output;
    Input file("-");
    ListInput list(&file, request.bNull, true);
    while (list.next()) {
        const bool bWalk = list.names().size() < kNamesForIndex && nWalks++ < kWalksForIndex;
        if (!bWalk || !findByWalk(mgr, list.names(), &indices)) {
            findByIndex(mgr, list.names(), &indices);
        }
        nMissing += printIndices(list.names(), indices, request, &output);
    }
    return nMissing;
}

}  // namespace

int runImport(const Request &request) {
    const auto begin = std::chrono::steady_clock::now();
    Output output(request.image, request.list);  // first, to fail at once if it cannot be written
    if (output.isTerminal()) { fail(output.name(), "is a terminal, and an image is not text"); }
    const ManagerHandle mgr = makeManager();
    {
        Progress progress("storing");
        Input file(request.list);
        ListInput list(&file, request.bNull);
        storeList(mgr.get(), &list, &progress);
        progress.set("saving", mgr->nNames);
        saveImage(mgr.get(), &output);
    }
    const std::string summary = importSummary(
        mgr.get(), std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    if (output.isStandard()) {
        std::fputs(summary.c_str(), stderr);
    } else {
        Output().write(summary);
    }
    return kExitSuccess;
}

int runExport(const Request &request) {
    const ManagerHandle mgr = loadImage(request.image);
    if (!request.bNull) { refuseForLines(mgr.get(), request.image); }
    Output output(request.list, request.image);
    std::optional<Progress> progress;
    if (!output.isTerminal()) { progress.emplace("exporting"); }
    writeList(mgr.get(), request.bNull ? '\0' : '\n', &output);
    output.finish();
    return kExitSuccess;
}

int runFind(const Request &request) {
    if (request.image == "-" && request.names.empty()) {
        fail(inputName(request.image), "cannot be both the image and the names");
    }
    const ManagerHandle mgr = loadImage(request.image);
    const int64_t nMissing =
        request.names.empty() ? findListed(mgr.get(), request) : findGiven(mgr.get(), request);
    return nMissing > 0 ? kExitNo : kExitSuccess;
}

}  // namespace tool
