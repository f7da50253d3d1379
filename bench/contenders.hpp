// The contenders: the component, and what its users would write themselves, with the same member
// functions. Ranges are given as first index and count; names are NUL-terminated; buffers hold
// names back to back. All contenders store the same bytes and return the same results.
#ifndef BENCH_CONTENDERS_HPP
#define BENCH_CONTENDERS_HPP

#include <absl/container/flat_hash_map.h>

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bench/inputs.hpp"
#include "names/names_manager.h"
#include "names/names_reader.h"

using StdMap = std::unordered_map<std::string_view, int32_t>;
using AbslMap = absl::flat_hash_map<std::string_view, int32_t>;
using FlatMap = boost::unordered_flat_map<std::string_view, int32_t>;

constexpr char kDefaultNameFormat[] = "nm%d";

// Ends the program if a contender failed, as its times would mean nothing.
inline void require(bool bTrue) {
    if (!bTrue) {
        std::fputs("a contender failed\n", stderr);
        std::abort();
    }
}

inline size_t at(int32_t i) {
    return static_cast<size_t>(i);
}

template <typename Map>
int32_t findIn(const Map &map, const char *szName) {
    const auto found = map.find(std::string_view(szName));
    return found == map.end() ? -1 : found->second;
}

// Reserves capacity for nMore elements, and at least doubles it when it grows, so that many calls
// stay linear.
template <typename Vector>
void reserveMore(Vector &vector, size_t nMore) {
    const size_t nNeed = vector.size() + nMore;
    if (nNeed > vector.capacity()) { vector.reserve(std::max(nNeed, 2 * vector.capacity())); }
}

// Writes a name as a field of nWidth bytes with its NUL, padded with blanks or cut.
inline void writeField(char *pField, size_t nWidth, const char *pName, size_t nLength) {
    const size_t nText = std::min(nLength, nWidth - 1);
    std::memcpy(pField, pName, nText);
    std::memset(pField + nText, ' ', nWidth - 1 - nText);
    pField[nWidth - 1] = '\0';
}

// ---- The component ----

struct Component {
    static constexpr bool kKeepsIndex = true;  // current while names are stored
    NamesManager *mgr;

    Component() : mgr(NamesManager_Create(nullptr, kDefaultNameFormat)) { require(mgr != nullptr); }
    ~Component() { NamesManager_Destroy(mgr); }
    Component(const Component &) = delete;
    Component &operator=(const Component &) = delete;

    int32_t count() { return NamesManager_GetNumNames(mgr); }
    void storeBuffer(int32_t first, int32_t n, const char *pText) {
        require(NamesManager_AddNamesFromBuffer(mgr, first, first + n - 1, 0, pText) == 0);
    }
    void storePointers(int32_t n, const char *const *ppNames) { replaceSome(0, n, ppNames); }
    void replaceSome(int32_t first, int32_t n, const char *const *ppNames) {
        require(NamesManager_AddNames(mgr, first, first + n - 1, 0, ppNames) == 0);
    }
    void append(int32_t i, const char *szName) {
        require(NamesManager_AddName(mgr, i, 0, szName) == 0);
    }
    void replace(int32_t i, const char *szName) { append(i, szName); }
    void replaceAll(const char *pText) { storeBuffer(0, count(), pText); }
    void usePositions() { require(NamesManager_StoreIndividualNamePositions(mgr) == 0); }

    void pointers(int32_t first, int32_t n, const char **ppNames) {
        require(NamesManager_GetNamePointers(mgr, first, first + n - 1, 0, ppNames) == 0);
    }
    void views(int32_t first, int32_t n, const char **ppNames, int32_t *pLengths) {
        require(NamesManager_GetNameViews(mgr, first, first + n - 1, 0, ppNames, pLengths) == 0);
    }
    const char *name(int32_t i) { return NamesManager_GetName(mgr, i, 0); }
    size_t copyOut(int32_t first, int32_t n, char *pBuffer, size_t nRoom) {
        uint64_t nBytes = 0;
        require(NamesManager_GetNames(mgr, first, first + n - 1, 0, 0, 0, 0, pBuffer, nRoom,
                                      &nBytes) == 0);
        return nBytes;
    }
    void copyFields(int32_t first, int32_t n, int32_t nWidth, char *pBuffer) {
        const uint64_t nBytes = static_cast<uint64_t>(n) * static_cast<uint64_t>(nWidth);
        require(NamesManager_GetNames(mgr, first, first + n - 1, 0, 1, 1, nWidth, pBuffer, nBytes,
                                      nullptr) == 0);
    }
    size_t longest() { return static_cast<size_t>(NamesManager_GetMaxNameLength(mgr)); }

