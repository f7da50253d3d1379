// The built-in self-check. Most scenarios are tables of steps: each runs one operation, its status
// and what can then be read are compared with the table, and the audit is run. Lists in these
// tables have a bar after each name; "x*300|" is a name of 300 characters, and "00000..00299/2|"
// stands for every second number of five digits in that range.
//
// All of it holds on any host: names are never repeated, because maps differ in what they do with
// equal keys, and only services that every host has are used. NamesManager_WriteNameToText and
// NamesManager_Load need a HostText and a HostInputStream, which only the host can make: they are
// run where this file is compiled with NAMES_HOST_HAS_MAKERS defined, for a host with the makers
// that the shipped one has.
#include <climits>
#include <cstdio>
#include <cstring>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/host_problem.h"
#include "host/host_report.h"
#include "names/audit.hpp"

namespace names {

namespace {

struct ManagerRelease {
    void operator()(NamesManager *mgr) const { NamesManager_Destroy(mgr); }
};
using ManagerHandle = std::unique_ptr<NamesManager, ManagerRelease>;

// One run of a scenario.
struct Run {
    const char *szTitle;
    bool bPositions;  // managers are switched to individual positions
    bool bIndexed;    // all names are looked up after each change, so that each meets an index;
                      // buffers are given where both are taken
    ManagerHandle mgr;
    ManagerHandle other;
    int32_t nFailed;
};

void expectEqual(Run &run, int32_t nLine, const char *szWhat, int64_t nExpected, int64_t nFound) {
    if (nExpected != nFound) {
        ++run.nFailed;
        Host_ReportAssertion(kSourceTag, nLine, 0, "self-check, %s, %s: expected %lld, found %lld",
                             run.szTitle, szWhat, static_cast<long long>(nExpected),
                             static_cast<long long>(nFound));
    }
}

std::string withBars(std::string text) {
    std::replace(text.begin(), text.end(), '\0', '|');
    return text;
}

void expectText(Run &run, int32_t nLine, const std::string &expected, const std::string &found) {
    run.nFailed += expected == found ? 0 : 1;
    Host_AssertStringsEqual(kSourceTag, nLine, withBars(expected).c_str(), withBars(found).c_str());
}

// The audit reports what it finds.
void expectSound(Run &run, const ManagerHandle &mgr) {
    run.nFailed += countViolations(mgr.get());
}

// The operation behind the line succeeded, and the manager is sound.
void expectDone(Run &run, int32_t nLine, int32_t nStatus) {
    expectEqual(run, nLine, "status", 0, nStatus);
    expectSound(run, run.mgr);
}

// The names of a list, NUL-terminated and back to back.
struct Words {
    explicit Words(const std::string &list);
    Words(const Words &) = delete;
    Words &operator=(const Words &) = delete;
    void append(const std::string &word);
    std::string text;
    std::vector<const char *> names;
};

void Words::append(const std::string &word) {
    char c = 0;
    int nTimes = 0;
    int nNumber = 0;
    int nLast = 0;
    int nStep = 1;
    if (sscanf(word.c_str(), "%c*%d", &c, &nTimes) == 2) {
        text.append(static_cast<size_t>(nTimes), c).append(1, '\0');
    } else if (sscanf(word.c_str(), "%d..%d/%d", &nNumber, &nLast, &nStep) >= 2) {
        for (; nNumber <= nLast; nNumber += nStep) {
            const std::string digits = std::to_string(100000 + nNumber);
            text.append(digits, 1).append(1, '\0');
        }
    } else {
        text.append(word).append(1, '\0');
    }
}

Words::Words(const std::string &list) {
    for (size_t nAt = 0; nAt < list.size();) {
        const size_t nEnd = std::min(list.find('|', nAt), list.size());
        append(list.substr(nAt, nEnd - nAt));
        nAt = nEnd + 1;
    }
    for (size_t nAt = 0; nAt < text.size(); nAt = text.find('\0', nAt) + 1) {
        names.push_back(text.data() + nAt);
    }
}

// The bytes of all names. The other ways of reading, and looking up in an indexed run, must agree
// with them.
std::string readAll(Run &run) {
    NamesManager *mgr = run.mgr.get();
    const int32_t iLast = NamesManager_GetNumNames(mgr) - 1;
    uint64_t nBytes = 0;
    NamesManager_GetNames(mgr, 0, iLast, 0, 0, 0, 0, nullptr, 0, &nBytes);
    std::string text(nBytes, '#');
    std::vector<const char *> names(static_cast<size_t>(iLast) + 1);
    std::vector<int32_t> lengths(names.size());
    std::vector<int32_t> indices(names.size());
    int32_t nStatus =
        NamesManager_GetNames(mgr, 0, iLast, 0, 0, 0, 0, text.data(), nBytes, nullptr);
    nStatus += NamesManager_GetNamePointers(mgr, 0, iLast, 0, names.data());
    nStatus += run.bIndexed && nStatus == 0
                   ? NamesManager_FindNameList(mgr, names.data(), iLast + 1, 0, indices.data())
                   : 0;
    NamesManager_GetNameLengths(mgr, 0, iLast, 0, lengths.data());
    expectEqual(run, __LINE__, "status of reading all names", 0, nStatus);
    int32_t nAgreed = 0;
    size_t nAt = 0;
    for (size_t i = 0; i < names.size() && nAt < text.size() && nStatus == 0; ++i) {
        const size_t nLength = std::strlen(text.c_str() + nAt);
        const bool bFound = !run.bIndexed || indices[i] == static_cast<int32_t>(i);
        nAgreed += bFound && lengths[i] == static_cast<int32_t>(nLength) &&
                           text.compare(nAt, nLength, names[i]) == 0
                       ? 1
                       : 0;
        nAt += nLength + 1;
    }
    expectEqual(run, __LINE__, "names on which all readers agree", iLast + 1, nAgreed);
    return text;
}

// The segments, then bytes used and size of each block.
std::string layoutOf(const NamesManager *mgr) {
    std::string layout = mgr->pSegments == nullptr ? "positions" : "";
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        layout += std::to_string(mgr->pSegments[s].iFirst) + "-" +
                  std::to_string(mgr->pSegments[s].iLast) + " ";
    }
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        layout.append("+")
            .append(std::to_string(mgr->pBlocks[b].nUsed))
            .append("/")
            .append(std::to_string(mgr->pBlocks[b].nSize));
    }
    return layout;
}

// ---- Steps ----

// A change is expected to leave a list of names and, where something stands behind its last bar, a
// layout that begins so in segment mode. A reading is expected to tell a text.
// clang-format off
enum Operation {
    // Changes
    kStart, kAdd, kAddBuffer, kAddField, kCopyName, kCopyOwnName, kCopyAll, kSwap, kFirstName, kGenerate, kMakeExist, kClear, kSwitch,
    kReleaseBlocks, kRemove, kRemoveEach, kRemoveListed, kReverse, kLoad,
    // Readings
    kName, kText, kFields, kWalk, kFind, kIndex, kBuildIndex, kDuplicates, kLongest, kKnownLongest, kBlocks, kImage, kNoImage
};
// clang-format on

