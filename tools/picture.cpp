#include "tools/picture.hpp"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <map>

#include <nlohmann/json.hpp>

namespace tool {
namespace {

// All in pixels but for the number of columns. A column is the smallest thing drawn of a row.
constexpr int kColumns = 380;
constexpr int kColumnWidth = 2;
constexpr int kMapWidth = kColumns * kColumnWidth;
constexpr int kMapLeft = 170;
constexpr int kPageWidth = kMapLeft + kMapWidth + 210;
constexpr int kRowHeight = 22;
constexpr int kRowPitch = 34;
constexpr int kRowsTop = 162;
constexpr int64_t kMaxRows = 40;
constexpr size_t kMaxSeams = 160;  // more would hide what they separate

constexpr char kDead[] = "#d62f1f";
constexpr char kFree[] = "#ececf0";

// The colours of names from the first to the last: even steps for the eye, and none that could be
// taken for dead or free bytes.
constexpr int kShades = 48;
constexpr std::array<std::array<int, 3>, 5> kRamp = {
    {{65, 40, 120}, {50, 98, 160}, {33, 145, 140}, {94, 190, 98}, {240, 216, 60}}};

std::string shade(int iShade) {
    const double place = static_cast<double>(iShade) / (kShades - 1) * (kRamp.size() - 1);
    const size_t i = std::min(static_cast<size_t>(place), kRamp.size() - 2);
    std::array<char, 8> text{};
    std::array<int, 3> mix{};
    for (size_t c = 0; c < mix.size(); ++c) {
        mix[c] = static_cast<int>(std::lround(kRamp[i][c] + (place - static_cast<double>(i)) *
                                                                (kRamp[i + 1][c] - kRamp[i][c])));
    }
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", static_cast<unsigned>(mix[0]),
                  static_cast<unsigned>(mix[1]), static_cast<unsigned>(mix[2]));
    return text.data();
}

struct Column {
    double live = 0;  // the share of the column, 0 to 1
    double used = 0;
    double away = 1;  // how far from its middle the nearest run is
    int iShade = 0;   // that run's
};

// A row: consecutive blocks drawn end to end.
struct Row {
    int32_t iFirst = 0;
    int32_t iLast = 0;
    BlockFacts sum;
    std::array<Column, kColumns> columns{};
    std::vector<double> seams;  // where runs begin, in columns; no more than kMaxSeams are kept
};

struct Picture {
    std::vector<Row> rows;
    int64_t nBlocksPerRow = 1;
    std::vector<int64_t> starts;  // where each block begins in its row, in bytes
    bool bSeams = true;  // whether seams are drawn: in every row, or in none where one has too many
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
        picture.starts.push_back(row.sum.size);
        row.iLast = i;
        add(row.sum, facts.blocks[static_cast<size_t>(i)]);
    }
    return picture;
}

// Calls visit with each column that the bytes begin to end of a row touch, the share of the column
// that they take, and how far from its middle they stay.
template <typename Visitor>
void visitColumns(Row &row, int64_t begin, int64_t end, const Visitor &visit) {
    const double scale = kColumns / static_cast<double>(std::max<int64_t>(row.sum.size, 1));
    const double from = static_cast<double>(begin) * scale;
    const double to = static_cast<double>(end) * scale;
    for (auto i = static_cast<size_t>(from); i < row.columns.size() && static_cast<double>(i) < to;
         ++i) {
        const auto left = static_cast<double>(i);
        visit(row.columns[i], std::min(to, left + 1) - std::max(from, left),
              std::max({from - left - 0.5, left + 0.5 - to, 0.0}));
    }
}

