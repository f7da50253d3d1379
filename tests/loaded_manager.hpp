// Images, and what must hold of a manager after a load, whatever the image was. Shared by the
// loader's tests and its fuzzing.
#pragma once

#include "tests/histories.hpp"

namespace loaded {

using model::Record;
using model::Strings;

inline std::string imageOf(const Record &record) {
    return model::joined(record.save());
}

// Sixteen names in two blocks, dead bytes among them, and a cursor in segment mode.
inline Record recordWithNames(bool bPositions) {
    Record record("%d. name");
    record.blocks.assign(3, {60, 0, ""});
    record.generateNames(18);
    const std::string longer = "a longer name", same = "5. Name";
    record.storeNames({2, 2, 0}, &longer);
    record.storeNames({4, 4, 0}, &same);
    record.removeNames({9, 10, 0});
    if (bPositions) { record.storeIndividualNamePositions(); }
    Strings read;
    record.getNamePointers({0, 5, 0}, &read);
    return record;
}

// Of every kind that an image can be: without names and with, in both storage modes.
inline std::vector<Record> soundRecords() {
    std::vector<Record> records = {Record("nm%d"), Record("nm%d"), recordWithNames(false),
                                   recordWithNames(true)};
    records[1].bSegments = false;
    records[1].nSegmentsAlloc = 0;
    return records;
}

inline int32_t load(NamesManager *mgr, const std::string &image) {
    const std::vector<char> bytes(image.begin(), image.end());  // so that a sanitizer sees the end
    const steered::Input input(bytes.data(), bytes.size());
    return NamesManager_Load(mgr, nullptr, input.pStream);
}

inline std::string save(NamesManager *mgr) {
    model::Output output;
    return NamesManager_Save(mgr, nullptr, &output.stream) == 0 ? model::joined(output.writes) : "";
}

inline Strings namesOf(const NamesManager *mgr) {
    return histories::recordOf(*mgr).names;
}

// What is wrong with two managers, empty if nothing is. So many operations are carried out on them,
// and they end.
inline std::string faultIn(NamesManager *mgr, NamesManager *other, const histories::Choices &choose,
                           int32_t nOperations) {
    histories::Game game = {
        {}, {{mgr, histories::recordOf(*mgr)}, {other, histories::recordOf(*other)}}};
    const std::string_view format = mgr->szNameFormat;
    // The model prints numbers as the C library does, which takes its time for very many digits.
    const auto bLong = std::search_n(format.begin(), format.end(), 4, '0', [](char c, char) {
                           return c >= '0' && c <= '9';
                       }) != format.end();
    std::string wrong = histories::audit(game.pairs[0]) + histories::audit(game.pairs[1]);
    if (!game.pairs[0].twin.hasTrueMaximum() || !game.pairs[1].twin.hasTrueMaximum()) {
        wrong += "A false maximum. ";
    }
    for (; nOperations > 0 && wrong.empty() && !bLong; --nOperations) {
        wrong = game.play(choose(std::size(histories::kKinds)), choose(2), choose, nullptr);
    }
    return wrong + game.end();
}

// The same for a manager of the default format whose load answered nStatus. What the load left of
// the image serves for choices.
inline std::string faultAfterLoad(NamesManager *mgr, const std::string &image, int32_t nStatus,
                                  int32_t nOperations) {
    std::string wrong = nStatus != 0 ? histories::difference({mgr, Record("nm%d")}) : "";
    const std::string saved = imageOf(histories::recordOf(*mgr));
    const bool bState = nStatus == 0 && !image.starts_with("\xff\xff\xff\xff");
    const size_t nTable = bState ? sizeof(NameStorageBlock) * size_t(mgr->nBlocks) : 0;  // at 92
    if (bState && !(image.substr(0, 92) + histories::normalized(image.substr(92, nTable)) +
                    image.substr(92 + nTable))
                       .starts_with(saved)) {
        wrong = "It holds something else. ";
    }
    const auto *pEnd = reinterpret_cast<const uint8_t *>(image.data()) + image.size();
    const bool bRest = bState && saved.size() < image.size();
    const auto choices = bRest ? histories::byteChoices(pEnd - image.size() + saved.size(), pEnd)
                               : histories::randomChoices(1);
    return wrong + faultIn(mgr, NamesManager_Create(nullptr, nullptr), choices, nOperations);
}

}  // namespace loaded