struct Step {
    int32_t nLine;
    Operation operation;
    int32_t first, last, bOneBased;
    const char *szInput;
    int32_t nStatus;
    const char *szExpected;
    int32_t nWidth = -1, bPad = 0, bTruncate = 0;
};

int32_t add(Run &run, const Step &step, const Words &words) {
    NamesManager *mgr = run.mgr.get();
    if (step.first == step.last) {
        return NamesManager_AddName(mgr, step.first, step.bOneBased, words.names[0]);
    }
    return run.bIndexed ? NamesManager_AddNamesFromBuffer(mgr, step.first, step.last,
                                                          step.bOneBased, words.text.c_str())
                        : NamesManager_AddNames(mgr, step.first, step.last, step.bOneBased,
                                                words.names.data());
}

int32_t removeListed(NamesManager *mgr, const Words &words) {
    std::vector<int32_t> indices;
    std::transform(words.names.begin(), words.names.end(), std::back_inserter(indices),
                   [](const char *sz) { return std::stoi(sz); });
    return NamesManager_RemoveNamesByIndices(mgr, indices.data(),
                                             static_cast<int32_t>(indices.size()));
}

// Gives the manager its own names the other way round.
int32_t reverse(NamesManager *mgr) {
    std::vector<const char *> names(static_cast<size_t>(NamesManager_GetNumNames(mgr)));
    const int32_t iLast = static_cast<int32_t>(names.size()) - 1;
    const int32_t nStatus = NamesManager_GetNamePointers(mgr, 0, iLast, 0, names.data());
    std::reverse(names.begin(), names.end());
    return nStatus + NamesManager_AddNames(mgr, 0, iLast, 0, names.data());
}

// An output stream that keeps what is written and fails at the write where nLeft has come to 0.
struct Image {
    HostOutputStream stream;  // first, so that its address is the image's
    int32_t nLeft;
    uint64_t nBytes;
    char aBytes[1024];
};

constexpr int32_t kWriteError = -77;

int32_t writeImage(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    Image *pImage = reinterpret_cast<Image *>(pStream);
    if (pImage->nLeft-- == 0 || nBytes > sizeof pImage->aBytes - pImage->nBytes) {
        return kWriteError;
    }
    std::memcpy(pImage->aBytes + pImage->nBytes, pData, nBytes);
    pImage->nBytes += nBytes;
    return 0;
}

constexpr HostOutputStreamOps kImageOps = {writeImage};

#ifdef NAMES_HOST_HAS_MAKERS
// Saves the manager and loads the image, less nMissing bytes at its end, into the other one, which
// takes its place. 1 where that is refused.
int32_t load(Run &run, uint64_t nMissing) {
    Image image = {{&kImageOps}, INT_MAX, 0, {}};
    if (NamesManager_Save(run.mgr.get(), nullptr, &image.stream) != 0) { return -1; }
    HostInputStream *pStream =
        HostInputStream_CreateInMemory(image.aBytes, image.nBytes - nMissing);
    if (pStream == nullptr) { throw std::bad_alloc(); }
    const int32_t nStatus = NamesManager_Load(run.other.get(), nullptr, pStream);
    HostInputStream_Close(pStream);
    std::swap(run.mgr, run.other);
    return nStatus != 0 ? 1 : 0;
}
#endif

int32_t change(Run &run, const Step &step) {
    const Words words(step.szInput);
    NamesManager *mgr = run.mgr.get();
    NamesManager *other = run.other.get();
    const int32_t b = step.bOneBased;
    int32_t nStatus = 0;
    switch (step.operation) {
    case kStart:
        nStatus = NamesManager_Clear(mgr) + add(run, step, words);
        return nStatus + (run.bPositions ? NamesManager_StoreIndividualNamePositions(mgr) : 0);
    case kAdd: return add(run, step, words);
    case kAddBuffer:
        return NamesManager_AddNamesFromBuffer(mgr, step.first, step.last, b, words.text.c_str());
    case kAddField:
        return NamesManager_AddNameWithMaxLength(mgr, step.first, b, words.text.c_str(),
                                                 step.nWidth);
    case kCopyName:
        return words.names.empty() ? NamesManager_CopyName(mgr, step.first, b, other, step.last, b)
                                   : NamesManager_CopyNameWithPrefix(mgr, step.first, b, other,
                                                                     step.last, b, words.names[0]);
    case kCopyOwnName: return NamesManager_CopyName(mgr, step.first, b, mgr, step.last, b);
    case kCopyAll: nStatus = NamesManager_Copy(other, mgr); [[fallthrough]];
    case kSwap: std::swap(run.mgr, run.other); return nStatus;
    case kFirstName: NamesManager_SetFirstGeneratedName(mgr, words.names[0]); return 0;
    case kGenerate: return NamesManager_GenerateNames(mgr, step.last);
    case kMakeExist: return NamesManager_GetNamePointers(mgr, step.first, step.last, b, nullptr);
    case kClear: return NamesManager_Clear(mgr);
    case kSwitch: return NamesManager_StoreIndividualNamePositions(mgr);
    case kReleaseBlocks: return NamesManager_ReleaseEmptyBlocks(mgr);
    case kRemove: return NamesManager_RemoveNames(mgr, step.first, step.last, b);
    case kRemoveEach:
        for (int32_t i = step.first; i < NamesManager_GetNumNames(mgr); ++i) {
            nStatus += NamesManager_RemoveNames(mgr, i, i, b);
        }
        return nStatus;
    case kRemoveListed: return removeListed(mgr, words);
    case kReverse: return reverse(mgr);
#ifdef NAMES_HOST_HAS_MAKERS
    case kLoad: return load(run, static_cast<uint64_t>(step.first));
#endif
    default: return -1;
    }
}

int32_t countOf(const Step &step) {
    return static_cast<int32_t>(std::clamp<int64_t>(int64_t{step.last} - step.first + 1, 0, 1000));
}

// szInput tells the size of the buffer.
int32_t readFields(NamesManager *mgr, const Step &step, std::string *pTold) {
    std::string buffer(std::stoul(step.szInput), '#');
    uint64_t nSize = 0;
    const int32_t nStatus = step.first == step.last
                                ? NamesManager_GetNameIntoBuffer(
                                      mgr, step.first, step.bOneBased, step.bPad, step.bTruncate,
                                      step.nWidth, buffer.data(), buffer.size(), &nSize)
                                : NamesManager_GetNames(mgr, step.first, step.last, step.bOneBased,
                                                        step.bPad, step.bTruncate, step.nWidth,
                                                        buffer.data(), buffer.size(), &nSize);
    *pTold = std::to_string(nSize) + " " + withBars(buffer);
    return nStatus;
}

