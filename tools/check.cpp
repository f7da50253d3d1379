// check: whether an image is sound and no name in it is repeated. self-check: whether the module
// is.
#include <algorithm>
#include <cstdio>
#include <new>
#include <utility>

#include "host/host_report.h"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr size_t kMaxNamesListed = 20;
constexpr size_t kMaxIndicesListed = 10;

// What was reported as an assertion while this lives.
class Assertions {
public:
    Assertions() : mBefore(Host_SetReportHandlers(&mHandlers)) {}
    Assertions(const Assertions &) = delete;
    Assertions &operator=(const Assertions &) = delete;
    ~Assertions() { Host_SetReportHandlers(mBefore); }

    std::vector<std::string> texts() const {
        return mOutOfMemory ? throw std::bad_alloc() : mTexts;
    }

private:
    static void note(void *pContext, uint64_t, int32_t nLine, int32_t, const char *szText) {
        auto *pSelf = static_cast<Assertions *>(pContext);
        try {
            pSelf->mTexts.push_back(std::string(szText) + " (check " + std::to_string(nLine) + ")");
        } catch (const std::bad_alloc &) {
            pSelf->mOutOfMemory = true;  // told later: no exception may pass through the module
        }
    }

    std::vector<std::string> mTexts;
    bool mOutOfMemory = false;
    HostReportHandlers mHandlers = {this, nullptr, note};
    const HostReportHandlers *mBefore;
};

std::vector<std::string> auditFindings(NamesManager *mgr) {
    const Assertions assertions;
    NamesManager_AssertConsistency(mgr);
    return assertions.texts();
}

// A name that stands at an earlier index already: (that index, its own), ascending.
using Repetition = std::pair<int32_t, int32_t>;

// The lookup index yields the lowest index of a text, so every other name of that text shows
// itself. Texts are compared unchanged.
std::vector<Repetition> findRepetitions(NamesManager *mgr) {
    constexpr int32_t kTextUnchanged = -2;
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

std::vector<std::string> describeRepetitions(NamesManager *mgr,
                                             const std::vector<Repetition> &repetitions) {
    std::vector<std::string> findings;
    size_t nUnlisted = 0;
    for (size_t i = 0; i < repetitions.size();) {
        const int32_t original = repetitions[i].first;
        const size_t begin = i;
        std::string indices = std::to_string(original);
        for (; i < repetitions.size() && repetitions[i].first == original; ++i) {
            if (i - begin < kMaxIndicesListed) {
                indices += ", " + std::to_string(repetitions[i].second);
            }
        }
        if (i - begin > kMaxIndicesListed) {
            indices += " and " + std::to_string(i - begin - kMaxIndicesListed) + " more";
        }
        if (findings.size() < kMaxNamesListed) {
            findings.push_back(quoted(NamesManager_GetName(mgr, original, 0)) +
                               " is repeated: names " + indices);
        } else {
            ++nUnlisted;
        }
    }
    if (nUnlisted > 0) {
        findings.push_back(counted(static_cast<int64_t>(nUnlisted), "more text") +
                           (nUnlisted == 1 ? " is" : " are") + " repeated");
    }
    return findings;
}

// Everything that is wrong with the image, loaded into mgr on the way.
std::vector<std::string> findProblems(NamesManager *mgr, const std::string &image) {
    const Progress progress("checking");
    const std::string problem = loadProblem(mgr, image);
    if (!problem.empty()) { return {problem}; }
    std::vector<std::string> findings = auditFindings(mgr);
    if (!findings.empty()) { return findings; }
    NamesManager_FindNames(mgr, nullptr, 0, 0, 0, nullptr);
    if (mgr->nNames > 0 && !mgr->pLookupIndex) { throw std::bad_alloc(); }
    return describeRepetitions(mgr, findRepetitions(mgr));
}

}  // namespace

int runCheck(const std::string &image) {
    const ManagerHandle mgr = makeManager();
    const std::vector<std::string> problems = findProblems(mgr.get(), image);
    for (const std::string &problem : problems) {
        std::fprintf(stderr, "names_tool: %s: %s\n", inputName(image).c_str(), problem.c_str());
    }
    if (!problems.empty()) { return 1; }
    Output().write(inputName(image) + ": sound, " + counted(mgr->nNames, "name") +
                   ", none repeated\n");
    return 0;
}

// The audits that the self-check runs report without being counted, so what they report counts
// here.
int runSelfCheck() {
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
    return bPassed ? 0 : 1;
}

}  // namespace tool
