// show: what an image holds and how its blocks are filled.
#include <algorithm>
#include <cinttypes>

#include <nlohmann/json.hpp>

#include "tools/facts.hpp"
#include "tools/picture.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr int64_t kBarWidth = 32;

// A block from end to end: '#' live, 'x' dead, '.' free. A share too small for a character of its
// own still gets one.
std::string bar(const BlockFacts &block) {
    const int64_t nSize = std::max<int64_t>(block.size, 1);
    const auto cells = [&](int64_t nBytes) {
        return nBytes == 0 ? 0 : std::max<int64_t>(1, nBytes * kBarWidth / nSize);
    };
    const int64_t nDead = cells(block.dead);
    const int64_t nLive =
        std::max<int64_t>(cells(block.used) - nDead, block.used > block.dead ? 1 : 0);
    return std::string(static_cast<size_t>(nLive), '#') +
           std::string(static_cast<size_t>(nDead), 'x') +
           std::string(static_cast<size_t>(kBarWidth - nLive - nDead), '.');
}

// No dead bytes, and too few free ones to store much more.
bool isFull(const BlockFacts &block) {
    return block.dead == 0 && block.size - block.used < block.size / kBarWidth;
}

// The end of the blocks from first on that one row of the table tells of: full blocks of one size,
// or a single block.
size_t endOfRow(const std::vector<BlockFacts> &blocks, size_t first) {
    size_t end = first + 1;
    while (end < blocks.size() && isFull(blocks[first]) && isFull(blocks[end]) &&
           blocks[end].size == blocks[first].size) {
        ++end;
    }
    return end;
}

void printBlocks(Output &output, const std::vector<BlockFacts> &blocks) {
    output.print("\n%11s %13s %13s %11s %11s  # live, x dead, . free\n", "block", "size", "used",
                 "dead", "names");
    for (size_t first = 0; first < blocks.size();) {
        const size_t end = endOfRow(blocks, first);
        BlockFacts sum;
        for (size_t i = first; i < end; ++i) { add(sum, blocks[i]); }
        std::string label = std::to_string(first);
        if (end - first > 1) { label.append("-").append(std::to_string(end - 1)); }
        output.print("%11s %13" PRId64 " %13" PRId64 " %11" PRId64 " %11" PRId64 "  %s\n",
                     label.c_str(), sum.size, sum.used, sum.dead, sum.names, bar(sum).c_str());
        first = end;
    }
}

void printTable(Output &output, const NamesManager *mgr, const Facts &facts) {
    output.print("names      %" PRId32 ", the longest of %s\n", mgr->nNames,
                 counted(facts.longest, "byte").c_str());
    output.print("mode       %s\n", facts.bPositions ? "individual positions" : "segments");
    output.print("text       %s live, %" PRId64 " dead, %" PRId64
                 " free (each name with its NUL)\n",
                 counted(facts.live, "byte").c_str(), facts.dead, facts.free);
    if (facts.bPositions) {
        output.print("positions  %" PRId32 " in a table of %" PRId32 "\n", mgr->nNames,
                     mgr->nPositionsAlloc);
    } else {
        output.print("segments   %" PRId32 " in a table of %" PRId32 "\n", mgr->nSegments,
                     mgr->nSegmentsAlloc);
    }
    if (mgr->iCursorName >= 0) {
        output.print("cursor     name %" PRId32 " in segment %" PRId32 ", at byte %" PRId32
                     " of block %" PRId32 "; misses: %" PRId32 "\n",
                     mgr->iCursorName, mgr->iCursorSegment, mgr->nCursorOffset, mgr->iCursorBlock,
                     mgr->nCursorMisses);
    } else {
        output.print("cursor     none; misses: %" PRId32 "\n", mgr->nCursorMisses);
    }
    output.print("formats    default names %s, the first one %s; numbered from %" PRId32 "\n",
                 quoted(mgr->szNameFormat).c_str(),
                 mgr->szFirstGeneratedName[0] ? quoted(mgr->szFirstGeneratedName).c_str() : "alike",
                 mgr->nGeneratedNameBase);
    printBlocks(output, facts.blocks);
}

void printJson(Output &output, const NamesManager *mgr, const Facts &facts,
               const std::string &image) {
    using nlohmann::ordered_json;
    ordered_json blocks = ordered_json::array();
    for (const BlockFacts &block : facts.blocks) {
        blocks.push_back({{"size", block.size},
                          {"used", block.used},
                          {"dead", block.dead},
                          {"names", block.names}});
    }
    ordered_json cursor;
    if (mgr->iCursorName >= 0) {
        cursor = {{"name", mgr->iCursorName},
                  {"segment", mgr->iCursorSegment},
                  {"block", mgr->iCursorBlock},
                  {"offset", mgr->nCursorOffset}};
    }
    const ordered_json document = {
        {"image", inputName(image)},
        {"names", mgr->nNames},
        {"longestName", facts.longest},
        {"mode", facts.bPositions ? "positions" : "segments"},
        {"text", {{"live", facts.live}, {"dead", facts.dead}, {"free", facts.free}}},
        {"segments", {{"used", mgr->nSegments}, {"capacity", mgr->nSegmentsAlloc}}},
        {"positions",
         {{"used", facts.bPositions ? mgr->nNames : 0}, {"capacity", mgr->nPositionsAlloc}}},
        {"cursor", cursor},
        {"cursorMisses", mgr->nCursorMisses},
        {"nameFormat", mgr->szNameFormat},
        {"firstGeneratedName", mgr->szFirstGeneratedName},
        {"generatedNameBase", mgr->nGeneratedNameBase},
        {"blocks", blocks},
    };
    // Bytes that are no UTF-8 become replacement characters: the output is valid whatever the image
    // holds.
    output.write(document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

}  // namespace

int runShow(const std::string &image, bool bJson, const std::string &picture) {
    const ManagerHandle mgr = loadImage(image);
    const Facts facts = gatherFacts(mgr.get());
    Output output(picture.empty() ? "-" : picture, image);
    if (!picture.empty()) {
        drawPicture(output, mgr.get(), facts, inputName(image));
    } else if (bJson) {
        printJson(output, mgr.get(), facts, image);
    } else {
        printTable(output, mgr.get(), facts);
    }
    output.finish();
    return 0;
}

}  // namespace tool
