// The command show: what an image holds, and how its blocks are filled.
#include <algorithm>
#include <cinttypes>

#include <nlohmann/json.hpp>

#include "tools/commands.hpp"
#include "tools/facts.hpp"
#include "tools/picture.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr int64_t kBarWidth = 32;

// Draws a block from its first byte to its last: '#' live, 'x' dead, '.' free. However few live or
// dead bytes there are, they get a character.
std::string bar(const BlockFacts &block) {
    const int64_t nSize = std::max<int64_t>(block.nSize, 1);
    const auto cells = [&](int64_t nBytes) {
        return nBytes == 0 ? 0 : std::max<int64_t>(1, nBytes * kBarWidth / nSize);
    };
    const int64_t nDead = cells(block.nDead);
    const int64_t nLive =
        std::max<int64_t>(cells(block.nUsed) - nDead, block.nUsed > block.nDead ? 1 : 0);
    return std::string(static_cast<size_t>(nLive), '#') +
           std::string(static_cast<size_t>(nDead), 'x') +
           std::string(static_cast<size_t>(kBarWidth - nLive - nDead), '.');
}

// Whether there are no dead bytes, and too few free ones for a character of the bar.
bool isFull(const BlockFacts &block) {
    return block.nDead == 0 && block.nSize - block.nUsed < block.nSize / kBarWidth;
}

// Returns the end of the blocks from first on that share a line: full blocks of one size, or one
// block.
size_t endOfLine(const std::vector<BlockFacts> &blocks, size_t first) {
    size_t end = first + 1;
    while (end < blocks.size() && isFull(blocks[first]) && isFull(blocks[end]) &&
           blocks[end].nSize == blocks[first].nSize) {
        ++end;
    }
    return end;
}

void printBlocks(const std::vector<BlockFacts> &blocks, Output *pOutput) {
    pOutput->print("\n%11s %13s %13s %11s %11s  # live, x dead, . free\n", "block", "size", "used",
                   "dead", "names");
    for (size_t first = 0; first < blocks.size();) {
        const size_t end = endOfLine(blocks, first);
        BlockFacts sum;
        for (size_t i = first; i < end; ++i) { add(blocks[i], &sum); }
        std::string label = std::to_string(first);
        if (end - first > 1) { label.append("-").append(std::to_string(end - 1)); }
        pOutput->print("%11s %13" PRId64 " %13" PRId64 " %11" PRId64 " %11" PRId64 "  %s\n",
                       label.c_str(), sum.nSize, sum.nUsed, sum.nDead, sum.nNames,
                       bar(sum).c_str());
        first = end;
    }
}

void printCursor(const NamesManager *mgr, Output *pOutput) {
    if (mgr->iCursorName < 0) {
        pOutput->print("cursor     none; misses: %" PRId32 "\n", mgr->nCursorMisses);
        return;
    }
    pOutput->print("cursor     name %" PRId32 " in segment %" PRId32 ", at byte %" PRId32
                   " of block %" PRId32 "; misses: %" PRId32 "\n",
                   mgr->iCursorName, mgr->iCursorSegment, mgr->nCursorOffset, mgr->iCursorBlock,
                   mgr->nCursorMisses);
}

void printTable(const NamesManager *mgr, const Facts &facts, Output *pOutput) {
    pOutput->print("names      %" PRId32 ", the longest of %s\n", mgr->nNames,
                   counted(facts.nLongest, "byte").c_str());
    pOutput->print("mode       %s\n", facts.bPositions ? "individual positions" : "segments");
    pOutput->print("text       %s live, %" PRId64 " dead, %" PRId64
                   " free (each name with its NUL)\n",
                   counted(facts.nLive, "byte").c_str(), facts.nDead, facts.nFree);
    if (facts.bPositions) {
        pOutput->print("positions  %" PRId32 " in a table of %" PRId32 "\n", mgr->nNames,
                       mgr->nPositionsAlloc);
    } else {
        pOutput->print("segments   %" PRId32 " in a table of %" PRId32 "\n", mgr->nSegments,
                       mgr->nSegmentsAlloc);
    }
    printCursor(mgr, pOutput);
    pOutput->print("formats    default names %s, the first one %s; numbered from %" PRId32 "\n",
                   quoted(mgr->szNameFormat).c_str(),
                   mgr->szFirstGeneratedName[0] ? quoted(mgr->szFirstGeneratedName).c_str()
                                                : "alike",
                   mgr->nGeneratedNameBase);
    printBlocks(facts.blocks, pOutput);
}

using nlohmann::ordered_json;

ordered_json jsonOf(const std::vector<BlockFacts> &blocks) {
    ordered_json list = ordered_json::array();
    for (const BlockFacts &block : blocks) {
        list.push_back({{"size", block.nSize},
                        {"used", block.nUsed},
                        {"dead", block.nDead},
                        {"names", block.nNames}});
    }
    return list;
}

// null where the cursor is not set.
ordered_json cursorJson(const NamesManager *mgr) {
    if (mgr->iCursorName < 0) { return nullptr; }
    return {{"name", mgr->iCursorName},
            {"segment", mgr->iCursorSegment},
            {"block", mgr->iCursorBlock},
            {"offset", mgr->nCursorOffset}};
}

void printJson(const NamesManager *mgr, const Facts &facts, const std::string &image,
               Output *pOutput) {
    const ordered_json document = {
        {"image", inputName(image)},
        {"names", mgr->nNames},
        {"longestName", facts.nLongest},
        {"mode", facts.bPositions ? "positions" : "segments"},
        {"text", {{"live", facts.nLive}, {"dead", facts.nDead}, {"free", facts.nFree}}},
        {"segments", {{"used", mgr->nSegments}, {"capacity", mgr->nSegmentsAlloc}}},
        {"positions",
         {{"used", facts.bPositions ? mgr->nNames : 0}, {"capacity", mgr->nPositionsAlloc}}},
        {"cursor", cursorJson(mgr)},
        {"cursorMisses", mgr->nCursorMisses},
        {"nameFormat", mgr->szNameFormat},
        {"firstGeneratedName", mgr->szFirstGeneratedName},
        {"generatedNameBase", mgr->nGeneratedNameBase},
        {"blocks", jsonOf(facts.blocks)},
    };
    // Bytes that are not UTF-8 become replacement characters, so that the output is valid JSON.
    pOutput->write(document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

}  // namespace

int runShow(const Request &request) {
    const ManagerHandle mgr = loadImage(request.image);
    const Facts facts = gatherFacts(mgr.get());
    Output output(request.picture.empty() ? "-" : request.picture, request.image);
    if (!request.picture.empty()) {
        drawPicture(mgr.get(), facts, inputName(request.image), &output);
    } else if (request.bJson) {
        printJson(mgr.get(), facts, request.image, &output);
    } else {
        printTable(mgr.get(), facts, &output);
    }
    output.finish();
    return kExitSuccess;
}

}  // namespace tool
