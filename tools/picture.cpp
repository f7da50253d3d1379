#include "tools/picture.hpp"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <map>

#include <nlohmann/json.hpp>

namespace tool {
namespace {

// Sizes in pixels, except for the number of columns. A column is the narrowest thing drawn of a
// row.
constexpr int kColumns = 380;
constexpr int kColumnWidth = 2;
constexpr int kMapWidth = kColumns * kColumnWidth;
constexpr int kMapLeft = 170;
constexpr int kPageWidth = kMapLeft + kMapWidth + 210;
constexpr int kRowHeight = 22;
constexpr int kRowPitch = 34;
constexpr int kRowsTop = 162;
constexpr int64_t kMaxRows = 40;
constexpr size_t kMaxSeams = 160;  // in a row; more would hide what they separate

constexpr char kDead[] = "#d62f1f";
constexpr char kFree[] = "#ececf0";

// The colours of names from the first to the last: the steps look even, and no colour looks like
// that of dead or free bytes.
constexpr int kShades = 48;
constexpr std::array<std::array<int, 3>, 5> kRamp = {
    {{65, 40, 120}, {50, 98, 160}, {33, 145, 140}, {94, 190, 98}, {240, 216, 60}}};

std::string shade(int iShade) {
    const double position = static_cast<double>(iShade) / (kShades - 1) * (kRamp.size() - 1);
    const size_t i = std::min(static_cast<size_t>(position), kRamp.size() - 2);
    const double share = position - static_cast<double>(i);
    std::array<unsigned, 3> mix{};
    for (size_t c = 0; c < mix.size(); ++c) {
        mix[c] = static_cast<unsigned>(
            std::lround(kRamp[i][c] + share * (kRamp[i + 1][c] - kRamp[i][c])));
    }
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", mix[0], mix[1], mix[2]);
    return text.data();
}

struct Column {
    double live = 0;  // the share of the column, 0 to 1
    double used = 0;
    double distance = 1;  // from its middle to the nearest span, in columns
    int iShade = 0;       // of that span
};

// Consecutive blocks, drawn end to end.
struct Row {
    int32_t iFirst = 0;
    int32_t iLast = 0;
    BlockFacts sum;
    std::array<Column, kColumns> columns{};
    std::vector<double> seams;  // where spans begin, in columns; at most kMaxSeams are kept
};

struct Picture {
    std::vector<Row> rows;
    int64_t nBlocksPerRow = 1;
    std::vector<int64_t> starts;  // where each block begins in its row, in bytes
    bool bSeams = true;           // seams are drawn in every row, or in none if a row has too many
};

Picture layOut(const Facts &facts) {
    Picture picture;
    const auto nBlocks = static_cast<int64_t>(facts.blocks.size());
    picture.nBlocksPerRow = (nBlocks + kMaxRows - 1) / kMaxRows;
    for (int32_t i = 0; i < nBlocks; ++i) {
        if (i % picture.nBlocksPerRow == 0) {
            picture.rows.push_back({.iFirst = i, .sum = {}, .seams = {}});
        }
        Row &row = picture.rows.back();
        picture.starts.push_back(row.sum.nSize);
        row.iLast = i;
        add(facts.blocks[static_cast<size_t>(i)], &row.sum);
    }
    return picture;
}

// The columns that a byte of the row takes.
double columnsPerByte(const Row &row) {
    return kColumns / static_cast<double>(std::max<int64_t>(row.sum.nSize, 1));
}

// Calls visit with each column that the bytes from begin to end of the row touch, the share of the
// column that they take, and the distance from its middle to them.
template <typename Visitor>
void visitColumns(int64_t begin, int64_t end, const Visitor &visit, Row *pRow) {
    const double scale = columnsPerByte(*pRow);
    const double from = static_cast<double>(begin) * scale;
    const double to = static_cast<double>(end) * scale;
    for (auto i = static_cast<size_t>(from);
         i < pRow->columns.size() && static_cast<double>(i) < to; ++i) {
        const auto left = static_cast<double>(i);
        visit(&pRow->columns[i], std::min(to, left + 1) - std::max(from, left),
              std::max({from - left - 0.5, left + 0.5 - to, 0.0}));
    }
}

Row *rowOf(int32_t iBlock, Picture *pPicture) {
    return &pPicture->rows[static_cast<size_t>(iBlock / pPicture->nBlocksPerRow)];
}

void fillBlock(int32_t iBlock, int64_t nUsed, Picture *pPicture) {
    const int64_t start = pPicture->starts[static_cast<size_t>(iBlock)];
    const auto visit = [](Column *pColumn, double share, double) { pColumn->used += share; };
    visitColumns(start, start + nUsed, visit, rowOf(iBlock, pPicture));
}

void fillSpan(const TextSpan &span, int iShade, Picture *pPicture) {
    Row *const pRow = rowOf(span.iBlock, pPicture);
    const int64_t begin = pPicture->starts[static_cast<size_t>(span.iBlock)] + span.nOffset;
    const auto visit = [iShade](Column *pColumn, double share, double distance) {
        pColumn->live += share;
        if (distance < pColumn->distance) {
            pColumn->distance = distance;
            pColumn->iShade = iShade;
        }
    };
    visitColumns(begin, begin + span.nBytes, visit, pRow);
    if (pRow->seams.size() < kMaxSeams) {
        pRow->seams.push_back(static_cast<double>(begin) * columnsPerByte(*pRow));
    } else {
        pPicture->bSeams = false;
    }
}

void fillRows(NamesManager *mgr, const Facts &facts, Picture *pPicture) {
    for (int32_t i = 0; i < mgr->nBlocks; ++i) {
        fillBlock(i, facts.blocks[static_cast<size_t>(i)].nUsed, pPicture);
    }
    visitSpans(mgr, [&](const TextSpan &span) {
        const int64_t iShade = static_cast<int64_t>(span.iFirst) * kShades / mgr->nNames;
        fillSpan(span, static_cast<int>(iShade), pPicture);
    });
}

std::string grouped(int64_t number) {
    std::string text = std::to_string(number);
    for (size_t i = text.size(); i > 3;) { text.insert(i -= 3, 1, ','); }
    return text;
}

// "3,000 names", "1 name"
std::string grouped(int64_t number, const char *szNoun) {
    return grouped(number) + " " + szNoun + (number == 1 ? "" : "s");
}

std::string percent(int64_t part, int64_t whole) {
    std::array<char, 16> text{};
    const double share =
        whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0;
    if (part > 0 && share < 0.05) { return "&lt;0.1 %"; }
    std::snprintf(text.data(), text.size(), "%.1f %%", share);
    return text.data();
}

// The text as XML may hold it: JSON's rules replace what is not UTF-8 and escape control
// characters.
std::string xmlText(const std::string &text) {
    std::string result;
    const std::string json =
        nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    for (const char c : json.substr(1, json.size() - 2)) {
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    }
    return result;
}

// How many pixels of a row's height the shares of a column take: none for nothing, at least one for
// anything else.
struct Heights {
    int live;
    int dead;
    bool operator==(const Heights &) const = default;
};

Heights heightsOf(const Column &column) {
    constexpr double kNothing = 1e-6;  // what rounding leaves when shares are added up
    const double dead = column.used - column.live;
    const auto pixels = [](double share) {
        return share < kNothing
                   ? 0
                   : std::clamp(static_cast<int>(std::lround(share * kRowHeight)), 1, kRowHeight);
    };
    Heights heights = {pixels(column.live), pixels(dead)};
    if (heights.live + heights.dead > kRowHeight) {
        (heights.live > heights.dead ? heights.live : heights.dead) =
            kRowHeight - std::min(heights.live, heights.dead);
    }
    return heights;
}

// Rectangles of one row as path data, by colour; columns that look alike become one rectangle.
std::map<std::string, std::string> rectanglesOf(const Row &row) {
    std::map<std::string, std::string> paths;
    const auto addRectangle = [&paths](const std::string &colour, size_t first, size_t end, int top,
                                       int height) {
        std::array<char, 64> text{};
        if (height == 0) { return; }
        std::snprintf(text.data(), text.size(), "M%zu %dh%zuv%dh-%zuz", first * kColumnWidth, top,
                      (end - first) * kColumnWidth, height, (end - first) * kColumnWidth);
        paths[colour] += text.data();
    };
    for (size_t i = 0; i < row.columns.size();) {
        const Heights heights = heightsOf(row.columns[i]);
        const size_t first = i;
        while (i < row.columns.size() && heightsOf(row.columns[i]) == heights &&
               row.columns[i].iShade == row.columns[first].iShade) {
            ++i;
        }
        addRectangle(shade(row.columns[first].iShade), first, i, kRowHeight - heights.live,
                     heights.live);
        addRectangle(kDead, first, i, kRowHeight - heights.live - heights.dead, heights.dead);
    }
    return paths;
}

// "block 3", "blocks 6-8"
std::string labelOf(const Row &row) {
    const std::string first = std::to_string(row.iFirst);
    return row.iFirst == row.iLast ? "block " + first
                                   : "blocks " + first + "-" + std::to_string(row.iLast);
}

void drawLabels(const Row &row, int top, Output *pOutput) {
    const BlockFacts &sum = row.sum;
    const std::string label = labelOf(row);
    const std::string title = label + ": " + grouped(sum.nSize, "byte") + "; " +
                              grouped(sum.nNames, "name") + " in " +
                              grouped(sum.nUsed - sum.nDead, "byte") + ", " + grouped(sum.nDead) +
                              " dead, " + grouped(sum.nSize - sum.nUsed) + " free";
    pOutput->print("<g transform=\"translate(%d %d)\"><title>%s</title>\n", kMapLeft, top,
                   title.c_str());
    pOutput->print("<text x=\"-12\" y=\"10\" text-anchor=\"end\">%s</text>", label.c_str());
    pOutput->print("<text class=\"s\" x=\"-12\" y=\"23\" text-anchor=\"end\">%s</text>\n",
                   grouped(sum.nSize, "byte").c_str());
}

void drawBytes(const Row &row, bool bSeams, Output *pOutput) {
    pOutput->print("<rect width=\"%d\" height=\"%d\" fill=\"%s\"/>\n", kMapWidth, kRowHeight,
                   kFree);
    for (const auto &[colour, path] : rectanglesOf(row)) {
        pOutput->print("<path fill=\"%s\" d=\"%s\"/>\n", colour.c_str(), path.c_str());
    }
    if (!bSeams) { return; }
    pOutput->write("<path class=\"seam\" d=\"");
    for (const double seam : row.seams) {
        pOutput->print("M%.1f 0v%d", seam * kColumnWidth, kRowHeight);
    }
    pOutput->write("\"/>\n");
}

void drawRow(const Row &row, bool bSeams, int top, int64_t nLargest, Output *pOutput) {
    const BlockFacts &sum = row.sum;
    drawLabels(row, top, pOutput);
    drawBytes(row, bSeams, pOutput);
    const double length = kMapWidth * static_cast<double>(sum.nSize) /
                          static_cast<double>(std::max<int64_t>(nLargest, 1));
    pOutput->print("<rect y=\"%d\" width=\"%.1f\" height=\"3\" fill=\"#9a9aa6\"/>\n",
                   kRowHeight + 3, std::max(length, 1.0));
    pOutput->print("<text x=\"%d\" y=\"10\">%s</text>", kMapWidth + 12,
                   grouped(sum.nNames, "name").c_str());
    pOutput->print("<text class=\"s\" x=\"%d\" y=\"23\">dead %s, free %s</text></g>\n",
                   kMapWidth + 12, percent(sum.nDead, sum.nSize).c_str(),
                   percent(sum.nSize - sum.nUsed, sum.nSize).c_str());
}

void drawHead(const NamesManager *mgr, const Facts &facts, const std::string &title,
              const Picture &picture, Output *pOutput) {
    const std::string kind =
        facts.bPositions ? "individual positions" : grouped(mgr->nSegments, "segment");
    const std::string text = grouped(mgr->nNames, "name") + ", " + kind + ", " +
                             grouped(mgr->nBlocks, "block") + " with room for " +
                             grouped(facts.nLive + facts.nDead + facts.nFree, "byte");
    std::string rows = picture.nBlocksPerRow == 1
                           ? "A row for each block"
                           : "A row for each " + grouped(picture.nBlocksPerRow) + " blocks";
    rows += ", from its first byte to its last; the line below it compares their sizes.";
    if (picture.bSeams) {
        rows += facts.bPositions ? " White lines: where names begin."
                                 : " White lines: where segments begin.";
    }
    pOutput->print("<text x=\"24\" y=\"36\" class=\"t\">%s</text>\n", xmlText(title).c_str());
    pOutput->print("<text x=\"24\" y=\"58\">%s</text>\n", text.c_str());
    pOutput->print("<text x=\"24\" y=\"142\" class=\"s\">%s</text>\n", rows.c_str());
}

void drawLegend(const NamesManager *mgr, const Facts &facts, Output *pOutput) {
    const int64_t nAll = facts.nLive + facts.nDead + facts.nFree;
    constexpr int kRampLeft = 24;
    constexpr int kRampStep = 4;
    for (int i = 0; i < kShades; ++i) {
        pOutput->print("<rect x=\"%d\" y=\"78\" width=\"%d\" height=\"16\" fill=\"%s\"/>",
                       kRampLeft + i * kRampStep, kRampStep, shade(i).c_str());
    }
    pOutput->print("\n<text class=\"s\" x=\"%d\" y=\"109\">name 0</text>", kRampLeft);
    pOutput->print("<text class=\"s\" x=\"%d\" y=\"109\" text-anchor=\"end\">%s</text>\n",
                   kRampLeft + kShades * kRampStep, grouped(std::max(mgr->nNames - 1, 0)).c_str());
    int x = kRampLeft + kShades * kRampStep + 10;
    const auto entry = [&](const char *szColour, const char *szWhat, int64_t nBytes) {
        if (szColour) {
            pOutput->print("<rect x=\"%d\" y=\"78\" width=\"16\" height=\"16\" fill=\"%s\"/>", x,
                           szColour);
            x += 24;
        }
        pOutput->print("<text x=\"%d\" y=\"91\">%s: %s (%s)</text>\n", x, szWhat,
                       grouped(nBytes, "byte").c_str(), percent(nBytes, nAll).c_str());
        x += 264;
    };
    entry(nullptr, "live text", facts.nLive);
    entry(kDead, "dead", facts.nDead);
    entry(kFree, "free", facts.nFree);
}

}  // namespace

void drawPicture(NamesManager *mgr, const Facts &facts, const std::string &title, Output *pOutput) {
    Picture picture = layOut(facts);
    fillRows(mgr, facts, &picture);
    const int height = kRowsTop + static_cast<int>(picture.rows.size()) * kRowPitch + 16;
    pOutput->print(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 "
        "0 %d %d\">\n",
        kPageWidth, height, kPageWidth, height);
    pOutput->write(
        "<style>text{font:13px "
        "sans-serif;fill:#22222c}.s{font-size:11px;fill:#5c5c68}.t{font-size:19px;font-weight:bold}"
        ".seam{stroke:#fff;stroke-width:.7;fill:none}</style>\n");
    pOutput->print("<rect width=\"%d\" height=\"%d\" fill=\"#fff\"/>\n", kPageWidth, height);
    drawHead(mgr, facts, title, picture, pOutput);
    drawLegend(mgr, facts, pOutput);
    int64_t nLargest = 0;
    for (const Row &row : picture.rows) { nLargest = std::max(nLargest, row.sum.nSize); }
    int top = kRowsTop;
    for (const Row &row : picture.rows) {
        drawRow(row, picture.bSeams, top, nLargest, pOutput);
        top += kRowPitch;
    }
    pOutput->write("</svg>\n");
}

}  // namespace tool