#ifdef NAMES_HOST_HAS_MAKERS
// bTruncate asks for blanks behind the name.
int32_t writeToText(NamesManager *mgr, const Step &step, std::string *pTold) {
    HostText *pText = HostText_Create();
    if (pText == nullptr) { throw std::bad_alloc(); }
    const int32_t nStatus = NamesManager_WriteNameToText(
        mgr, step.first, step.bOneBased, step.bTruncate, step.bPad, step.nWidth, pText);
    *pTold = HostText_GetString(pText);
    HostText_Destroy(pText);
    return nStatus;
}
#endif

// Reads a range as pointers, or into a buffer if bPad is set, and tells its first name and the
// cursor.
int32_t walk(NamesManager *mgr, const Step &step, std::string *pTold) {
    std::vector<const char *> names(static_cast<size_t>(countOf(step)), "");
    std::string buffer(6 * names.size(), '#');
    const int32_t nStatus =
        step.bPad == 0 ? NamesManager_GetNamePointers(mgr, step.first, step.last, 0, names.data())
                       : NamesManager_GetNames(mgr, step.first, step.last, 0, 0, 0, 0,
                                               buffer.data(), buffer.size(), nullptr);
    *pTold = std::string(step.bPad == 0 ? names[0] : buffer.c_str()) + ", cursor " +
             std::to_string(mgr->iCursorName) + ", misses " + std::to_string(mgr->nCursorMisses) +
             (mgr->pSegments == nullptr ? ", positions" : "");
    return nStatus;
}

// Looks names up, delimited by nWidth, through every entry point that takes them so.
int32_t find(Run &run, const Step &step, std::string *pTold) {
    NamesManager *mgr = run.mgr.get();
    const Words words(step.szInput);
    const int32_t nNames = static_cast<int32_t>(words.names.size());
    std::vector<int32_t> indices(words.names.size());
    int32_t nStatus = NamesManager_FindNames(mgr, words.names.data(), nNames, step.nWidth,
                                             step.bOneBased, indices.data());
    if (step.nWidth == -1) {
        nStatus += NamesManager_FindNameList(mgr, words.names.data(), nNames, step.bOneBased,
                                             indices.data());
    }
    for (size_t i = 0; i < indices.size(); ++i) {
        const int32_t iSingle =
            step.nWidth == -1
                ? NamesManager_FindName(mgr, words.names[i], step.bOneBased)
                : NamesManager_FindNameInField(mgr, words.names[i], step.nWidth, step.bOneBased);
        expectEqual(run, step.nLine, "index of a single name", indices[i], iSingle);
        *pTold += std::to_string(indices[i]) + "|";
    }
    return nStatus;
}

// nWidth is the room for the repeated name; "~" stands for a NULL, which a buffer cannot hold.
int32_t checkDuplicates(Run &run, const Step &step, std::string *pTold) {
    NamesManager *mgr = run.mgr.get();
    Words words(step.szInput);
    const bool bBuffer = run.bIndexed && std::strchr(step.szInput, '~') == nullptr;
    std::vector<int32_t> lengths;
    for (const char *&szName : words.names) {
        lengths.push_back(static_cast<int32_t>(std::strlen(szName)));
        szName = *szName == '~' ? nullptr : szName;
    }
    int32_t aFound[3] = {-7, -7, -7};
    char szFound[64] = "-";
    const int32_t nStatus =
        bBuffer
            ? NamesManager_CheckDuplicateNamesInBuffer(mgr, step.first, step.last, step.bOneBased,
                                                       words.text.c_str(), &aFound[0], &aFound[1],
                                                       &aFound[2], szFound, step.nWidth)
            : NamesManager_CheckDuplicateNames(mgr, step.first, step.last, step.bOneBased,
                                               words.names.data(), lengths.data(), &aFound[0],
                                               &aFound[1], &aFound[2], szFound, step.nWidth);
    *pTold = std::to_string(aFound[0]) + " " + std::to_string(aFound[1]) + " " +
             std::to_string(aFound[2]) + " " + szFound;
    return nStatus;
}

// Saves a manager of one block, with a failure at the first write, at the second and so on until
// all succeed. Tells the size of the image, the name format, the text of the block and all numbers:
// of the header, the block, the segments or positions, and the cursor.
int32_t saveImage(NamesManager *mgr, std::string *pTold) {
    Image image = {{&kImageOps}, 0, 0, {}};
    int32_t nStatus = kWriteError;
    for (int32_t nWrites = 0; nStatus == kWriteError && nWrites < 100; ++nWrites) {
        image.nLeft = nWrites;
        image.nBytes = 0;
        nStatus = NamesManager_Save(mgr, nullptr, &image.stream);
    }
    const uint64_t nCursor = mgr != nullptr ? 20 : 0;
    const uint64_t nUsed = mgr != nullptr ? static_cast<uint64_t>(mgr->pBlocks[0].nUsed) : 0;
    if (nStatus != 0 || image.nBytes < nCursor + nUsed) { return -1; }
    const uint64_t nTextEnd = image.nBytes - nCursor;
    const uint64_t nText = nTextEnd - nUsed;
    *pTold = std::to_string(image.nBytes) + " " + (image.aBytes + 24) + " " +
             withBars({image.aBytes + nText, image.aBytes + nTextEnd});
    const uint64_t aParts[][2] = {
        {0, 24}, {56, 60}, {100, 112}, {116, nText}, {nTextEnd, image.nBytes}};
    for (const auto &[nBegin, nEnd] : aParts) {
        for (uint64_t nAt = nBegin; nAt < std::min(nEnd, image.nBytes); nAt += sizeof(int32_t)) {
            int32_t nNumber = 0;
            std::memcpy(&nNumber, image.aBytes + nAt, sizeof nNumber);
            pTold->append(" ").append(std::to_string(nNumber));
        }
    }
    return 0;
}

int32_t read(Run &run, const Step &step, std::string *pTold) {
    NamesManager *mgr = run.mgr.get();
    const char *szName = nullptr;
    int32_t nLongest = 0;
    switch (step.operation) {
    case kName:
        szName = NamesManager_GetName(mgr, step.first, step.bOneBased);
        *pTold = szName != nullptr ? szName : "NULL";
        return 0;
#ifdef NAMES_HOST_HAS_MAKERS
    case kText: return writeToText(mgr, step, pTold);
#endif
    case kFields: return readFields(mgr, step, pTold);
    case kWalk: return walk(mgr, step, pTold);
    case kFind: return find(run, step, pTold);
    case kIndex: *pTold = mgr->pLookupIndex != nullptr ? "present" : "absent"; return 0;
    case kBuildIndex: return NamesManager_FindNames(mgr, nullptr, 0, -1, 0, nullptr);
    case kDuplicates: return checkDuplicates(run, step, pTold);
    case kLongest:
        nLongest = NamesManager_GetMaxNameLength(mgr);
        expectEqual(run, step.nLine, "longest name", nLongest, mgr->nMaxNameLength);
        [[fallthrough]];
    case kKnownLongest:
        *pTold =
            std::to_string(mgr->nMaxNameLength) + " of " + std::to_string(mgr->nMaxNameLengthCount);
        return 0;
    case kBlocks: *pTold = layoutOf(mgr).substr(layoutOf(mgr).find('+')); return 0;
    case kImage: return saveImage(mgr, pTold);
    case kNoImage: return saveImage(nullptr, pTold);
    default: return -1;
    }
}

