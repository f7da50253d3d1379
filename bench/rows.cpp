#include "bench/rows.hpp"

#include <malloc.h>

#include <cmath>
#include <mutex>
#include <utility>

#include "bench/work.hpp"

namespace {

// ---- Storing ----

template <typename Contender, int32_t kCalls>
Sample storeFromBuffer(const Inputs &in) {
    Contender contender;
    const int32_t nNames = countOf(in.list);
    const double nSeconds = secondsOf([&] {
        inRanges(nNames, (nNames + kCalls - 1) / kCalls, [&](int32_t first, int32_t n) {
            contender.storeBuffer(first, n, in.list.names[at(first)]);
        });
    });
    return {nSeconds, contentOf(contender), nNames};
}

// The index is built after the first call.
template <typename Contender>
void storeIndexed(Contender &contender, const NameList &list) {
    const int32_t nNames = countOf(list);
    inRanges(nNames, (nNames + 79) / 80, [&](int32_t first, int32_t n) {
        contender.storeBuffer(first, n, list.names[at(first)]);
        if (first == 0) { contender.buildIndex(); }
    });
}

template <typename Contender>
Sample storeWithIndex(const Inputs &in) {
    Contender contender;
    const double nSeconds = secondsOf([&] { storeIndexed(contender, in.list); });
    const auto iFound = static_cast<uint64_t>(contender.find(in.hits.names[0]));
    return {nSeconds, mixIn(contentOf(contender), iFound), countOf(in.list)};
}

template <typename Contender>
Sample storeFromPointers(const Inputs &in) {
    Contender contender;
    const double nSeconds =
        secondsOf([&] { contender.storePointers(countOf(in.list), in.list.names.data()); });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

template <typename Contender, typename Lock, bool kPositions = false>
Sample appendSingly(const Inputs &in) {
    Contender contender;
    if (kPositions) { contender.usePositions(); }
    const double nSeconds = secondsOfCalls<Lock>(in.list.names.size(), [&](size_t k) {
        contender.append(static_cast<int32_t>(k), in.list.names[k]);
    });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

// The index is built after the first name.
template <typename Contender>
Sample appendIndexed(const Inputs &in) {
    Contender contender;
    contender.append(0, in.list.names[0]);
    contender.buildIndex();
    const double nSeconds = secondsOf([&] {
        for (size_t k = 1; k < in.list.names.size(); ++k) {
            contender.append(static_cast<int32_t>(k), in.list.names[k]);
        }
    });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

// ---- Reading ----
// Memory for the results comes first, so that clearing it does not evict from the caches what is to
// be read.

template <typename Contender>
Sample readPointers(const Inputs &in) {
    std::vector<const char *> names(in.list.names.size());
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] {
        inRanges(countOf(in.list), 250, [&](int32_t first, int32_t n) {
            contender.pointers(first, n, &names[at(first)]);
        });
    });
    return {nSeconds, digestOf(names), countOf(in.list)};
}

template <typename Contender, typename Lock>
Sample readAscending(const Inputs &in) {
    std::vector<const char *> names(in.list.names.size());
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOfCalls<Lock>(in.list.names.size(), [&](size_t k) {
        names[k] = contender.name(static_cast<int32_t>(k));
    });
    return {nSeconds, digestOf(names), countOf(in.list)};
}

template <typename Contender, typename Lock>
Sample readRandomly(const Inputs &in) {
    std::vector<const char *> names(in.picks.size());
    Contender contender;
    fill(contender, in.list);
    contender.usePositions();
    const double nSeconds = secondsOfCalls<Lock>(
        in.picks.size(), [&](size_t k) { names[k] = contender.name(in.picks[k]); });
    return {nSeconds, digestOf(names), static_cast<int64_t>(in.picks.size())};
}

template <typename Contender>
Sample copyOut(const Inputs &in) {
    std::vector<char> copy(in.list.text.size(), 'x');
    Contender contender;
    fill(contender, in.list);
    size_t nCopied = 0;
    const double nSeconds = secondsOf([&] {
        inRanges(countOf(in.list), 2000, [&](int32_t first, int32_t n) {
            nCopied += contender.copyOut(first, n, copy.data() + nCopied, copy.size() - nCopied);
        });
    });
    return {nSeconds, digestOf(copy.data(), nCopied), countOf(in.list)};
}

template <typename Contender>
Sample copyFields(const Inputs &in) {
    constexpr int32_t kWidth = 24;
    std::vector<char> fields(in.list.names.size() * kWidth, 'x');
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] {
        inRanges(countOf(in.list), 2000, [&](int32_t first, int32_t n) {
            contender.copyFields(first, n, kWidth, &fields[at(first) * kWidth]);
        });
    });
    return {nSeconds, digestOf(fields.data(), fields.size()), countOf(in.list)};
}

