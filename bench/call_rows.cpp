// Calls that do the work of several, and stores whose cost might grow with the number of blocks.
#include <cstdlib>
#include <memory>

#include "bench/work.hpp"

namespace {

// ---- Calls that do the work of several ----

template <typename Contender>
Sample readViews(const Inputs &in) {
    std::vector<const char *> names(in.list.names.size());
    std::vector<int32_t> lengths(in.list.names.size());
    Contender contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] {
        inRanges(countOf(in.list), 250, [&](int32_t first, int32_t n) {
            contender.views(first, n, &names[at(first)], &lengths[at(first)]);
        });
    });
    return {nSeconds, mixIn(digestOf(names), digestOf(lengths)), countOf(in.list)};
}

// The first half of the list is held, and all of it is looked up in random order.
template <typename Contender, typename Lock, int32_t kAtOnce>
Sample findOrAdd(const Inputs &in) {
    std::vector<int32_t> found(in.hits.names.size());
    Contender contender;
    contender.storeBuffer(0, countOf(in.list) / 2, in.list.text.data());
    contender.buildIndex();
    const auto nCalls = static_cast<size_t>(countOf(in.hits) / kAtOnce);
    const double nSeconds = secondsOfCalls<Lock>(nCalls, [&](size_t k) {
        contender.findOrAdd(&in.hits.names[k * kAtOnce], kAtOnce, &found[k * kAtOnce]);
    });
    return {nSeconds, mixIn(digestOf(found), contentOf(contender)), countOf(in.hits)};
}

template <typename Contender>
Sample findRepeats(const Inputs &in) {
    Contender contender;
    fill(contender, in.repeating);
    std::vector<int32_t> pairs;
    const double nSeconds = secondsOf([&] { pairs = contender.repeats(); });
    return {nSeconds, digestOf(pairs), countOf(in.repeating)};
}

// ---- Stores that must know whether names lie in the manager itself ----

// A list is stored in random order by pointers to its own names, which its user may copy before.
template <bool kCopies>
Sample reorder(const Inputs &in) {
    Component component;
    fill(component, in.list);
    std::vector<const char *> names(in.list.names.size()), own(names.size());
    component.pointers(0, component.count(), own.data());
    const double nSeconds = secondsOf([&] {
        std::vector<std::string> copies;
        for (size_t k = 0; k < names.size(); ++k) { names[k] = own[at(in.picks[k])]; }
        if (kCopies) {
            copies.assign(names.begin(), names.end());
            for (size_t k = 0; k < names.size(); ++k) { names[k] = copies[k].c_str(); }
        }
        component.storePointers(component.count(), names.data());
    });
    return {nSeconds, contentOf(component), countOf(in.list)};
}

Sample reorderStrings(const Inputs &in) {
    AbslStrings contender;
    fill(contender, in.list);
    const double nSeconds = secondsOf([&] {
        std::vector<std::string> ordered(contender.names.size());
        for (size_t k = 0; k < ordered.size(); ++k) {
            ordered[k] = std::move(contender.names[at(in.picks[k])]);
        }
        contender.names.swap(ordered);
    });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

struct Freeing {
    void operator()(char *pText) const { std::free(pText); }
};

// The new names were allocated in turn with the blocks, and come in random order.
template <typename Contender>
Sample replaceByStrangers(const Inputs &in) {
    Contender contender;
    std::vector<std::unique_ptr<char, Freeing>> strangers;
    for (size_t i = 0; i < in.list.names.size(); ++i) {
        contender.append(static_cast<int32_t>(i), in.list.names[i]);
        strangers.emplace_back(strdup(in.renamed.names[i]));
    }
    std::vector<const char *> names(in.picks.size());
    for (size_t k = 0; k < names.size(); ++k) { names[k] = strangers[at(in.picks[k])].get(); }
    const double nSeconds =
        secondsOf([&] { contender.replaceSome(0, countOf(in.list), names.data()); });
    return {nSeconds, contentOf(contender), countOf(in.list)};
}

// Replaces kAtOnce neighbours in each call, here and there.
template <typename Contender, typename Lock, int32_t kAtOnce>
Sample replacePairs(const Inputs &in) {
    Contender contender;
    fill(contender, in.list);
    contender.usePositions();
    const int32_t nPairs = countOf(in.list) / 2;
    const double nSeconds = secondsOfCalls<Lock>(in.picks.size() / 2, [&](size_t k) {
        const int32_t first = in.picks[k] % nPairs * 2;
        for (int32_t i = first; i < first + 2; i += kAtOnce) {
            contender.replaceSome(i, kAtOnce, &in.renamed.names[at(i)]);
        }
    });
    return {nSeconds, contentOf(contender), 2 * int64_t{nPairs}};
}

constexpr char kCopiesByUser[] = "component, copies by the user";
constexpr char kSingly[] = "component, one name per call";

}  // namespace

std::vector<Row> callRows() {
    return {
        row("views", "views in ascending ranges of 250", 1.0, kStrings,
            {{kComponent, readViews<Component>},
             {kArena, readViews<Arena>},
             {kStrings, readViews<AbslStrings>}}),
        row("find_or_add_lists", "find or add, half held, lists of 1,000", 0.5, kArena,
            {{kComponent, findOrAdd<Component, NoLock, 1000>},
             {kArena, findOrAdd<Arena, NoLock, 1000>}}),
        row("find_or_add", "find or add, half held, one per call", 0.85, kArenaGuarded,
            {{kComponent, findOrAdd<Component, NoLock, 1>},
             {kArenaGuarded, findOrAdd<Arena, std::mutex, 1>}}),
        row("repeats", "repeated names, every tenth", 0.5, kAbsl,
            {{kComponent, findRepeats<Component>},
             {kAbsl, findRepeats<AbslStrings>},
             {kUnordered, findRepeats<UnorderedStrings>}}),
        row("reorder", "store in another order by own pointers", 0, kCopiesByUser,
            {{kComponent, reorder<false>},
             {kCopiesByUser, reorder<true>},
             {kStrings, reorderStrings}}),
        row("strangers", "replace all by strings that lie between the blocks", 0, kStrings,
            {{kComponent, replaceByStrangers<Component>},
             {kStrings, replaceByStrangers<AbslStrings>}}),
        row("pairs", "replace two neighbours per call, positions", 0, kSingly,
            {{kComponent, replacePairs<Component, NoLock, 2>},
             {kSingly, replacePairs<Component, NoLock, 1>},
             {kArenaGuarded, replacePairs<Arena, std::mutex, 2>}}),
    };
}
