// The commands check (is an image sound, and is no name repeated?) and self-check (does the module
// work on this machine?).
#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "host/host_report.h"
#include "tools/commands.hpp"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr size_t kMaxNamesListed = 20;
constexpr size_t kMaxIndicesListed = 10;

// Collects what is reported as an assertion while it lives, instead of the handlers set before.
class Assertions {
public:
    Assertions() : pBefore_(Host_SetReportHandlers(&handlers_)) {}
    Assertions(const Assertions &) = delete;
    Assertions &operator=(const Assertions &) = delete;
    ~Assertions() { Host_SetReportHandlers(pBefore_); }

    std::vector<std::string> texts() const {
        return bOutOfMemory_ ? throw std::bad_alloc() : texts_;
    }

private:
    static void note(void *pContext, uint64_t, int32_t nLine, int32_t, const char *szText) {
        auto *pSelf = static_cast<Assertions *>(pContext);
        try {
            pSelf->texts_.push_back(std::string(szText) + " (check " + std::to_string(nLine) + ")");
        } catch (const std::bad_alloc &) {
            pSelf->bOutOfMemory_ = true;  // thrown later: no exception may pass through the module
        }
    }

    std::vector<std::string> texts_;
    bool bOutOfMemory_ = false;
    HostReportHandlers handlers_ = {this, nullptr, note};
    const HostReportHandlers *pBefore_;
};

std::vector<std::string> auditFindings(NamesManager *mgr) {
    const Assertions assertions;
    NamesManager_AssertConsistency(mgr);
    return assertions.texts();
}

// A name with the same text as an earlier one: (the lowest index with that text, its own index).
using Repetition = std::pair<int32_t, int32_t>;

// Looks every name up: a name is a repetition when the lowest index with its text is not its own.
// The result is in ascending order.
std::vector<Repetition> findRepetitions(NamesManager *mgr) {
    std::vector<Repetition> repetitions;
    visitNames(mgr, [&](int32_t first, int32_t count, const char *const *names) {
        std::vector<int32_t> indices(static_cast<size_t>(count));
        if (NamesManager_FindNames(mgr, names, count, kTextUnchanged, 0, indices.data()) != 0) {
            throw std::bad_alloc();
        }
        for (int32_t i = 0; i < count; ++i) {
            if (const int32_t index = indices[static_cast<size_t>(i)]; index != first + i) {
                repetitions.emplace_back(index, first + i);
            }
        }
        return true;
    });
    std::sort(repetitions.begin(), repetitions.end());
    return repetitions;
}

// "names 0, 2, 5": original, and the names of the repetitions, all with the same text.
std::string describeIndices(int32_t original, const Repetition *pFirst, const Repetition *pEnd) {
    std::string text = "names " + std::to_string(original);
    const auto nIndices = static_cast<size_t>(pEnd - pFirst);
    const size_t nListed = std::min(nIndices, kMaxIndicesListed);
    for (size_t i = 0; i < nListed; ++i) { text += ", " + std::to_string(pFirst[i].second); }
    if (nIndices > nListed) { text += " and " + std::to_string(nIndices - nListed) + " more"; }
    return text;
}

// One finding for each of the first repeated texts, and one for all the others.
std::vector<std::string> describeRepetitions(NamesManager *mgr,
                                             const std::vector<Repetition> &repetitions) {
    std::vector<std::string> findings;
    int64_t nUnlisted = 0;
    const Repetition *const pEnd = repetitions.data() + repetitions.size();
    for (const Repetition *pFirst = repetitions.data(); pFirst != pEnd;) {
        const int32_t original = pFirst->first;
        const Repetition *const pNext = std::find_if(
            pFirst, pEnd, [original](const Repetition &other) { return other.first != original; });
        if (findings.size() < kMaxNamesListed) {
            findings.push_back(quoted(NamesManager_GetName(mgr, original, 0)) +
                               " is repeated: " + describeIndices(original, pFirst, pNext));
        } else {
            ++nUnlisted;
        }
        pFirst = pNext;
    }
    if (nUnlisted > 0) {
        findings.push_back(counted(nUnlisted, "more text") + (nUnlisted == 1 ? " is" : " are") +
                           " repeated");
    }
    return findings;
}

// Loads the image into mgr and returns everything that is wrong with it.
std::vector<std::string> findProblems(NamesManager *mgr, const std::string &image) {
    const Progress progress("checking");
    const std::string problem = loadProblem(mgr, image);
    if (!problem.empty()) { return {problem}; }
    std::vector<std::string> findings = auditFindings(mgr);
    if (!findings.empty()) { return findings; }
    buildIndex(mgr);
    return describeRepetitions(mgr, findRepetitions(mgr));
}

}  // namespace

int runCheck(const Request &request) {
    const ManagerHandle mgr = makeManager();
    const std::vector<std::string> problems = findProblems(mgr.get(), request.image);
    for (const std::string &problem : problems) {
        std::fprintf(stderr, "names_tool: %s: %s\n", inputName(request.image).c_str(),
                     problem.c_str());
    }
    if (!problems.empty()) { return kExitNo; }
    Output().write(inputName(request.image) + ": sound, " + counted(mgr->nNames, "name") +
                   ", none repeated\n");
    return kExitSuccess;
}

// Prints everything reported, as it says what failed. A report fails the self-check even if the
// module did not count it, such as one of the host's own.
int runSelfCheck(const Request &) {
    const Assertions assertions;
    const int32_t nFailed = NamesManager_SelfCheck();
    Output output;
    output.flush();
    const std::vector<std::string> texts = assertions.texts();
    for (const std::string &text : texts) {
        std::fprintf(stderr, "names_tool: %s\n", text.c_str());
    }
    const bool bPassed = nFailed == 0 && texts.empty();
    output.write(bPassed ? "self-check: passed\n" : "self-check: FAILED\n");
    return bPassed ? kExitSuccess : kExitNo;
}

}  // namespace tool