void fillRows(Picture &picture, NamesManager *mgr, const Facts &facts) {
    const auto rowOf = [&picture](int32_t iBlock) -> Row & {
        return picture.rows[static_cast<size_t>(iBlock / picture.nBlocksPerRow)];
    };
    for (int32_t i = 0; i < mgr->nBlocks; ++i) {
        const int64_t start = picture.starts[static_cast<size_t>(i)];
        visitColumns(rowOf(i), start, start + facts.blocks[static_cast<size_t>(i)].used,
                     [](Column &column, double share, double) { column.used += share; });
    }
    visitRuns(mgr, [&](const TextRun &run) {
        Row &row = rowOf(run.iBlock);
        const int64_t begin = picture.starts[static_cast<size_t>(run.iBlock)] + run.nOffset;
        const auto iShade =
            static_cast<int>(static_cast<int64_t>(run.iFirst) * kShades / mgr->nNames);
        visitColumns(row, begin, begin + run.nBytes,
                     [iShade](Column &column, double share, double away) {
                         column.live += share;
                         if (away < column.away) {
                             column.away = away;
                             column.iShade = iShade;
                         }
                     });
        if (row.seams.size() < kMaxSeams) {
            row.seams.push_back(static_cast<double>(begin) * kColumns /
                                static_cast<double>(std::max<int64_t>(row.sum.size, 1)));
        } else {
            picture.bSeams = false;
        }
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

// The text as XML may hold it: what is no UTF-8 or controls the terminal has been replaced or
// escaped by JSON's rules.
std::string xmlText(const std::string &text) {
    std::string result;
    const std::string json =
        nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    for (const char c : json.substr(1, json.size() - 2)) {
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    }
    return result;
}

// How many pixels of a row's height the shares of a column get: none for nothing, one at least for
// anything.
struct Heights {
    int live;
    int dead;
    bool operator==(const Heights &) const = default;
};

Heights heightsOf(const Column &column) {
    constexpr double kNothing = 1e-6;  // rounding errors of adding up shares
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

// Rectangles of one row as path data, one path for each colour; columns alike become one rectangle.
std::map<std::string, std::string> rectanglesOf(const Row &row) {
    std::map<std::string, std::string> paths;
    const auto add = [&paths](const std::string &colour, size_t first, size_t end, int top,
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
        add(shade(row.columns[first].iShade), first, i, kRowHeight - heights.live, heights.live);
        add(kDead, first, i, kRowHeight - heights.live - heights.dead, heights.dead);
    }
    return paths;
}

void drawRow(Output &output, const Row &row, bool bSeams, int top, int64_t nLargest) {
    const BlockFacts &sum = row.sum;
    const std::string label = row.iFirst == row.iLast ? "block " + std::to_string(row.iFirst)
                                                      : "blocks " + std::to_string(row.iFirst) +
                                                            "-" + std::to_string(row.iLast);
    const std::string title = label + ": " + grouped(sum.size, "byte") + "; " +
                              grouped(sum.names, "name") + " in " +
                              grouped(sum.used - sum.dead, "byte") + ", " + grouped(sum.dead) +
                              " dead, " + grouped(sum.size - sum.used) + " free";
    output.print("<g transform=\"translate(%d %d)\"><title>%s</title>\n", kMapLeft, top,
                 title.c_str());
    output.print("<text x=\"-12\" y=\"10\" text-anchor=\"end\">%s</text>", label.c_str());
    output.print("<text class=\"s\" x=\"-12\" y=\"23\" text-anchor=\"end\">%s</text>\n",
                 grouped(sum.size, "byte").c_str());
    output.print("<rect width=\"%d\" height=\"%d\" fill=\"%s\"/>\n", kMapWidth, kRowHeight, kFree);
    for (const auto &[colour, path] : rectanglesOf(row)) {
        output.print("<path fill=\"%s\" d=\"%s\"/>\n", colour.c_str(), path.c_str());
    }
    if (bSeams) {
        output.write("<path class=\"seam\" d=\"");
        for (const double seam : row.seams) {
            output.print("M%.1f 0v%d", seam * kColumnWidth, kRowHeight);
        }
        output.write("\"/>\n");
    }
    const double length = kMapWidth * static_cast<double>(sum.size) /
                          static_cast<double>(std::max<int64_t>(nLargest, 1));
    output.print("<rect y=\"%d\" width=\"%.1f\" height=\"3\" fill=\"#9a9aa6\"/>\n", kRowHeight + 3,
                 std::max(length, 1.0));
    output.print("<text x=\"%d\" y=\"10\">%s</text>", kMapWidth + 12,
                 grouped(sum.names, "name").c_str());
    output.print("<text class=\"s\" x=\"%d\" y=\"23\">dead %s, free %s</text></g>\n",
                 kMapWidth + 12, percent(sum.dead, sum.size).c_str(),
                 percent(sum.size - sum.used, sum.size).c_str());
}

void drawHead(Output &output, const NamesManager *mgr, const Facts &facts, const std::string &image,
              const Picture &picture) {
    const std::string kind =
        facts.bPositions ? "individual positions" : grouped(mgr->nSegments, "segment");
    const std::string text = grouped(mgr->nNames, "name") + ", " + kind + ", " +
                             grouped(mgr->nBlocks, "block") + " with room for " +
                             grouped(facts.live + facts.dead + facts.free, "byte");
    std::string rows = picture.nBlocksPerRow == 1
                           ? "A row for each block"
                           : "A row for each " + grouped(picture.nBlocksPerRow) + " blocks";
    rows += ", from its first byte to its last; the line below it compares their sizes.";
    if (picture.bSeams) {
        rows += facts.bPositions ? " White lines: where names begin."
                                 : " White lines: where segments begin.";
    }
    output.print("<text x=\"24\" y=\"36\" class=\"t\">%s</text>\n", xmlText(image).c_str());
    output.print("<text x=\"24\" y=\"58\">%s</text>\n", text.c_str());
    output.print("<text x=\"24\" y=\"142\" class=\"s\">%s</text>\n", rows.c_str());
}

void drawLegend(Output &output, const NamesManager *mgr, const Facts &facts) {
    const int64_t nAll = facts.live + facts.dead + facts.free;
    constexpr int kRampLeft = 24;
    constexpr int kRampStep = 4;
    for (int i = 0; i < kShades; ++i) {
        output.print("<rect x=\"%d\" y=\"78\" width=\"%d\" height=\"16\" fill=\"%s\"/>",
                     kRampLeft + i * kRampStep, kRampStep, shade(i).c_str());
    }
    output.print("\n<text class=\"s\" x=\"%d\" y=\"109\">name 0</text>", kRampLeft);
    output.print("<text class=\"s\" x=\"%d\" y=\"109\" text-anchor=\"end\">%s</text>\n",
                 kRampLeft + kShades * kRampStep, grouped(std::max(mgr->nNames - 1, 0)).c_str());
    int x = kRampLeft + kShades * kRampStep + 10;
    const auto entry = [&](const char *szColour, const char *szWhat, int64_t nBytes) {
        if (szColour) {
            output.print("<rect x=\"%d\" y=\"78\" width=\"16\" height=\"16\" fill=\"%s\"/>", x,
                         szColour);
            x += 24;
        }
        output.print("<text x=\"%d\" y=\"91\">%s: %s (%s)</text>\n", x, szWhat,
                     grouped(nBytes, "byte").c_str(), percent(nBytes, nAll).c_str());
        x += 264;
    };
    entry(nullptr, "live text", facts.live);
    entry(kDead, "dead", facts.dead);
    entry(kFree, "free", facts.free);
}

}  // namespace

void drawPicture(Output &output, NamesManager *mgr, const Facts &facts, const std::string &image) {
    Picture picture = layOut(facts);
    fillRows(picture, mgr, facts);
    const int height = kRowsTop + static_cast<int>(picture.rows.size()) * kRowPitch + 16;
    output.print("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 "
                 "0 %d %d\">\n",
                 kPageWidth, height, kPageWidth, height);
    output.write(
        "<style>text{font:13px "
        "sans-serif;fill:#22222c}.s{font-size:11px;fill:#5c5c68}.t{font-size:19px;font-weight:bold}"
        ".seam{stroke:#fff;stroke-width:.7;fill:none}</style>\n");
    output.print("<rect width=\"%d\" height=\"%d\" fill=\"#fff\"/>\n", kPageWidth, height);
    drawHead(output, mgr, facts, image, picture);
    drawLegend(output, mgr, facts);
    int64_t nLargest = 0;
    for (const Row &row : picture.rows) { nLargest = std::max(nLargest, row.sum.size); }
    int top = kRowsTop;
    for (const Row &row : picture.rows) {
        drawRow(output, row, picture.bSeams, top, nLargest);
        top += kRowPitch;
    }
    output.write("</svg>\n");
}

}  // namespace tool
