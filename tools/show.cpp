// show: what an image holds and how its blocks are filled.
#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "tools/facts.hpp"
#include "tools/picture.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

// A block from end to end: '#' live, 'x' dead, '.' free. A share too small for a character of its own still gets one.
std::string bar(const BlockFacts &block) {
    constexpr int64_t kWidth = 32;
    const int64_t nSize = std::max(block.size, 1);
    const auto cells = [&](int64_t nBytes) { return nBytes == 0 ? 0 : std::max<int64_t>(1, nBytes * kWidth / nSize); };
    const int64_t nDead = cells(block.dead);
    const int64_t nLive = std::max<int64_t>(cells(block.used) - nDead, block.used > block.dead ? 1 : 0);
    return std::string(static_cast<size_t>(nLive), '#') + std::string(static_cast<size_t>(nDead), 'x') +
           std::string(static_cast<size_t>(kWidth - nLive - nDead), '.');
}

void printTable(const NamesManager *mgr, const Facts &facts) {
    std::printf("names      %" PRId32 ", the longest of %" PRId32 " bytes\n", mgr->nNames, facts.longest);
    std::printf("mode       %s\n", facts.bPositions ? "individual positions" : "segments");
    std::printf("text       %" PRId64 " bytes live, %" PRId64 " dead, %" PRId64 " free (each name with its NUL)\n", facts.live, facts.dead,
                facts.free);
    if (facts.bPositions)
        std::printf("positions  %" PRId32 " in a table of %" PRId32 "\n", mgr->nNames, mgr->nPositionsAlloc);
    else
        std::printf("segments   %" PRId32 " in a table of %" PRId32 "\n", mgr->nSegments, mgr->nSegmentsAlloc);
    if (mgr->iCursorName >= 0)
        std::printf("cursor     name %" PRId32 " in segment %" PRId32 ", at byte %" PRId32 " of block %" PRId32 "; misses: %" PRId32 "\n",
                    mgr->iCursorName, mgr->iCursorSegment, mgr->nCursorOffset, mgr->iCursorBlock, mgr->nCursorMisses);
    else
        std::printf("cursor     none; misses: %" PRId32 "\n", mgr->nCursorMisses);
    std::printf("formats    default names %s, the first one %s; numbered from %" PRId32 "\n", quoted(mgr->szNameFormat).c_str(),
                mgr->szFirstGeneratedName[0] ? quoted(mgr->szFirstGeneratedName).c_str() : "alike", mgr->nGeneratedNameBase);
    std::printf("\n%7s %11s %11s %11s %9s  # live, x dead, . free\n", "block", "size", "used", "dead", "names");
    for (size_t i = 0; i < facts.blocks.size(); ++i) {
        const BlockFacts &block = facts.blocks[i];
        std::printf("%7zu %11" PRId32 " %11" PRId32 " %11" PRId32 " %9" PRId32 "  %s\n", i, block.size, block.used, block.dead, block.names,
                    bar(block).c_str());
    }
}

void printJson(const NamesManager *mgr, const Facts &facts, const std::string &image) {
    using nlohmann::ordered_json;
    ordered_json blocks = ordered_json::array();
    for (const BlockFacts &block : facts.blocks)
        blocks.push_back({{"size", block.size}, {"used", block.used}, {"dead", block.dead}, {"names", block.names}});
    ordered_json cursor;
    if (mgr->iCursorName >= 0) {
        cursor = {
            {"name", mgr->iCursorName}, {"segment", mgr->iCursorSegment}, {"block", mgr->iCursorBlock}, {"offset", mgr->nCursorOffset}};
    }
    const ordered_json document = {
        {"image", image},
        {"names", mgr->nNames},
        {"longestName", facts.longest},
        {"mode", facts.bPositions ? "positions" : "segments"},
        {"text", {{"live", facts.live}, {"dead", facts.dead}, {"free", facts.free}}},
        {"segments", {{"used", mgr->nSegments}, {"capacity", mgr->nSegmentsAlloc}}},
        {"positions", {{"used", facts.bPositions ? mgr->nNames : 0}, {"capacity", mgr->nPositionsAlloc}}},
        {"cursor", cursor},
        {"cursorMisses", mgr->nCursorMisses},
        {"nameFormat", mgr->szNameFormat},
        {"firstGeneratedName", mgr->szFirstGeneratedName},
        {"generatedNameBase", mgr->nGeneratedNameBase},
        {"blocks", blocks},
    };
    // Bytes that are no UTF-8 become replacement characters: the output is valid whatever the image holds.
    std::puts(document.dump(2, ' ', false, ordered_json::error_handler_t::replace).c_str());
}

}  // namespace

int runShow(const std::string &image, bool bJson, const std::string &picture) {
    const ManagerHandle mgr = loadImage(image);
    const Facts facts = gatherFacts(mgr.get());
    if (!picture.empty()) {
        OutputFile file(picture, image);
        drawPicture(file.pFile, mgr.get(), facts, image);
        file.finish();
    } else if (bJson) {
        printJson(mgr.get(), facts, image);
    } else {
        printTable(mgr.get(), facts);
    }
    return 0;
}

}  // namespace tool