void runStep(Run &run, const Step &step) {
    const bool bReads = step.operation >= kName;
    std::string told;
    std::string expected = step.szExpected;
    expectEqual(run, step.nLine, "status", step.nStatus,
                bReads ? read(run, step, &told) : change(run, step));
    if (!bReads) {
        const std::string layout = expected.substr(expected.rfind('|') + 1);
        if (!layout.empty() && !run.bPositions) {
            expectText(run, step.nLine, layout, layoutOf(run.mgr.get()).substr(0, layout.size()));
        }
        told = readAll(run);
        expected = Words(expected.substr(0, expected.rfind('|') + 1)).text;
    }
    expectText(run, step.nLine, expected, told);
    expectSound(run, run.mgr);
    expectSound(run, run.other);
}

// ---- The tables ----

constexpr char kFive[] = "one|two|three|four|five|";
constexpr char kTen[] = "one|two|three|four|five|six|seven|eight|nine|ten|";
constexpr char kFifteen[] =
    "one|two|three|four|five|six|seven|eight|nine|ten|eleven|twelve|thirteen|fourteen|fifteen|";
constexpr char kNumbers[] = "0|1|2|3|4|5|6|7|8|9|10|11|12|13|14|";
constexpr char kLetters[] = "aaa|bbb|ccc|ddd|eee|fff|ggg|hhh|iii|jjj|";

const Step kStoring[] = {
    {__LINE__, kStart, 1, 5, 1, kFive, 0, "one|two|three|four|five|0-4 +24/4096"},
    {__LINE__, kAdd, 6, 10, 1, "six|seven|eight|nine|ten|", 0,
     "one|two|three|four|five|six|seven|eight|nine|ten|0-9 +49/4096"},
    {__LINE__, kStart, 0, 4, 0, kFive, 0, kFive},
    {__LINE__, kAdd, 2, 6, 1, "six|seven|eight|nine|ten|", 0,
     "one|six|seven|eight|nine|ten|0-5 +29/4096"},
    {__LINE__, kAdd, 2, 5, 1, "eleven|twelve|13|fourteen|", 0,
     "one|eleven|twelve|13|fourteen|ten|0-0 1-4 5-5 +55/4096"},
    {__LINE__, kAdd, 0, 14, 0, kFifteen, 0, kFifteen},
    {__LINE__, kAdd, 15, 14, 0, "", 0, kFifteen},
    {__LINE__, kStart, 0, 2, 0, "hello world   |   |  in  side\t |", 0,
     "hello world||  in  side\t|"},
    {__LINE__, kAdd, 0, 2, 0, "hello world   |   |  in  side\t |", 0, "hello world||  in  side\t|"},
    {__LINE__, kStart, 0, 0, 0, "x|", 0, "x|"},
    {__LINE__, kAddField, 0, 0, 0, "hello world   ", 0, "hello world|", 14},
    {__LINE__, kAddField, 0, 0, 0, "hello world   ", 0, "hello|", 5},
    {__LINE__, kAddField, 0, 0, 0, "hello world   ", 0, "|", 0},
    {__LINE__, kAddField, 2, 2, 1, "hello world   ", 0, "|hello world|", 40},
    {__LINE__, kAddBuffer, 2, 2, 1, "one |", 0, "|one|"},
    {__LINE__, kAddBuffer, 2, 1, 1, "", 0, "|one|"},
};

const Step kReplacing[] = {
    {__LINE__, kStart, 0, 9, 0, kLetters, 0, kLetters},
    {__LINE__, kAdd, 5, 5, 0, "FFF|", 0, "aaa|bbb|ccc|ddd|eee|FFF|ggg|hhh|iii|jjj|0-9 +40/4096"},
    {__LINE__, kAdd, 5, 5, 0, "F|", 0, "aaa|bbb|ccc|ddd|eee|F|ggg|hhh|iii|jjj|0-5 6-9 +40/4096"},
    {__LINE__, kStart, 0, 9, 0, kLetters, 0, kLetters},
    {__LINE__, kAdd, 6, 6, 1, "long|", 0,
     "aaa|bbb|ccc|ddd|eee|long|ggg|hhh|iii|jjj|0-4 5-5 6-9 +45/4096"},
    {__LINE__, kFind, 0, 0, 0, "fff|long|", 0, "-1|5|"},
    {__LINE__, kStart, 0, 9, 0, kLetters, 0, kLetters},
    {__LINE__, kAdd, 9, 9, 0, "long|", 0, "aaa|bbb|ccc|ddd|eee|fff|ggg|hhh|iii|long|0-9 +41/4096"},
    {__LINE__, kAdd, 1, 1, 0, "longb|", 0,
     "aaa|longb|ccc|ddd|eee|fff|ggg|hhh|iii|long|0-0 1-1 2-9 +47/4096"},
    {__LINE__, kAdd, 3, 3, 0, "longd|", 0,
     "aaa|longb|ccc|longd|eee|fff|ggg|hhh|iii|long|0-0 1-1 2-2 3-3 4-9 +53/4096"},
    {__LINE__, kAdd, 5, 5, 0, "longf|", 0,
     "aaa|longb|ccc|longd|eee|longf|ggg|hhh|iii|long|positions+59/4096"},
};

const Step kGenerating[] = {
    {__LINE__, kGenerate, 0, 3, 0, "", 0, "name1|name2|name3|"},
    {__LINE__, kGenerate, 0, 2, 0, "", 0, "name1|name2|name3|"},
    {__LINE__, kStart, 0, 0, 0, "name2|", 0, "name2|"},
    {__LINE__, kGenerate, 0, 2, 0, "", 0, "name2|name3|"},
    {__LINE__, kMakeExist, 3, 3, 1, "", 0, "name2|name3|name4|"},
    {__LINE__, kClear, 0, 0, 0, "", 0, "+0/4096"},
    {__LINE__, kAdd, 4, 4, 0, "given|", 0, "name1|name2|name3|name4|given|"},
    {__LINE__, kName, 6, 6, 1, "", 0, "name6"},
    {__LINE__, kFields, 6, 7, 0, "12", 0, "12 name7|name8|"},
    {__LINE__, kFirstName, 0, 0, 0, "Hello World|", 0,
     "name1|name2|name3|name4|given|name6|name7|name8|"},
    {__LINE__, kClear, 0, 0, 0, "", 0, "+0/4096"},
    {__LINE__, kGenerate, 0, 2, 0, "", 0, "Hello World|name2|"},
    {__LINE__, kRemove, 0, 1, 0, "", 0, "+0/4096"},
    {__LINE__, kGenerate, 0, 1, 0, "", 0, "name2|"},
};