    void buildIndex() { require(NamesManager_FindNameList(mgr, nullptr, 0, 0, nullptr) == 0); }
    int32_t find(const char *szName) { return NamesManager_FindName(mgr, szName, 0); }
    void findList(const char *const *ppNames, int32_t n, int32_t *pIndices) {
        require(NamesManager_FindNameList(mgr, ppNames, n, 0, pIndices) == 0);
    }
    void findOrAdd(const char *const *ppNames, int32_t n, int32_t *pIndices) {
        require(NamesManager_FindOrAddNames(mgr, ppNames, n, 0, pIndices) == 0);
    }
    // Indices of names that are held at a lower index, too, each followed by the lowest.
    std::vector<int32_t> repeats() {
        std::vector<int32_t> pairs;
        int32_t iEarlier = -1;
        for (int32_t i = -1; (i = NamesManager_FindRepeatedName(mgr, i + 1, 0, &iEarlier)) >= 0;) {
            pairs.insert(pairs.end(), {i, iEarlier});
        }
        return pairs;
    }
    // Returns the index of the first given name that would be a duplicate if the names were stored
    // after those held, or -1.
    int32_t findDuplicate(const NameList &given) {
        int32_t bDuplicate = 0, iFirst = -1, iSecond = -1;
        const int32_t nHeld = count();
        require(NamesManager_CheckDuplicateNames(mgr, nHeld, nHeld + countOf(given) - 1, 0,
                                                 given.names.data(), given.lengths.data(),
                                                 &bDuplicate, &iFirst, &iSecond, nullptr, 0) == 0);
        return bDuplicate != 0 ? iSecond : -1;
    }
    void generate(int32_t n) { require(NamesManager_GenerateNames(mgr, n) == 0); }

    void removeFirst(int32_t n) { require(NamesManager_RemoveNames(mgr, 0, n - 1, 0) == 0); }
    void removeList(const std::vector<int32_t> &ascending) {
        require(NamesManager_RemoveNamesByIndices(mgr, ascending.data(),
                                                  static_cast<int32_t>(ascending.size())) == 0);
    }
    void copyFrom(Component &source) { require(NamesManager_Copy(mgr, source.mgr) == 0); }
    void save(HostOutputStream *pStream) { require(NamesManager_Save(mgr, nullptr, pStream) == 0); }
    void load(HostInputStream *pStream) { require(NamesManager_Load(mgr, nullptr, pStream) == 0); }
};

// ---- A reader of the component ----

// Reads what was stored before; opened anew when that changes.
struct ByReader {
    Component list;
    NamesReader reader;

    void open(int32_t bLookups) { require(NamesReader_Open(&reader, list.mgr, bLookups) == 0); }
    void storeBuffer(int32_t first, int32_t n, const char *pText) {
        list.storeBuffer(first, n, pText);
        open(0);
    }
    void usePositions() {
        list.usePositions();
        open(0);
    }
    void buildIndex() { open(1); }

    const char *name(int32_t i) { return NamesReader_Name(&reader, i); }
    int32_t find(const char *szName) { return NamesReader_FindName(&reader, szName, 0); }
    void findList(const char *const *ppNames, int32_t n, int32_t *pIndices) {
        require(NamesReader_FindNames(&reader, ppNames, n, NamesManagerWidth_Terminated, 0,
                                      pIndices) == 0);
    }
};

// ---- A vector of strings with a map of views ----

template <typename Map>
struct Strings {
    static constexpr bool kKeepsIndex = false;
    std::vector<std::string> names;
    Map index;  // views of names, built when these no longer move

