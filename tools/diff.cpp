// The command diff: how two lists of names differ.
#include <array>
#include <charconv>
#include <string>

#include <nlohmann/json.hpp>

#include "tools/commands.hpp"
#include "tools/comparison.hpp"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

void append(int32_t number, std::string *pText) {
    std::array<char, 16> digits;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    pText->append(digits.data(), result.ptr);
}

// Writes the text if it has become long.
void writeIfLong(std::string *pText, Output *pOutput) {
    constexpr size_t kLong = 65536;
    if (pText->size() < kLong) { return; }
    pOutput->write(*pText);
    pText->clear();
}

// ---- As text ----

using Visit = void (*)(const Comparison &comparison, const DifferenceVisitor &visit);

// Prints index in A, tab, index in B, tab and name for each difference of a kind.
void printLines(const Comparison &comparison, Visit visit, char cEnd, Output *pOutput) {
    std::string text;
    visit(comparison, [&](const Difference &difference) {
        append(difference.indexInA, &text);
        text += '\t';
        append(difference.indexInB, &text);
        text += '\t';
        text += difference.szName;
        text += cEnd;
        writeIfLong(&text, pOutput);
    });
    pOutput->write(text);
}

void printSummary(const Comparison &comparison, const Request &request, Output *pOutput) {
    pOutput->write(counted(comparison.nOnlyInA, "name") + " only in " + inputName(request.image) +
                   "\n" + counted(comparison.nOnlyInB, "name") + " only in " +
                   inputName(request.other) + "\n" + counted(comparison.nMoved, "name") +
                   " whose index differs\n" + counted(comparison.nSame, "name") + " the same\n");
}

// ---- As JSON ----

using nlohmann::ordered_json;

// Bytes that are not UTF-8 become replacement characters, so that the output is valid JSON.
std::string jsonText(const ordered_json &value) {
    return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

// Writes one object a line: a document that held them all would take many times the memory of the
// names.
void printArray(const char *szKey, const Comparison &comparison, Visit visit, Output *pOutput) {
    std::string text = std::string(",\n  \"") + szKey + "\": [";
    bool bAny = false;
    visit(comparison, [&](const Difference &difference) {
        ordered_json object;
        if (difference.indexInA >= 0) { object["indexInA"] = difference.indexInA; }
        if (difference.indexInB >= 0) { object["indexInB"] = difference.indexInB; }
        object["name"] = difference.szName;
        text += (bAny ? ",\n    " : "\n    ") + jsonText(object);
        bAny = true;
        writeIfLong(&text, pOutput);
    });
    pOutput->write(text + (bAny ? "\n  ]" : "]"));
}

void printJson(const Comparison &comparison, const Request &request, Output *pOutput) {
    const ordered_json counts = {{"onlyInA", comparison.nOnlyInA},
                                 {"onlyInB", comparison.nOnlyInB},
                                 {"indexDiffers", comparison.nMoved},
                                 {"same", comparison.nSame}};
    pOutput->write("{\n  \"a\": " + jsonText(inputName(request.image)) + ",\n  \"b\": " +
                   jsonText(inputName(request.other)) + ",\n  \"counts\": " + jsonText(counts));
    if (!request.bSummary) {
        printArray("onlyInA", comparison, visitOnlyInA, pOutput);
        printArray("onlyInB", comparison, visitOnlyInB, pOutput);
        printArray("indexDiffers", comparison, visitMoved, pOutput);
    }
    pOutput->write("\n}\n");
}

Comparison compareWithProgress(NamesManager *a, NamesManager *b) {
    const Progress progress("comparing");
    return compareNames(a, b);
}

}  // namespace

int runDiff(const Request &request) {
    if (request.image == "-" && request.other == "-") {
        fail(inputName(request.image), "cannot be both A and B");
    }
    const ManagerHandle a = loadImageOrList(request.image, request.bNull);
    const ManagerHandle b = loadImageOrList(request.other, request.bNull);
    const Comparison comparison = compareWithProgress(a.get(), b.get());
    Output output;
    if (request.bJson) {
        printJson(comparison, request, &output);
    } else if (request.bSummary) {
        printSummary(comparison, request, &output);
    } else {
        const char cEnd = request.bNull ? '\0' : '\n';
        printLines(comparison, visitOnlyInA, cEnd, &output);
        printLines(comparison, visitOnlyInB, cEnd, &output);
        printLines(comparison, visitMoved, cEnd, &output);
    }
    output.finish();
    const bool bSame = comparison.nOnlyInA + comparison.nOnlyInB + comparison.nMoved == 0;
    return bSame ? kExitSuccess : kExitNo;
}

}  // namespace tool