const Step kBlanksInside[] = {
    {__LINE__, kGenerate, 0, 2, 0, "", 0, "wamalamadingdong       1|wamalamadingdong       2|"},
};

const Step kFieldsOfNames[] = {
    {__LINE__, kStart, 0, 3, 0, "one|name5|fourteen chars||", 0, "one|name5|fourteen chars||"},
    {__LINE__, kFields, 0, 3, 0, "0", 0, "26 "},
    {__LINE__, kFields, 0, 3, 0, "25", 3, "26 #########################"},
    {__LINE__, kFields, 2, 3, 1, "22", 0, "21 name5|fourteen chars|#"},
    {__LINE__, kFields, 2, 2, 1, "6", 0, "6 name5|"},
    {__LINE__, kFields, 0, 3, 0, "7", 0, "7 o|n|f||", 2, 0, 1},
    {__LINE__, kFields, 0, 3, 0, "44", 0, "44 one       |name5     |fourteen c|          |", 11, 1,
     1},
    {__LINE__, kFields, 0, 3, 0, "48", 0, "48 one       |name5     |fourteen chars|          |", 11,
     1, 0},
    {__LINE__, kFields, 2, 1, 0, "3", 0, "0 ###"},
};

const Step kReadingInOrder[] = {
    {__LINE__, kAdd, 0, 299, 0, "00000..00299|", 0,
     "00000..00299|0-127 128-255 256-299 +1800/4096"},
    {__LINE__, kLongest, 0, 0, 0, "", 0, "5 of 300"},
    {__LINE__, kWalk, 0, 9, 0, "", 0, "00000, cursor 10, misses 0"},
    {__LINE__, kWalk, 10, 127, 0, "", 0, "00010, cursor -1, misses 0", 0, 1},
    {__LINE__, kWalk, 128, 130, 0, "", 0, "00128, cursor 131, misses 1", 0, 1},
    {__LINE__, kWalk, 131, 260, 0, "", 0, "00131, cursor 261, misses 0", 0, 1},
    {__LINE__, kWalk, 200, 200, 0, "", 0, "00200, cursor 201, misses 1"},
    {__LINE__, kFields, 7, 8, 0, "0", 0, "12 "},
    {__LINE__, kFields, 7, 8, 0, "11", 3, "12 ###########"},
    {__LINE__, kWalk, 50, 50, 0, "", 0, "00050, cursor 51, misses 2"},
    {__LINE__, kWalk, 0, 0, 0, "", 0, "00000, cursor 1, misses 0"},
    {__LINE__, kWalk, 50, 59, 0, "", 0, "00050, cursor 60, misses 1"},
    {__LINE__, kWalk, 40, 49, 0, "", 0, "00040, cursor 50, misses 2", 0, 1},
    {__LINE__, kWalk, 30, 39, 0, "", 0, "00030, cursor 40, misses 3"},
    {__LINE__, kWalk, 20, 29, 0, "", 0, "00020, cursor 30, misses 4", 0, 1},
    {__LINE__, kWalk, 10, 19, 0, "", 0, "00010, cursor -1, misses 5, positions", 0, 1},
};

const Step kLongestNames[] = {
    {__LINE__, kLongest, 0, 0, 0, "", 0, "0 of 0"},
    {__LINE__, kStart, 1, 5, 1, kFive, 0, kFive},
    {__LINE__, kKnownLongest, 0, 0, 0, "", 0, "-1 of 0"},
    {__LINE__, kLongest, 0, 0, 0, "", 0, "5 of 1"},
    {__LINE__, kAdd, 6, 10, 1, "six|seven|eight|nine|ten|", 0, kTen},
    {__LINE__, kKnownLongest, 0, 0, 0, "", 0, "5 of 3"},
    {__LINE__, kAdd, 11, 15, 1, "eleven|twelve|thirteen|fourteen|fifteen|", 0, kFifteen},
    {__LINE__, kKnownLongest, 0, 0, 0, "", 0, "8 of 2"},
    {__LINE__, kRemove, 12, 12, 0, "", 0,
     "one|two|three|four|five|six|seven|eight|nine|ten|eleven|twelve|fourteen|fifteen|"},
    {__LINE__, kKnownLongest, 0, 0, 0, "", 0, "8 of 1"},
    {__LINE__, kRemoveListed, 0, 0, 0, "12|", 0,
     "one|two|three|four|five|six|seven|eight|nine|ten|eleven|twelve|fifteen|"},
    {__LINE__, kLongest, 0, 0, 0, "", 0, "7 of 1"},
    {__LINE__, kAdd, 0, 14, 0, kNumbers, 0, kNumbers},
    {__LINE__, kLongest, 0, 0, 0, "", 0, "2 of 5"},
    {__LINE__, kAdd, 0, 0, 0, "longer|", 0, "longer|1|2|3|4|5|6|7|8|9|10|11|12|13|14|"},
    {__LINE__, kKnownLongest, 0, 0, 0, "", 0, "6 of 1"},
    {__LINE__, kAdd, 0, 0, 0, "x|", 0, "x|1|2|3|4|5|6|7|8|9|10|11|12|13|14|"},
    {__LINE__, kKnownLongest, 0, 0, 0, "", 0, "-1 of 0"},
};

const Step kRepeatedNames[] = {
    {__LINE__, kDuplicates, 0, 2, 0, "name1|name2|name1|", 0, "1 0 2 name1", 20},
    {__LINE__, kDuplicates, 1, 3, 1, "name1|name2|name1|", 0, "1 1 3 name1", 20},
    {__LINE__, kDuplicates, 0, 1, 0, "name1|name1 \t|", 0, "1 0 1 name1", 20},
    {__LINE__, kDuplicates, 0, 1, 0, "hello world|hello world|", 0, "1 0 1 hel", 4},
    {__LINE__, kDuplicates, 0, 2, 0, "~|a|~|", 0, "0 -7 -7 -", 20},
    {__LINE__, kDuplicates, 0, -1, 0, "", 0, "0 -7 -7 -", 20},
    {__LINE__, kStart, 0, 9, 0, kTen, 0, kTen},
    {__LINE__, kDuplicates, 5, 5, 0, "two|", 0, "1 1 5 two", 20},
    {__LINE__, kDuplicates, 6, 6, 1, "six|", 0, "0 -7 -7 -", 20},
    {__LINE__, kDuplicates, 0, 9, 0, kTen, 0, "0 -7 -7 -", 20},
    {__LINE__, kDuplicates, 12, 12, 0, "name12|", 0, "1 11 12 name12", 20},
};