    int32_t count() const { return static_cast<int32_t>(names.size()); }
    void storeBuffer(int32_t /*first*/, int32_t n, const char *pText) {
        reserveMore(names, at(n));
        for (int32_t k = 0; k < n; ++k) { pText += names.emplace_back(pText).size() + 1; }
    }
    void storePointers(int32_t n, const char *const *ppNames) {
        names.insert(names.end(), ppNames, ppNames + n);
    }
    void append(int32_t /*i*/, const char *szName) { names.emplace_back(szName); }
    void replace(int32_t i, const char *szName) { names[at(i)] = szName; }
    void replaceSome(int32_t first, int32_t n, const char *const *ppNames) {
        for (int32_t k = 0; k < n; ++k) { names[at(first + k)] = ppNames[k]; }
    }
    void replaceAll(const char *pText) {
        for (std::string &name : names) { pText += name.assign(pText).size() + 1; }
    }
    void usePositions() {}

    void pointers(int32_t first, int32_t n, const char **ppNames) const {
        for (int32_t k = 0; k < n; ++k) { ppNames[k] = names[at(first + k)].c_str(); }
    }
    void views(int32_t first, int32_t n, const char **ppNames, int32_t *pLengths) const {
        for (int32_t k = 0; k < n; ++k) {
            ppNames[k] = names[at(first + k)].c_str();
            pLengths[k] = static_cast<int32_t>(names[at(first + k)].size());
        }
    }
    const char *name(int32_t i) const { return names[at(i)].c_str(); }
    size_t copyOut(int32_t first, int32_t n, char *pBuffer, size_t /*nRoom*/) const {
        char *p = pBuffer;
        for (int32_t i = first; i < first + n; ++i) {
            const std::string &name = names[at(i)];
            std::memcpy(p, name.c_str(), name.size() + 1);
            p += name.size() + 1;
        }
        return static_cast<size_t>(p - pBuffer);
    }
    void copyFields(int32_t first, int32_t n, int32_t nWidth, char *pBuffer) const {
        for (int32_t i = first; i < first + n; ++i, pBuffer += nWidth) {
            writeField(pBuffer, at(nWidth), names[at(i)].data(), names[at(i)].size());
        }
    }
    size_t longest() const {
        size_t nMax = 0;
        for (const std::string &name : names) { nMax = std::max(nMax, name.size()); }
        return nMax;
    }

    void buildIndex() {
        index.reserve(names.size());
        for (size_t i = 0; i < names.size(); ++i) {
            index.emplace(names[i], static_cast<int32_t>(i));
        }
    }
    int32_t find(const char *szName) const { return findIn(index, szName); }
    void findList(const char *const *ppNames, int32_t n, int32_t *pIndices) const {
        std::transform(ppNames, ppNames + n, pIndices,
                       [this](const char *szName) { return find(szName); });
    }
    std::vector<int32_t> repeats() const {
        std::vector<int32_t> pairs;
        Map fresh;
        fresh.reserve(names.size());
        for (int32_t i = 0; i < count(); ++i) {
            const auto [entry, bNew] = fresh.emplace(names[at(i)], i);
            if (!bNew) { pairs.insert(pairs.end(), {i, entry->second}); }
        }
        return pairs;
    }
    int32_t findDuplicate(const NameList &given) const {
        Map fresh;
        fresh.reserve(given.names.size());
        for (int32_t k = 0; k < countOf(given); ++k) {
            const std::string_view name(given.names[at(k)], at(given.lengths[at(k)]));
            if (!fresh.emplace(name, count() + k).second ||
                (!index.empty() && index.find(name) != index.end())) {
                return count() + k;
            }
        }
        return -1;
    }

    void removeFirst(int32_t n) { names.erase(names.begin(), names.begin() + n); }
    void removeList(const std::vector<int32_t> &ascending) {
        size_t nKept = 0;
        auto next = ascending.begin();
        for (size_t i = 0; i < names.size(); ++i) {
            if (next != ascending.end() && at(*next) == i) {
                ++next;
            } else if (nKept++ != i) {
                names[nKept - 1] = std::move(names[i]);
            }
        }
        names.resize(nKept);
    }
    void copyFrom(const Strings &source) { names = source.names; }
};

// ---- The arena: all text in the order of the names, offsets, and a flat map of views ----

