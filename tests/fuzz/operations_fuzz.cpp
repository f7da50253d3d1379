// Takes bytes for a history of operations: two that set it up, then kOperation for each, the kind
// and the manager in the first of them and an argument in each of the others.
#include <iostream>

#include "tests/histories.hpp"

namespace {

constexpr size_t kOperation = 12;

std::string play(const uint8_t *pData, size_t nBytes, std::ostream *pLog) {
    constexpr histories::Habits kHabits[] = {{0, 12, 0, 0, 20},
                                             {0, 60, 2, 0, 20},
                                             {9, 6, 0, 0, 20},
                                             {1, 12, 0, 0, 20},
                                             {0, 12, 77, 0, 20}};
    histories::Game game = {kHabits[pData[0] % std::size(kHabits)],
                            {histories::newPair(pData[1]), histories::newPair(pData[1] / 9)}};
    std::string wrong;
    for (const uint8_t *p = pData + 2, *pEnd = pData + nBytes; p < pEnd && wrong.empty();
         p += std::min<ptrdiff_t>(kOperation, pEnd - p)) {
        const size_t iKind = p[0] / 2U % std::size(histories::kKinds), iManager = p[0] % 2U;
        wrong = game.play(iKind, iManager,
                          histories::byteChoices(p + 1, std::min(p + kOperation, pEnd)), pLog);
    }
    return wrong + game.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t nBytes) {
    if (nBytes < 2 || play(pData, nBytes, nullptr).empty()) { return 0; }
    std::cerr << play(pData, nBytes, &std::cerr) << '\n';
    std::abort();
}
