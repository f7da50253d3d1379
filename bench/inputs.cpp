#include "bench/inputs.hpp"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <random>

namespace {

constexpr uint32_t kSeed = 20240607;

void addName(NameList &list, const char *pName, size_t nLength) {
    list.text.append(pName, nLength);
    list.text.push_back('\0');
    list.lengths.push_back(static_cast<int32_t>(nLength));
}

// To be called when all text has been added, so that it no longer moves.
void pointAtNames(NameList &list) {
    list.names.reserve(list.lengths.size());
    const char *pName = list.text.data();
    for (const int32_t nLength : list.lengths) {
        list.names.push_back(pName);
        pName += nLength + 1;
    }
}

NameList makeList(NameForm form, int32_t iFirst, int32_t nNames) {
    NameList list;
    list.lengths.reserve(static_cast<size_t>(nNames));
    char aName[kFormBytes];
    for (int32_t i = iFirst; i < iFirst + nNames; ++i) {
        addName(list, aName, static_cast<size_t>(form(aName, i)));
    }
    pointAtNames(list);
    return list;
}

NameList picked(const NameList &list, const std::vector<int32_t> &picks) {
    NameList result;
    for (const int32_t i : picks) {
        addName(result, list.names[static_cast<size_t>(i)],
                static_cast<size_t>(list.lengths[static_cast<size_t>(i)]));
    }
    pointAtNames(result);
    return result;
}

// Every name with another first byte, with which no generated name begins, and a suffix.
NameList renamedList(const NameList &list, const std::string &suffix) {
    NameList result;
    for (size_t i = 0; i < list.names.size(); ++i) {
        std::string name(list.names[i]);
        name[0] = static_cast<char>(name[0] ^ 0x40);
        name += suffix;
        addName(result, name.data(), name.size());
    }
    pointAtNames(result);
    return result;
}

}  // namespace

int mixedName(char *pBuffer, int32_t i) {
    static const char *const aFormats[4] = {"%08d", "b%08d", "%04d", "wamalamadingdong% 8d"};
    return std::snprintf(pBuffer, kFormBytes, aFormats[i % 4], i);
}

int structuredName(char *pBuffer, int32_t i) {
    const int32_t k = i / 4;
    switch (i % 4) {
    case 0: return std::snprintf(pBuffer, kFormBytes, "node%04d", k);
    case 1:
        return std::snprintf(pBuffer, kFormBytes, "plant[%d].unit[%d].flow", k / 1000, k % 1000);
    case 2:
        return std::snprintf(pBuffer, kFormBytes, "plant[%d].unit[%d].tank[%d].level", k / 20000,
                             k / 20 % 1000, k % 20);
    default:
        return std::snprintf(pBuffer, kFormBytes, "plant[%d].unit[%d].tank[%d].temperature",
                             k / 20000, k / 20 % 1000, k % 20);
    }
}

Inputs makeInputs(const std::string &label, NameForm form, int32_t nNames) {
    Inputs inputs;
    inputs.label = label;
    inputs.list = makeList(form, 0, nNames);
    inputs.picks.resize(static_cast<size_t>(nNames));
    std::iota(inputs.picks.begin(), inputs.picks.end(), 0);
    std::shuffle(inputs.picks.begin(), inputs.picks.end(), std::mt19937(kSeed));
    inputs.hits = picked(inputs.list, inputs.picks);
    inputs.absent = makeList(form, nNames, nNames);
    inputs.renamed = renamedList(inputs.list, "");
    inputs.renamedPicks = picked(inputs.renamed, inputs.picks);
    inputs.longer = renamedList(inputs.list, ".renamed");
    std::vector<int32_t> order(inputs.picks.size());
    for (size_t i = 0; i < order.size(); ++i) {
        const size_t iEarlier = static_cast<size_t>(inputs.picks[i]) % std::max<size_t>(i, 1);
        order[i] = static_cast<int32_t>(i % 10 == 9 ? iEarlier : i);
    }
    inputs.repeating = picked(inputs.list, order);
    for (int32_t i = 1; i < nNames; i += 2) { inputs.everyOther.push_back(i); }
    return inputs;
}

Inputs makeLargeInputs(const std::string &label, NameForm form, int32_t nNames, int32_t nPicks) {
    Inputs inputs;
    inputs.label = label;
    inputs.list = makeList(form, 0, nNames);
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<int32_t> anyName(0, nNames - 1);
    std::generate_n(std::back_inserter(inputs.picks), nPicks, [&] { return anyName(random); });
    inputs.hits = picked(inputs.list, inputs.picks);
    return inputs;
}