// A dump is the number of names, the number of bytes of text, and the text, from which the offsets
// are computed; with kDumpOffsets it has the offsets before the text.
template <typename Offset, bool kDumpOffsets = false, size_t kDumpPiece = SIZE_MAX>
struct BasicArena {
    static constexpr bool kKeepsIndex = true;
    std::string text;                   // NULs kept
    std::vector<Offset> offsets = {0};  // of each name, and of the end
    FlatMap index;                      // views into text; empty until buildIndex
    bool bIndexed = false;

    int32_t count() const { return static_cast<int32_t>(offsets.size()) - 1; }
    std::string_view view(int32_t i) const {
        return {text.data() + offsets[at(i)], offsets[at(i) + 1] - offsets[at(i)] - 1};
    }
    // When the text moves, the keys of the index are moved along; their hashes do not change.
    void appendText(const char *pText, size_t nBytes) {
        const char *pOld = text.data();
        text.append(pText, nBytes);
        if (bIndexed && text.data() != pOld) {
            for (const auto &entry : index) {
                const_cast<std::string_view &>(entry.first) = {
                    text.data() + (entry.first.data() - pOld), entry.first.size()};
            }
        }
    }

    void storeBuffer(int32_t first, int32_t n, const char *pText) {
        reserveMore(offsets, at(n));
        const char *p = pText;
        for (int32_t k = 0; k < n; ++k) {
            p += std::strlen(p) + 1;
            offsets.push_back(static_cast<Offset>(text.size() + static_cast<size_t>(p - pText)));
        }
        appendText(pText, static_cast<size_t>(p - pText));
        for (int32_t i = first; bIndexed && i < first + n; ++i) { index.emplace(view(i), i); }
    }
    void storePointers(int32_t n, const char *const *ppNames) {
        reserveMore(offsets, at(n));
        for (int32_t k = 0; k < n; ++k) { append(k, ppNames[k]); }
    }
    void append(int32_t /*i*/, const char *szName) {
        const size_t nLength = std::strlen(szName);
        appendText(szName, nLength + 1);
        offsets.push_back(static_cast<Offset>(text.size()));
        if (bIndexed) { index.emplace(view(count() - 1), count() - 1); }
    }
    void replace(int32_t i, const char *szName) {
        const size_t nOld = view(i).size();
        const size_t nNew = std::strlen(szName);
        if (nNew == nOld) {
            std::memcpy(text.data() + offsets[at(i)], szName, nNew);
            return;
        }
        text.replace(offsets[at(i)], nOld, szName, nNew);
        for (size_t k = at(i) + 1; k < offsets.size(); ++k) {
            offsets[k] += static_cast<Offset>(nNew - nOld);
        }
    }
    void replaceAll(const char *pText) {
        const char *p = pText;
        for (size_t i = 1; i < offsets.size(); ++i) {
            p += std::strlen(p) + 1;
            offsets[i] = static_cast<Offset>(p - pText);
        }
        text.assign(pText, p);
    }
    void replaceSome(int32_t first, int32_t n, const char *const *ppNames) {
        for (int32_t k = 0; k < n; ++k) { replace(first + k, ppNames[k]); }
    }
    void usePositions() {}

    void pointers(int32_t first, int32_t n, const char **ppNames) const {
        for (int32_t k = 0; k < n; ++k) { ppNames[k] = name(first + k); }
    }
    void views(int32_t first, int32_t n, const char **ppNames, int32_t *pLengths) const {
        for (int32_t k = 0; k < n; ++k) {
            ppNames[k] = name(first + k);
            pLengths[k] = static_cast<int32_t>(view(first + k).size());
        }
    }
    const char *name(int32_t i) const { return text.data() + offsets[at(i)]; }
    size_t copyOut(int32_t first, int32_t n, char *pBuffer, size_t /*nRoom*/) const {
        const size_t nBytes = offsets[at(first + n)] - offsets[at(first)];
        std::memcpy(pBuffer, name(first), nBytes);
        return nBytes;
    }
    void copyFields(int32_t first, int32_t n, int32_t nWidth, char *pBuffer) const {
        for (int32_t i = first; i < first + n; ++i, pBuffer += nWidth) {
            writeField(pBuffer, at(nWidth), name(i), view(i).size());
        }
    }
    size_t longest() const {
        size_t nMax = 0;
        for (int32_t i = 0; i < count(); ++i) { nMax = std::max(nMax, view(i).size()); }
        return nMax;
    }