template <typename Contender>
Sample findLongest(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    size_t nLongest = 0;
    const double nSeconds = secondsOf([&] { nLongest = contender.longest(); });
    return {nSeconds, nLongest, countOf(in.list)};
}

// ---- Looking up ----

template <typename Contender>
Sample lookUpFirst(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    int32_t iFound = -1;
    const double nSeconds = secondsOf([&] {
        contender.buildIndex();
        iFound = contender.find(in.hits.names[0]);
    });
    return {nSeconds, static_cast<uint64_t>(iFound), countOf(in.list)};
}

template <typename Contender, typename Lock, NameList Inputs::*kQueries>
Sample findSingly(const Inputs &in) {
    const NameList &queries = in.*kQueries;
    std::vector<int32_t> found(queries.names.size());
    Contender contender;
    fill(contender, in.list);
    contender.buildIndex();
    const double nSeconds = secondsOfCalls<Lock>(
        found.size(), [&](size_t k) { found[k] = contender.find(queries.names[k]); });
    return {nSeconds, digestOf(found), countOf(queries)};
}

template <typename Contender>
Sample findLists(const Inputs &in) {
    std::vector<int32_t> found(in.hits.names.size());
    Contender contender;
    fill(contender, in.list);
    contender.buildIndex();
    const double nSeconds = secondsOf([&] {
        inRanges(countOf(in.hits), 1000, [&](int32_t first, int32_t n) {
            contender.findList(&in.hits.names[at(first)], n, &found[at(first)]);
        });
    });
    return {nSeconds, digestOf(found), countOf(in.hits)};
}

// After each append a random name of the list is looked up, which may not have been appended yet.
template <typename Contender, typename Lock>
Sample appendAndFind(const Inputs &in) {
    Contender contender;
    Lock lock;
    std::vector<int32_t> found(in.list.names.size());
    const double nSeconds = secondsOf([&] {
        contender.buildIndex();
        for (size_t i = 0; i < found.size(); ++i) {
            {
                const std::lock_guard<Lock> guard(lock);
                contender.append(static_cast<int32_t>(i), in.list.names[i]);
            }
            const std::lock_guard<Lock> guard(lock);
            found[i] = contender.find(in.hits.names[i]);
        }
    });
    return {nSeconds, mixIn(digestOf(found), contentOf(contender)), countOf(in.list)};
}

template <typename Contender>
Sample generate(const Inputs &in) {
    Contender contender;
    const int32_t nNames = countOf(in.list) / 2;
    const double nSeconds = secondsOf([&] { contender.generate(nNames); });
    return {nSeconds, contentOf(contender), nNames};
}

// All names given are new, so the check has to read them all. The index of the names held is built
// before the clock starts.
template <typename Contender, bool kFull>
Sample checkDuplicates(const Inputs &in) {
    Contender contender;
    if (kFull) {
        fill(contender, in.list);
        contender.buildIndex();
    }
    int32_t iDuplicate = 0;
    const double nSeconds = secondsOf([&] { iDuplicate = contender.findDuplicate(in.absent); });
    return {nSeconds, static_cast<uint64_t>(iDuplicate), countOf(in.absent)};
}

// ---- Changing ----

template <typename Contender>
Sample removeFirstHalf(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] { contender.removeFirst(countOf(in.list) / 2); });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

template <typename Contender>
Sample removeEveryOther(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] { contender.removeList(in.everyOther); });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

