// The lists that are measured, and what the work on them needs: queries, replacements, orders.
#ifndef BENCH_INPUTS_HPP
#define BENCH_INPUTS_HPP

#include <cstdint>
#include <string>
#include <vector>

struct NameList {
    std::string text;                 // the names back to back, each ended by its NUL
    std::vector<const char *> names;  // where each begins in text
    std::vector<int32_t> lengths;     // bytes without the NUL
};

inline int32_t countOf(const NameList &list) {
    return static_cast<int32_t>(list.names.size());
}

struct Inputs {
    std::string label;
    NameList list;
    std::vector<int32_t> picks;       // indices of the list in random order
    NameList hits;                    // the names picked, copied in that order
    NameList absent;                  // names of the same forms that are not in the list
    NameList renamed;                 // for each name another one of the same length
    NameList renamedPicks;            // the same, in the order of the picks
    NameList longer;                  // each name, some bytes longer
    NameList repeating;               // the list with an earlier name in every tenth place
    std::vector<int32_t> everyOther;  // the odd indices, ascending
};

// Writes name number i to a buffer of kFormBytes and returns its length.
using NameForm = int (*)(char *pBuffer, int32_t i);
constexpr size_t kFormBytes = 64;

int mixedName(char *pBuffer, int32_t i);       // four forms in turn, 4 to 24 bytes
int structuredName(char *pBuffer, int32_t i);  // paths into a model, 8 to 40 bytes

// All inputs for a list; each name is picked once.
Inputs makeInputs(const std::string &label, NameForm form, int32_t nNames);

// A list with nPicks random picks and their hits; the other inputs stay empty.
Inputs makeLargeInputs(const std::string &label, NameForm form, int32_t nNames, int32_t nPicks);

#endif