const Step kLookingUp[] = {
    {__LINE__, kFind, 0, 0, 0, "one||", 0, "-1|-1|"},
    {__LINE__, kIndex, 0, 0, 0, "", 0, "absent"},
    {__LINE__, kStart, 0, 14, 0, kFifteen, 0, kFifteen},
    {__LINE__, kIndex, 0, 0, 0, "", 0, "absent"},
    {__LINE__, kFind, 0, 0, 1, "one|zero|Nine|nine  |", 0, "1|-1|-1|9|"},
    {__LINE__, kRemove, 15, 20, 0, "", 0, kFifteen},
    {__LINE__, kIndex, 0, 0, 0, "", 0, "present"},
    {__LINE__, kRemove, 0, 4, 0, "", 0,
     "six|seven|eight|nine|ten|eleven|twelve|thirteen|fourteen|fifteen|"},
    {__LINE__, kIndex, 0, 0, 0, "", 0, "absent"},
    {__LINE__, kFind, 0, 0, 0, "six|seven|eight|nine|ten|eleven|twelve|thirteen|fourteen|fifteen|",
     0, "0|1|2|3|4|5|6|7|8|9|"},
    {__LINE__, kAdd, 0, 14, 0, kNumbers, 0, kNumbers},
    {__LINE__, kIndex, 0, 0, 0, "", 0, "present"},
    {__LINE__, kFind, 0, 0, 0, "14|0|six|9|", 0, "14|0|-1|9|"},
    {__LINE__, kStart, 0, 2, 0, "hello world|name3||", 0, "hello world|name3||"},
    {__LINE__, kBuildIndex, 0, 0, 0, "", 0, ""},
    {__LINE__, kIndex, 0, 0, 0, "", 0, "present"},
    {__LINE__, kFind, 0, 0, 0, "hello world   |   |", 0, "0|2|"},
    {__LINE__, kFind, 0, 0, 0, "hello world   |name3|", 0, "-1|1|", -2},
    {__LINE__, kFind, 0, 0, 1, "name345|name3|hello world|", 0, "2|2|-1|", 5},
    {__LINE__, kFind, 0, 0, 1, "whatever|", 0, "3|", 0},
};

const Step kRemoving[] = {
    {__LINE__, kStart, 0, 14, 0, kFifteen, 0, kFifteen},
    {__LINE__, kRemove, 0, 4, 0, "", 0,
     "six|seven|eight|nine|ten|eleven|twelve|thirteen|fourteen|fifteen|"},
    {__LINE__, kRemove, 6, 10, 1, "", 0, "six|seven|eight|nine|ten|0-4 +49/4096"},
    {__LINE__, kStart, 0, 14, 0, kFifteen, 0, kFifteen},
    {__LINE__, kRemove, 6, 10, 1, "", 0,
     "one|two|three|four|five|eleven|twelve|thirteen|fourteen|fifteen|0-4 5-9 +89/4096"},
    {__LINE__, kStart, 0, 14, 0, kFifteen, 0, kFifteen},
    {__LINE__, kRemove, 4, 5, 1, "", 0,
     "one|two|three|six|seven|eight|nine|ten|eleven|twelve|thirteen|fourteen|fifteen|"},
    {__LINE__, kRemove, 13, 13, 1, "", 0,
     "one|two|three|six|seven|eight|nine|ten|eleven|twelve|thirteen|fourteen|0-2 3-11 +81/4096"},
    {__LINE__, kRemove, 10, INT_MAX, 0, "", 0,
     "one|two|three|six|seven|eight|nine|ten|eleven|twelve|0-2 3-9 +63/4096"},
    {__LINE__, kRemove, 10, INT_MAX, 0, "", 0,
     "one|two|three|six|seven|eight|nine|ten|eleven|twelve|"},
    {__LINE__, kRemove, 0, 9, 0, "", 0, "+0/4096"},
    {__LINE__, kStart, 0, 4, 0, kFive, 0, kFive},
    {__LINE__, kRemoveListed, 0, 0, 0, "1|3|4|", 0, "one|three|"},
    {__LINE__, kStart, 0, 4, 0, kFive, 0, kFive},
    {__LINE__, kRemoveListed, 0, 0, 0, "4|3|1|", 0, "one|three|"},
    {__LINE__, kStart, 0, 4, 0, kFive, 0, kFive},
    {__LINE__, kRemoveListed, 0, 0, 0, "", 0, kFive},
    {__LINE__, kRemoveListed, 0, 0, 0, "5|-1|99|", 0, kFive},
    {__LINE__, kRemoveListed, 0, 0, 0, "2|2|", 0, "one|two|four|five|"},
    {__LINE__, kRemoveListed, 0, 0, 0, "3|0|2|1|0|", 0, "+0/4096"},
};

const Step kCopying[] = {
    {__LINE__, kStart, 0, 9, 0, kTen, 0, kTen},
    {__LINE__, kCopyAll, 0, 0, 0, "", 0,
     "one|two|three|four|five|six|seven|eight|nine|ten|0-9 +49/4096"},
    {__LINE__, kRemove, 1, 8, 0, "", 0, "one|ten|"},
    {__LINE__, kSwap, 0, 0, 0, "", 0, kTen},
    {__LINE__, kReverse, 0, 0, 0, "", 0, "ten|nine|eight|seven|six|five|four|three|two|one|"},
    {__LINE__, kReverse, 0, 0, 0, "", 0, kTen},
    {__LINE__, kSwap, 0, 0, 0, "", 0, "one|ten|"},
    {__LINE__, kCopyName, 1, 3, 1, "", 0, "three|ten|"},
    {__LINE__, kCopyName, 2, 2, 0, "twenty-|", 0, "three|ten|twenty-three|"},
    {__LINE__, kCopyName, 0, 10, 0, "", 0, "name11|ten|twenty-three|"},
    {__LINE__, kCopyOwnName, 1, 1, 0, "", 0, "name11|ten|twenty-three|"},
    {__LINE__, kSwap, 0, 0, 0, "", 0, "one|two|three|four|five|six|seven|eight|nine|ten|name11|"},
    {__LINE__, kCopyAll, 0, 0, 0, "", 0,
     "one|two|three|four|five|six|seven|eight|nine|ten|name11|"},
    {__LINE__, kRemove, 1, 10, 0, "", 0, "one|"},
    {__LINE__, kGenerate, 0, 2, 0, "", 0, "one|name11|"},
};

