// import, export and find: between lists of names and images.
#include <algorithm>
#include <array>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <new>
#include <optional>
#include <string_view>

#include "tools/files.hpp"
#include "tools/list_reader.hpp"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

// ---- import ----

void storeList(NamesManager *mgr, const std::string &list, bool bNull, Progress &progress) {
    ListReader reader(list, bNull);
    while (reader.next()) {
        const int32_t first = NamesManager_GetNumNames(mgr);
        const auto last = static_cast<int32_t>(reader.namesRead() - 1);
        if (NamesManager_AddNames(mgr, first, last, 0, reader.names().data()) != 0) {
            fail(reader.name(),
                 "out of memory after " + reader.place(NamesManager_GetNumNames(mgr)));
        }
        progress.set("storing", reader.namesRead());
    }
}

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

// Why a list of lines would give the name back changed, or nothing if it would not.
const char *lineProblem(std::string_view name, bool bFirst) {
    if (name.find('\n') != std::string_view::npos || (!name.empty() && name.back() == '\r')) {
        return "holds a line break";
    }
    return bFirst && startsWithMark(name) ? "begins with a byte order mark" : nullptr;
}

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

void writeList(NamesManager *mgr, Output &output, char cEnd) {
    std::string text;
    visitNames(mgr, [&](int32_t, int32_t count, const char *const *names) {
        text.clear();
        for (int32_t i = 0; i < count; ++i) { (text += names[i]) += cEnd; }
        output.write(text);
        return true;
    });
}

// ---- find ----

// Building the index of 2,000,000 names takes ten times as long as a walk through them, and still
// six times as long where the walk looks for 100,000 names at once, more than a command line holds.
// Standard input may go on for ever: there the index pays from the first read on that brings so
// many names, or after so many walks.
constexpr size_t kNamesForIndex = 20000;
constexpr int kWalksForIndex = 4;

// The lowest index of each name, found the other way round: the names of the image are looked up
// among those sought. False where these cannot be stored for that.
bool findByWalk(NamesManager *mgr, const std::vector<const char *> &names,
                std::vector<int32_t> &indices) {
    constexpr int32_t kTextUnchanged = -2;
    const ManagerHandle sought = makeManager();
    const auto nSought = static_cast<int32_t>(names.size());
    std::vector<int32_t> alike(names.size());  // for each name the first one equal to it
    if (NamesManager_AddNames(sought.get(), 0, nSought - 1, 0, names.data()) != 0) { return false; }
    if (NamesManager_FindNameList(sought.get(), names.data(), nSought, 0, alike.data()) != 0) {
        return false;
    }

    indices.assign(names.size(), -1);
    int32_t nWanted = 0;
    for (int32_t i = 0; i < nSought; ++i) { nWanted += alike[static_cast<size_t>(i)] == i ? 1 : 0; }
    std::vector<int32_t> matches;
    bool bSearched = true;
    visitNames(mgr, [&](int32_t first, int32_t count, const char *const *texts) {
        matches.resize(static_cast<size_t>(count));
        bSearched = NamesManager_FindNames(sought.get(), texts, count, kTextUnchanged, 0,
                                           matches.data()) == 0;
        for (size_t i = 0; bSearched && i < matches.size(); ++i) {
            if (matches[i] < 0 || indices[static_cast<size_t>(matches[i])] >= 0) { continue; }
            indices[static_cast<size_t>(matches[i])] = first + static_cast<int32_t>(i);
            --nWanted;
        }
        return bSearched && nWanted > 0;
    });
    for (size_t i = 0; i < indices.size(); ++i) {
        indices[i] = indices[static_cast<size_t>(alike[i])];
    }
    return bSearched;
}

void findByIndex(NamesManager *mgr, const std::vector<const char *> &names,
                 std::vector<int32_t> &indices) {
    indices.resize(names.size());
    if (NamesManager_FindNameList(mgr, names.data(), static_cast<int32_t>(names.size()), 0,
                                  indices.data()) != 0) {
        throw std::bad_alloc();
    }
}

// Prints "index<TAB>name" for each name. Returns how many are missing.
int64_t printIndices(Output &output, const std::vector<const char *> &names,
                     const std::vector<int32_t> &indices, const FindOptions &options) {
    for (size_t i = 0; i < names.size(); ++i) {
        output.print("%" PRId32 "\t%s%c",
                     indices[i] + (options.bOneBased && indices[i] >= 0 ? 1 : 0), names[i],
                     options.bNull ? '\0' : '\n');
    }
    output.flush();
    return std::count(indices.begin(), indices.end(), -1);
}

int64_t findGiven(NamesManager *mgr, const std::vector<std::string> &names,
                  const FindOptions &options) {
    std::vector<const char *> texts;
    texts.reserve(names.size());
    for (const std::string &name : names) { texts.push_back(name.c_str()); }
    std::vector<int32_t> indices;
    if (!findByWalk(mgr, texts, indices)) { findByIndex(mgr, texts, indices); }
    Output output;
    return printIndices(output, texts, indices, options);
}

int64_t findListed(NamesManager *mgr, const FindOptions &options) {
    int64_t nMissing = 0;
    int nWalks = 0;
    std::vector<int32_t> indices;
    Output output;
    ListReader reader("-", options.bNull, true);
    while (reader.next()) {
        const bool bWalk = reader.names().size() < kNamesForIndex && nWalks++ < kWalksForIndex;
        if (!bWalk || !findByWalk(mgr, reader.names(), indices)) {
            findByIndex(mgr, reader.names(), indices);
        }
        nMissing += printIndices(output, reader.names(), indices, options);
    }
    return nMissing;
}

}  // namespace

int runImport(const std::string &list, const std::string &image, bool bNull) {
    const auto begin = std::chrono::steady_clock::now();
    Output output(image, list);  // first of all, to say at once if it cannot be written
    if (output.isTerminal()) { fail(output.name(), "is a terminal, and an image is not text"); }
    const ManagerHandle mgr = makeManager();
    {
        Progress progress("storing");
        storeList(mgr.get(), list, bNull, progress);
        progress.set("saving", mgr->nNames);
        saveImage(mgr.get(), output);
    }
    const std::string summary = importSummary(
        mgr.get(), std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    if (output.isStandard()) {
        std::fputs(summary.c_str(), stderr);
    } else {
        Output().write(summary);
    }
    return 0;
}

int runExport(const std::string &image, const std::string &list, bool bNull) {
    const ManagerHandle mgr = loadImage(image);
    if (!bNull) { refuseForLines(mgr.get(), image); }
    Output output(list, image);
    std::optional<Progress> progress;
    if (!output.isTerminal()) { progress.emplace("exporting"); }
    writeList(mgr.get(), output, bNull ? '\0' : '\n');
    output.finish();
    return 0;
}

int runFind(const std::string &image, const std::vector<std::string> &names,
            const FindOptions &options) {
    if (image == "-" && names.empty()) {
        fail(inputName(image), "cannot be both the image and the names");
    }
    const ManagerHandle mgr = loadImage(image);
    const int64_t nMissing =
        names.empty() ? findListed(mgr.get(), options) : findGiven(mgr.get(), names, options);
    return nMissing > 0 ? 1 : 0;
}

}  // namespace tool