template <typename Contender, NameList Inputs::*kNew>
Sample replaceAll(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] { contender.replaceAll((in.*kNew).text.data()); });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

template <typename Contender, typename Lock, bool kPositions = false>
Sample replaceRandomly(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    if (kPositions) { contender.usePositions(); }
    const double nSeconds = secondsOfCalls<Lock>(in.picks.size(), [&](size_t k) {
        contender.replace(in.picks[k], in.renamedPicks.names[k]);
    });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

// Two names in each call, as no call may pay for all blocks.
Sample replaceNeighbours(const Inputs &in) {
    Component component;
    fill(component, in.list);
    component.usePositions();
    const double nSeconds = secondsOfCalls<NoLock>(in.picks.size() / 2, [&](size_t k) {
        component.replaceSome(std::min(in.picks[k], countOf(in.list) - 2), 2,
                              &in.hits.names[2 * k]);
    });
    return {nSeconds, contentOf(component), static_cast<int64_t>(in.picks.size() / 2)};
}

// ---- Whole lists ----

template <typename Contender>
Sample copyWhole(const Inputs &in) {
    Contender source;
    fill(source, in.list);
    Contender copy;
    const double nSeconds = secondsOf([&] { copy.copyFrom(source); });
    return {nSeconds, contentOf(copy), countOf(in.list)};
}

constexpr size_t kSmallImage = 65536;  // bytes; more than a short list takes

// Writes to a buffer of full size, so that saving is measured and not the growth of a buffer.
struct ReadyOutput {
    HostOutputStream stream;  // first, as the stream's functions get its address
    std::vector<char> bytes;
    size_t nUsed;
};

int32_t writeToReady(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    ReadyOutput &output = *reinterpret_cast<ReadyOutput *>(pStream);
    require(nBytes <= output.bytes.size() - output.nUsed);
    std::memcpy(output.bytes.data() + output.nUsed, pData, nBytes);
    output.nUsed += nBytes;
    return 0;
}

constexpr HostOutputStreamOps kReadyOps = {writeToReady};

// Saves a list and loads what was saved; kSave says which of the two is measured.
template <typename Contender, bool kSave>
Sample saveAndLoad(const Inputs &in) {
    ReadyOutput output = {
        {&kReadyOps},
        std::vector<char>(
            in.list.text.size() + in.list.names.size() * sizeof(uint32_t) + kSmallImage, 'x'),
        0};
    Contender source;
    fill(source, in.list);
    const double nSaving = secondsOf([&] { source.save(&output.stream); });
    HostInputStream *pInput = HostInputStream_CreateInMemory(output.bytes.data(), output.nUsed);
    require(pInput != nullptr);
    Contender loaded;
    const double nLoading = secondsOf([&] { loaded.load(pInput); });
    HostInputStream_Close(pInput);
    return {kSave ? nSaving : nLoading, contentOf(loaded), countOf(in.list)};
}

// Saves to the host's stream in memory, which grows as it is written.
template <typename Contender>
Sample saveGrowing(const Inputs &in) {
    Contender source;
    fill(source, in.list);
    HostOutputStream *pOutput = HostOutputStream_CreateInMemory();
    require(pOutput != nullptr);
    const double nSeconds = secondsOf([&] { source.save(pOutput); });
    require(HostOutputStream_Close(pOutput, 0) == 0);
    return {nSeconds, contentOf(source), countOf(in.list)};
}

// ---- Memory ----

double heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

template <typename Contender>
double heapOfGrown(const NameList &list) {
    const double nBefore = heapInUse();
    Contender contender;
    storeIndexed(contender, list);
    return heapInUse() - nBefore;
}

template <typename Contender>
MemoryUse memoryOf(const char *szContender, const NameList &list) {
    const double nNames = countOf(list);
    const double nText = static_cast<double>(list.text.size());
    const double nBefore = heapInUse();
    Contender contender;
    fill(contender, list);
    const double nWithout = heapInUse() - nBefore;
    contender.buildIndex();
    const double nWith = heapInUse() - nBefore;
    const double nGrown =
        Contender::kKeepsIndex ? (heapOfGrown<Contender>(list) - nText) / nNames : std::nan("");
    return {szContender, (nWithout - nText) / nNames, (nWith - nText) / nNames, nGrown, nWith};
}

// ---- The rows ----

template <NameList Inputs::*kQueries>
std::vector<Entrant> findEntrants() {
    return {{kComponent, findSingly<Component, NoLock, kQueries>},
            {kArena, findSingly<Arena, NoLock, kQueries>},
            {kArenaGuarded, findSingly<Arena, std::mutex, kQueries>},
            {kAbsl, findSingly<AbslStrings, NoLock, kQueries>},
            {kAbslGuarded, findSingly<AbslStrings, std::mutex, kQueries>},
            {kUnordered, findSingly<UnorderedStrings, NoLock, kQueries>},
            {kUnorderedGuarded, findSingly<UnorderedStrings, std::mutex, kQueries>}};
}

std::vector<Row> makeComparedRows() {
    return {
        row("store_80_calls", "store from one buffer, 80 calls", 0.65, kArena,
            {{kComponent, storeFromBuffer<Component, 80>},
             {kArena, storeFromBuffer<Arena, 80>},
             {kStrings, storeFromBuffer<AbslStrings, 80>}}),
        row("store_1_call", "store from one buffer, one call", 0.85, kArena,
            {{kComponent, storeFromBuffer<Component, 1>},
             {kArena, storeFromBuffer<Arena, 1>},
             {kStrings, storeFromBuffer<AbslStrings, 1>}}),
        row("store_indexed", "store from one buffer, 80 calls, with an index", 0.6, kArena,
            {{kComponent, storeWithIndex<Component>}, {kArena, storeWithIndex<Arena>}}),
        row("store_pointers", "store from a pointer array", 0.95, kArena,
            {{kComponent, storeFromPointers<Component>},
             {kArena, storeFromPointers<Arena>},
             {kStrings, storeFromPointers<AbslStrings>}}),
        row("append", "append, one name per call", 1.0, kArenaGuarded,
            {{kComponent, appendSingly<Component, NoLock>},
             {kArena, appendSingly<Arena, NoLock>},
             {kArenaGuarded, appendSingly<Arena, std::mutex>},
             {kStrings, appendSingly<AbslStrings, NoLock>},
             {kStringsGuarded, appendSingly<AbslStrings, std::mutex>}}),
        row("append_positions", "append, one name per call, positions", 0, kArenaGuarded,
            {{kComponent, appendSingly<Component, NoLock, true>},
             {kArenaGuarded, appendSingly<Arena, std::mutex>}}),
        row("pointers", "pointers in ascending ranges of 250", 1.25, kStrings,
            {{kComponent, readPointers<Component>},
             {kArena, readPointers<Arena>},
             {kStrings, readPointers<AbslStrings>}}),
        row("read_ascending", "one name per call, ascending", 1.0, kArenaGuarded,
            {{kComponent, readAscending<Component, NoLock>},
             {kArena, readAscending<Arena, NoLock>},
             {kArenaGuarded, readAscending<Arena, std::mutex>},
             {kStrings, readAscending<AbslStrings, NoLock>},
             {kStringsGuarded, readAscending<AbslStrings, std::mutex>}}),
        row("reader_ascending", "reader, one name per call, ascending", 1.0, kStrings,
            {{kComponent, readAscending<ByReader, NoLock>},
             {kStrings, readAscending<AbslStrings, NoLock>}}),
        row("read_random", "one name per call, random, positions", 1.25, kArenaGuarded,
            {{kComponent, readRandomly<Component, NoLock>},
             {kArena, readRandomly<Arena, NoLock>},
             {kArenaGuarded, readRandomly<Arena, std::mutex>},
             {kLargeArenaGuarded, readRandomly<LargeArena, std::mutex>},
             {kStrings, readRandomly<AbslStrings, NoLock>},
             {kStringsGuarded, readRandomly<AbslStrings, std::mutex>}}),
        row("reader_random", "reader, one name per call, random, positions", 1.0, kStrings,
            {{kComponent, readRandomly<ByReader, NoLock>},
             {kStrings, readRandomly<AbslStrings, NoLock>}}),
        row("copy_plain", "copy out plain, ranges of 2,000", 0.4, kStrings,
            {{kComponent, copyOut<Component>},
             {kArena, copyOut<Arena>},
             {kStrings, copyOut<AbslStrings>}}),
        row("copy_fields", "fixed-width fields of 24, padded and cut", 1.4, kStrings,
            {{kComponent, copyFields<Component>},
             {kArena, copyFields<Arena>},
             {kStrings, copyFields<AbslStrings>}}),
        row("first_lookup", "first lookup (builds the index)", 0.45, kArena,
            {{kComponent, lookUpFirst<Component>},
             {kArena, lookUpFirst<Arena>},
             {kAbsl, lookUpFirst<AbslStrings>},
             {kUnordered, lookUpFirst<UnorderedStrings>}}),
        row("find_hits", "find, hits, one per call", 0.9, kArenaGuarded,
            findEntrants<&Inputs::hits>()),
        row("reader_hits", "reader, find, hits, one per call", 1.0, kArena,
            {{kComponent, findSingly<ByReader, NoLock, &Inputs::hits>},
             {kArena, findSingly<Arena, NoLock, &Inputs::hits>}}),
        row("find_lists", "find, hits, lists of 1,000", 0.4, kArena,
            {{kComponent, findLists<Component>},
             {kArena, findLists<Arena>},
             {kAbsl, findLists<AbslStrings>},
             {kUnordered, findLists<UnorderedStrings>}}),
        row("find_misses", "find, misses, one per call", 0.85, kArenaGuarded,
            findEntrants<&Inputs::absent>()),
        row("reader_misses", "reader, find, misses, one per call", 1.0, kArena,
            {{kComponent, findSingly<ByReader, NoLock, &Inputs::absent>},
             {kArena, findSingly<Arena, NoLock, &Inputs::absent>}}),
        row("append_find", "append and find in turn", 0.9, kArenaGuarded,
            {{kComponent, appendAndFind<Component, NoLock>},
             {kArena, appendAndFind<Arena, NoLock>},
             {kArenaGuarded, appendAndFind<Arena, std::mutex>}}),
        row("longest", "longest name, nothing cached", 1.6, kStrings,
            {{kComponent, findLongest<Component>},
             {kArena, findLongest<Arena>},
             {kStrings, findLongest<AbslStrings>}}),
        row("copy_whole", "whole copy", 1.0, kArena,
            {{kComponent, copyWhole<Component>},
             {kArena, copyWhole<Arena>},
             {kStrings, copyWhole<AbslStrings>}}),
        row("save", "save", 1.05, kArena,
            {{kComponent, saveAndLoad<Component, true>},
             {kArena, saveAndLoad<Arena, true>},
             {kArenaPieces, saveAndLoad<PiecewiseArena, true>},
             {kArenaOffsets, saveAndLoad<OffsetDumpingArena, true>}}),
        row("save_growing", "save, to a memory that grows", 0, kArena,
            {{kComponent, saveGrowing<Component>}, {kArena, saveGrowing<Arena>}}),
        row("load", "load (validated)", 1.3, kArena,
            {{kComponent, saveAndLoad<Component, false>},
             {kArena, saveAndLoad<Arena, false>},
             {kArenaOffsets, saveAndLoad<OffsetDumpingArena, false>}}),
        row("remove_half", "remove the first half by range", 0.5, kArena,
            {{kComponent, removeFirstHalf<Component>},
             {kArena, removeFirstHalf<Arena>},
             {kStrings, removeFirstHalf<AbslStrings>}}),
        row("remove_list", "remove every other name by a list of indices", 2.0, kStrings,
            {{kComponent, removeEveryOther<Component>}, {kStrings, removeEveryOther<AbslStrings>}}),
        row("replace_same", "replace all by same-length", 1.4, kArena,
            {{kComponent, replaceAll<Component, &Inputs::renamed>},
             {kArena, replaceAll<Arena, &Inputs::renamed>},
             {kStrings, replaceAll<AbslStrings, &Inputs::renamed>}}),
        row("replace_longer", "replace all by longer", 1.4, kArena,
            {{kComponent, replaceAll<Component, &Inputs::longer>},
             {kArena, replaceAll<Arena, &Inputs::longer>},
             {kStrings, replaceAll<AbslStrings, &Inputs::longer>}}),
        row("replace_random", "replace random ones singly, same length", 6.5, kArenaGuarded,
            {{kComponent, replaceRandomly<Component, NoLock>},
             {kArena, replaceRandomly<Arena, NoLock>},
             {kArenaGuarded, replaceRandomly<Arena, std::mutex>},
             {kStringsGuarded, replaceRandomly<AbslStrings, std::mutex>}}),
        row("replace_random_positions", "the same after the switch to positions", 0, kArenaGuarded,
            {{kComponent, replaceRandomly<Component, NoLock, true>},
             {kArenaGuarded, replaceRandomly<Arena, std::mutex>}}),
        row("generate", "generate default names, half the list", 0.55, kArena,
            {{kComponent, generate<Component>}, {kArena, generate<Arena>}}),
        row("duplicates_empty", "duplicate check against an empty list", 0.55, kAbsl,
            {{kComponent, checkDuplicates<Component, false>},
             {kAbsl, checkDuplicates<AbslStrings, false>},
             {kUnordered, checkDuplicates<UnorderedStrings, false>}}),
        row("duplicates_full", "duplicate check against a full list", 0.55, kAbsl,
            {{kComponent, checkDuplicates<Component, true>},
             {kAbsl, checkDuplicates<AbslStrings, true>},
             {kUnordered, checkDuplicates<UnorderedStrings, true>}}),
    };
}

std::vector<Row> makeGrowthRows() {
    return {
        row("store", "store from one buffer", 0, kComponent,
            {{kComponent, storeFromBuffer<Component, 1>}}),
        row("append", "append singly, segments", 0, kComponent,
            {{kComponent, appendSingly<Component, NoLock>}}),
        row("append_positions", "append singly, positions", 0, kComponent,
            {{kComponent, appendSingly<Component, NoLock, true>}}),
        row("append_indexed", "append singly, with an index", 0, kComponent,
            {{kComponent, appendIndexed<Component>}}),
        row("pointers", "pointers in ranges of 250", 0, kComponent,
            {{kComponent, readPointers<Component>}}),
        row("read_ascending", "read singly, ascending", 0, kComponent,
            {{kComponent, readAscending<Component, NoLock>}}),
        row("read_random", "read singly, random, positions", 0, kComponent,
            {{kComponent, readRandomly<Component, NoLock>}}),
        row("first_lookup", "build the index", 0, kComponent,
            {{kComponent, lookUpFirst<Component>}}),
        row("find_lists", "find, hits, lists of 1,000", 0, kComponent,
            {{kComponent, findLists<Component>}}),
        row("find_hits", "find singly, hits", 0, kComponent,
            {{kComponent, findSingly<Component, NoLock, &Inputs::hits>}}),
        row("neighbours", "replace two neighbours, per call, positions", 0, kComponent,
            {{kComponent, replaceNeighbours}}),
        row("save", "save", 0, kComponent, {{kComponent, saveAndLoad<Component, true>}}),
        row("load", "load (validated)", 0, kComponent,
            {{kComponent, saveAndLoad<Component, false>}}),
    };
}

}  // namespace

const std::vector<Row> &comparedRows() {
    static const std::vector<Row> rows = [] {
        std::vector<Row> all = makeComparedRows();
        for (std::vector<Row> &more : std::vector<std::vector<Row>>{callRows(), threadRows()}) {
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    }();
    return rows;
}

const std::vector<Row> &growthRows() {
    static const std::vector<Row> rows = makeGrowthRows();
    return rows;
}

MemoryUse componentMemory(const NameList &list) {
    return memoryOf<Component>(kComponent, list);
}

std::vector<MemoryUse> peerMemory(const NameList &list) {
    return {memoryOf<Arena>(kArena, list), memoryOf<AbslStrings>(kAbsl, list),
            memoryOf<UnorderedStrings>(kUnordered, list)};
}