const Step kImages[] = {
    {__LINE__, kImage, 0, 0, 0, "", 0, "136 nm%d  0 1 16 0 16 0 0 4096 0 0 -1 0 0 0 0"},
    {__LINE__, kNoImage, 0, 0, 0, "", 0, "4   -1"},
    {__LINE__, kAdd, 0, 4, 0, kFive, 0, kFive},
    {__LINE__, kRemove, 1, 1, 0, "", 0, "one|three|four|five|0-0 1-3 +24/4096"},
    {__LINE__, kImage, 0, 0, 0, "", 0,
     "200 nm%d one|two|three|four|five| 4 1 16 2 16 0 0 4096 24 4 0 0 0 0 4 1 3 0 8 16 -1 0 0 0 0"},
    {__LINE__, kSwitch, 0, 0, 0, "", 0, "one|three|four|five|positions+24/4096"},
    {__LINE__, kImage, 0, 0, 0, "", 0,
     "192 nm%d one|two|three|four|five| 4 1 16 0 0 4 0 4096 24 4 0 0 0 8 0 14 0 19 -1 0 0 0 0"},
    {__LINE__, kSwitch, 0, 0, 0, "", 1, "one|three|four|five|positions+24/4096"},
    {__LINE__, kClear, 0, 0, 0, "", 0, "+0/4096"},
    {__LINE__, kImage, 0, 0, 0, "", 0, "136 nm%d  0 1 16 0 16 0 0 4096 0 0 -1 0 0 0 0"},
    {__LINE__, kSwitch, 0, 0, 0, "", 0, "positions+0/4096"},
};

#ifdef NAMES_HOST_HAS_MAKERS
const Step kLoading[] = {
    {__LINE__, kStart, 0, 4, 0, kFive, 0, kFive},
    {__LINE__, kRemove, 1, 1, 0, "", 0, "one|three|four|five|"},
    {__LINE__, kLoad, 0, 0, 0, "", 0, "one|three|four|five|0-0 1-3 +24/4096"},
    {__LINE__, kAdd, 4, 4, 0, "six|", 0, "one|three|four|five|six|"},
    {__LINE__, kLoad, 1, 0, 0, "", 1, "+0/4096"},
    {__LINE__, kSwap, 0, 0, 0, "", 0, "one|three|four|five|six|"},
};

const Step kTexts[] = {
    {__LINE__, kAdd, 0, 1, 0, "one|name5|", 0, "one|name5|"},
    {__LINE__, kText, 1, 0, 0, "", 0, "name5", 0},
    {__LINE__, kText, 1, 0, 1, "", 0, "one       ", 11, 1},
    {__LINE__, kText, 1, 0, 0, "", 0, "name5        ", 9, 0, 1},
    {__LINE__, kText, 2, 0, 0, "", 0, "nm3", 0},
    {__LINE__, kText, 0, 0, 0, "", 1, "", 0, 1},
};
#endif

const Step kLongNames[] = {
    {__LINE__, kAdd, 0, 0, 0, "x*1048575|", 0, "x*1048575|"},
    {__LINE__, kAdd, 1, 1, 0, "y*1048576|", 2, "x*1048575|"},
    {__LINE__, kAdd, 1, 2, 0, "a|y*1048576|", 2, "x*1048575|"},
    {__LINE__, kAddField, 1, 1, 0, "y*1048576|", 0, "x*1048575|y*1048576|", 1048576},
    {__LINE__, kAdd, 2, 2, 0, "z*200000|", 0, "x*1048575|y*1048576|z*200000|"},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+1048576/1048576+1048577/1048577+200001/200001"},
    {__LINE__, kAdd, 0, 6, 0, "a*1|b*127|c*128|d*129|e*255|f*256|g*300|", 0,
     "a*1|b*127|c*128|d*129|e*255|f*256|g*300|"},
    {__LINE__, kFind, 0, 0, 0, "a |b*127|c*128|d*129|e*255|f*256|g*300|", 0, "0|1|2|3|4|5|6|"},
    {__LINE__, kFind, 0, 0, 0, "b*127|g*301|g*302|c*128|g*300|", 0, "1|6|6|2|6|", 300},
    {__LINE__, kCopyAll, 0, 0, 0, "", 0, "a*1|b*127|c*128|d*129|e*255|f*256|g*300|"},
    {__LINE__, kRemove, 1, 6, 0, "", 0, "a*1|"},
    {__LINE__, kCopyName, 1, 6, 0, "g*300|", 0, "a*1|g*600|"},
};

const Step kFallingEmpty[] = {
    {__LINE__, kAddBuffer, 0, 998, 0, "d*5000|00001..00998|", 0, "d*5000|00001..00998|"},
    {__LINE__, kAdd, 999, 999, 0, "00999|", 0, "d*5000|00001..00999|"},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+0/4096+10995/131072"},
    {__LINE__, kAdd, 1000, 1000, 0, "01000|", 0, "d*5000|00001..01000|"},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+11001/131072"},
    {__LINE__, kStart, 0, 2, 0, "a*100000|b*100001|c*100002|", 0, "a*100000|b*100001|c*100002|"},
    {__LINE__, kReleaseBlocks, 0, 0, 0, "", 0, "a*100000|b*100001|c*100002|"},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+100001/131072+100002/131072+100003/131072"},
    {__LINE__, kCopyAll, 0, 0, 0, "", 0, "a*100000|b*100001|c*100002|"},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+100001/131072+100002/131072+100003/131072"},
    {__LINE__, kRemove, 1, 1, 0, "", 0, "a*100000|c*100002|"},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+100001/131072+100003/131072"},
    {__LINE__, kRemove, 0, 1, 0, "", 0, ""},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+0/131072"},
    {__LINE__, kSwap, 0, 0, 0, "", 0, "a*100000|b*100001|c*100002|"},
};

const Step kManyNames[] = {
    {__LINE__, kStart, 0, 14999, 0, "00000..14999|", 0, "00000..14999|0-127 128-255 "},
    {__LINE__, kBlocks, 0, 0, 0, "", 0, "+4092/4096+85908/131072"},
    {__LINE__, kRemove, 127, 127, 0, "", 0, "00000..00126|00128..14999|"},
    {__LINE__, kRemove, 0, 0, 0, "", 0, "00001..00126|00128..14999|"},
    {__LINE__, kAdd, 0, 14999, 0, "00000..14999|", 0, "00000..14999|0-125 126-253 "},
    {__LINE__, kRemoveEach, 1, 0, 0, "", 0, "00000..14998/2|positions"},
    {__LINE__, kRemove, 0, 9, 0, "", 0, "00020..14998/2|"},
    {__LINE__, kRemove, 2, 7490, 1, "", 0, "00020|"},
};

// Those of 2,000,000 names whose index is a multiple of nStep, back to back; every fourth name has
// inner blanks.
std::string veryManyNames(int32_t nStep) {
    static const char *const aFormats[4] = {"%08d", "b%08d", "%04d", "wamalamadingdong% 8d"};
    std::string text;
    char aName[32];
    for (int32_t i = 0; i < 2000000; i += nStep) {
        text.append(
            aName, static_cast<size_t>(std::snprintf(aName, sizeof aName, aFormats[i % 4], i)) + 1);
    }
    return text;
}