    void buildIndex() {
        bIndexed = true;
        index.reserve(at(count()));
        for (int32_t i = 0; i < count(); ++i) { index.emplace(view(i), i); }
    }
    int32_t find(const char *szName) const { return findIn(index, szName); }
    void findList(const char *const *ppNames, int32_t n, int32_t *pIndices) const {
        std::transform(ppNames, ppNames + n, pIndices,
                       [this](const char *szName) { return find(szName); });
    }
    void findOrAdd(const char *const *ppNames, int32_t n, int32_t *pIndices) {
        for (int32_t k = 0; k < n; ++k) {
            pIndices[k] = find(ppNames[k]);
            if (pIndices[k] >= 0) { continue; }
            pIndices[k] = count();
            append(count(), ppNames[k]);
        }
    }
    // The format is known at run time only, as the component's is.
    void generate(int32_t n, const char *szFormat = kDefaultNameFormat) {
        buildIndex();
        char aName[kFormBytes];
        for (int32_t nNumber = count(); count() < n;) {
            do {
                std::snprintf(aName, sizeof aName, szFormat, ++nNumber);
            } while (find(aName) >= 0);
            append(count(), aName);
        }
    }

    // The freed text is reused for later names, as the component's is.
    void removeFirst(int32_t n) {
        const Offset nBytes = offsets[at(n)];
        text.erase(0, nBytes);
        offsets.erase(offsets.begin(), offsets.begin() + n);
        for (Offset &nOffset : offsets) { nOffset -= nBytes; }
    }
    void copyFrom(const BasicArena &source) {
        text = source.text;
        offsets = source.offsets;
    }

    void save(HostOutputStream *pStream) const {
        const uint64_t aHeader[2] = {at(count()), text.size()};
        require(HostStream_Write(pStream, aHeader, sizeof aHeader) == 0);
        require(!kDumpOffsets ||
                HostStream_Write(pStream, offsets.data(), offsets.size() * sizeof offsets[0]) == 0);
        for (size_t n = 0; n < text.size(); n += std::min(kDumpPiece, text.size() - n)) {
            require(HostStream_Write(pStream, text.data() + n,
                                     std::min(kDumpPiece, text.size() - n)) == 0);
        }
    }
    void load(HostInputStream *pStream) {
        uint64_t aHeader[2] = {0, 0};
        require(HostStream_Read(pStream, aHeader, sizeof aHeader) == 0 &&
                aHeader[0] <= aHeader[1] && aHeader[1] <= UINT32_MAX);
        offsets.resize(aHeader[0] + 1);
        text.resize(aHeader[1]);
        require(!kDumpOffsets ||
                HostStream_Read(pStream, offsets.data(), offsets.size() * sizeof offsets[0]) == 0);
        require(HostStream_Read(pStream, text.data(), text.size()) == 0 &&
                (text.empty() || text.back() == '\0'));
        kDumpOffsets ? checkOffsets() : findOffsets();
        require(offsets[0] == 0 && offsets.back() == text.size());
    }
    void checkOffsets() const {
        for (size_t i = 1; i < offsets.size(); ++i) {
            require(offsets[i] > offsets[i - 1] && offsets[i] <= text.size() &&
                    text[offsets[i] - 1] == '\0');
        }
    }
    void findOffsets() {
        size_t nOffset = 0;
        for (size_t i = 1; i < offsets.size(); ++i) {
            require(nOffset < text.size());
            nOffset += std::strlen(text.data() + nOffset) + 1;
            offsets[i] = static_cast<Offset>(nOffset);
        }
    }
};

using Arena = BasicArena<uint32_t>;  // up to 4 GiB
// Of any size; an offset takes as many bytes as a position of the component.
using LargeArena = BasicArena<uint64_t>;
using OffsetDumpingArena = BasicArena<uint32_t, true>;
using PiecewiseArena =
    BasicArena<uint32_t, false, 131072>;  // written in blocks, as the component is

#endif
