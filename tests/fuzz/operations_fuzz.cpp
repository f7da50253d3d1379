// Takes bytes for a history of operations: two that set it up, then four for each operation.
#include <iostream>

#include "tests/fuzz/seeds.hpp"
#include "tests/histories.hpp"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    std::mt19937 random(1);
    std::vector<std::string> seeds(12, std::string(120, '\0'));
    for (std::string &seed : seeds)
        std::generate(seed.begin(), seed.end(), [&random] { return static_cast<char>(random()); });
    writeSeeds(seeds);
    static const HostReportHandlers handlers = {nullptr, histories::countReport, histories::countReport};
    Host_SetReportHandlers(&handlers);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *pData, size_t nBytes) {
    if (nBytes < 2) return 0;
    histories::History history = {pData[0], pData[1] % histories::kProfiles, {}};
    for (size_t at = 2; at + 4 <= nBytes; at += 4) {
        const uint32_t nSeed = uint32_t{pData[at + 1]} | uint32_t{pData[at + 2]} << 8 | uint32_t{pData[at + 3]} << 16;
        history.operations.push_back({pData[at] / 2U % std::size(histories::kKinds), pData[at] % 2U, nSeed});
    }
    size_t nPlayed = 0;
    std::ostringstream told;
    const std::string wrong = histories::play(history, nPlayed, told);
    if (!wrong.empty()) {
        std::cerr << told.str() << wrong << '\n';
        std::abort();
    }
    return 0;
}