// The bytes of a range of those names as they were stored.
std::string readRange(Run &run, int32_t first, int32_t last) {
    std::string text(60000, '#');
    uint64_t nBytes = 0;
    expectDone(run, __LINE__,
               NamesManager_GetNames(run.mgr.get(), first, last, 0, 0, 0, 0, text.data(),
                                     text.size(), &nBytes));
    return text.substr(0, nBytes);
}

// Stored in 80 calls, read in ranges of 250, half replaced, checked and looked up, every other one
// removed.
void checkVeryManyNames(Run &run) {
    constexpr int32_t kNames = 2000000;
    constexpr int32_t kBatch = 25000;
    constexpr int32_t kRange = 250;
    NamesManager *mgr = run.mgr.get();
    const std::string text = veryManyNames(1);
    size_t nAt = 0;
    for (int32_t first = 0; first < kNames; first += kBatch) {
        expectDone(
            run, __LINE__,
            NamesManager_AddNamesFromBuffer(mgr, first, first + kBatch - 1, 0, text.data() + nAt));
        for (int32_t i = 0; i < kBatch; ++i) { nAt = text.find('\0', nAt) + 1; }
    }
    std::vector<const char *> names(kRange, "");
    std::string read;
    for (int32_t first = 0; first < kNames; first += kRange) {
        expectEqual(run, __LINE__, "status", 0,
                    NamesManager_GetNamePointers(mgr, first, first + kRange - 1, 0, names.data()));
        for (const char *szName : names) { read.append(szName).append(1, '\0'); }
    }
    expectEqual(run, __LINE__, "names read in ranges", 1, read == text ? 1 : 0);
    expectEqual(run, __LINE__, "mode kept", run.bPositions ? 0 : 1,
                mgr->pSegments != nullptr ? 1 : 0);
    const size_t nPart = text.find("00089500");
    const bool bPart =
        readRange(run, 89500, 91499) == text.substr(nPart, text.find("00091500") - nPart);
    expectEqual(run, __LINE__, "names of a part", 1, bPart ? 1 : 0);
    expectDone(run, __LINE__, NamesManager_AddNamesFromBuffer(mgr, 0, 500000, 0, text.data()));
    expectEqual(run, __LINE__, "all names", 1, readAll(run) == text ? 1 : 0);
    if (run.bPositions) {  // each fills a map, and a host's may be slow
        expectEqual(run, __LINE__, "index of a name", 1234565,
                    NamesManager_FindName(mgr, "b01234565", 0));
    } else {
        int32_t bFound = -1;
        expectDone(run, __LINE__,
                   NamesManager_CheckDuplicateNamesInBuffer(mgr, 0, kNames - 1, 0, text.data(),
                                                            &bFound, nullptr, nullptr, nullptr, 0));
        expectEqual(run, __LINE__, "repeated names", 0, bFound);
    }
    std::vector<int32_t> odd;
    for (int32_t i = 1; i < kNames; i += 2) { odd.push_back(i); }
    expectDone(run, __LINE__, NamesManager_RemoveNamesByIndices(mgr, odd.data(), kNames / 2));
    expectEqual(run, __LINE__, "names left", 1, readAll(run) == veryManyNames(2) ? 1 : 0);
}

// ---- Running them ----

struct Scenario {
    const char *szTitle;
    const char *szFormat;
    int32_t nRuns;  // 1: in segment mode; 2: in both modes; 4: both once more with bIndexed
    std::span<const Step> steps;
};

const Scenario kScenarios[] = {
    {"storing", nullptr, 4, kStoring},
    {"replacing", nullptr, 4, kReplacing},
    {"default names", "name%d", 4, kGenerating},
    {"default names with blanks inside", "wamalamadingdong% 8d", 4, kBlanksInside},
    {"fields", nullptr, 4, kFieldsOfNames},
    {"reading in order", nullptr, 1, kReadingInOrder},
    {"longest names", nullptr, 4, kLongestNames},
    {"repeated names", "name%d", 4, kRepeatedNames},
    {"looking up", nullptr, 2, kLookingUp},
    {"removing", nullptr, 4, kRemoving},
    {"copying", "name%d", 4, kCopying},
    {"images", nullptr, 1, kImages},
#ifdef NAMES_HOST_HAS_MAKERS
    {"loading", nullptr, 4, kLoading},
    {"texts", nullptr, 2, kTexts},
#endif
    {"long names", nullptr, 4, kLongNames},
    {"blocks falling empty", nullptr, 2, kFallingEmpty},
    {"15,000 names", nullptr, 4, kManyNames},
    {"2,000,000 names", nullptr, 2, {}},
};

void runOnce(Run &run, const Scenario &scenario, void *pOwner) {
    run.mgr.reset(NamesManager_Create(pOwner, scenario.szFormat));
    run.other.reset(NamesManager_Create(pOwner, scenario.szFormat));
    if (run.mgr == nullptr || run.other == nullptr) { throw std::bad_alloc(); }
    expectEqual(run, __LINE__, "owner kept", 1, run.mgr->pOwner == pOwner ? 1 : 0);
    if (run.bPositions) {
        expectDone(run, __LINE__, NamesManager_StoreIndividualNamePositions(run.mgr.get()));
    }
    for (const Step &step : scenario.steps) { runStep(run, step); }
    if (scenario.steps.empty()) { checkVeryManyNames(run); }
}

// The failed expectations. A run that lacks the memory to go on is one, too.
int32_t runScenario(const Scenario &scenario, void *pOwner) {
    int32_t nFailed = 0;
    std::printf("self-check: %s: ", scenario.szTitle);
    std::fflush(stdout);
    for (int32_t i = 0; i < scenario.nRuns; ++i) {
        Run run = {scenario.szTitle, (i & 1) != 0, (i & 2) != 0, nullptr, nullptr, 0};
        try {
            runOnce(run, scenario, pOwner);
        } catch (const std::exception &) {
            expectEqual(run, __LINE__, "runs broken off for want of memory", 0, 1);
        }
        nFailed += run.nFailed;
    }
    std::printf("%d failed\n", nFailed);
    std::fflush(stdout);
    return nFailed;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_SelfCheck(void) {
    ZOLTprob prob = nullptr;
    int32_t nFailed = ZOLTcreateprob(&prob) == 0 ? 0 : 1;
    if (nFailed == 0) {
        for (const Scenario &scenario : kScenarios) { nFailed += runScenario(scenario, prob); }
        NamesManager_Destroy(nullptr);
        if (ZOLTdestroyprob(prob) == 0) { return nFailed; }
        ++nFailed;
    }
    Host_ReportAssertion(kSourceTag, __LINE__, 0,
                         "self-check: expected the host to make and destroy a problem object");
    return nFailed;
}
