/// @file
/// A thin C++ face on names_manager.h and names_reader.h: an owning handle, string views, names as
/// a range. Every method is one C call, or a few under one hold of the lock; the declarations of
/// these say what they do, when they fail, what they lock and which views they invalidate. Indices
/// count from 0. Nothing throws; what fails says so by its result.
///
/// It needs what names_manager.h needs, and so runs on any host; files/names_file.hpp saves and
/// loads by path.
#ifndef NAMES_NAMES_MANAGER_HPP
#define NAMES_NAMES_MANAGER_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#if __has_include(<version>)
#include <version>
#endif
#ifdef __cpp_lib_ranges
#include <ranges>
#endif

#include "names/names_manager.h"
#include "names/names_reader.h"

/// The C++ face of names_manager.h.
namespace names_manager {

/// Results, as NamesManagerStatus has them.
enum class [[nodiscard]] Status : int32_t{
    ok = 0,
    failed = 1,   ///< memory ran out, or an argument lies outside the operation's contract
    tooLong = 2,  ///< a name has more than NAMES_MANAGER_MAX_NAME_BYTES
    tooSmall = 3  ///< the buffer given, or the list for indices
};

/// How a save or a load ended: well, refused (memory ran out, or the image is not sound), or with
/// the code of the stream that failed.
class [[nodiscard]] ImageStatus {
public:
    explicit ImageStatus(int32_t nCode) noexcept : nCode_(nCode) {}
    bool ok() const noexcept { return nCode_ == NamesManagerStatus_OK; }
    bool refused() const noexcept { return nCode_ == NamesManagerStatus_Refused; }
    /// What NamesManager_Save() or NamesManager_Load() returned.
    int32_t code() const noexcept { return nCode_; }

private:
    int32_t nCode_;
};

/// What is taken as one name: a pointer to NUL-terminated text, a view, or a string. A view or
/// string goes with its length; if it holds a NUL, or has more than 2147483647 bytes, it is no
/// name: storing it fails, and it is not found.
template <typename Text>
using IfText = std::enable_if_t<std::is_convertible_v<const Text &, std::string_view>, int>;
template <typename Text>
inline constexpr bool kIsPointer = std::is_convertible_v<const Text &, const char *>;

/// A list of names as a parameter: a list in braces, a pointer and a count, or anything contiguous,
/// of pointers, views or strings. It refers to them, so they must last as long as the call.
class Names {
public:
    template <typename Element>
    using IfElement =
        std::enable_if_t<std::is_convertible_v<const Element *, const char *const *> ||
                             std::is_same_v<Element, std::string_view> ||
                             std::is_same_v<Element, std::string>,
                         int>;

    template <typename Element, IfElement<Element> = 0>
    Names(const Element *pNames, std::size_t nNames) noexcept
        : pNames_(pNames), nNames_(nNames), kind_(kindOf<Element>()) {}
    Names(std::initializer_list<std::string_view> names) noexcept
        : Names(std::data(names), names.size()) {}
    template <typename List,
              typename Element = std::remove_cv_t<
                  std::remove_pointer_t<decltype(std::data(std::declval<const List &>()))>>,
              IfElement<Element> = 0>
    Names(const List &names) noexcept
        : Names(static_cast<const Element *>(std::data(names)), std::size(names)) {}

    std::size_t size() const noexcept { return nNames_; }
    /// The names if they are given as pointers, else NULL.
    const char *const *pointers() const noexcept {
        return kind_ == Kind::pointers ? static_cast<const char *const *>(pNames_) : nullptr;
    }
    /// Whether each name is followed by a NUL.
    bool terminated() const noexcept { return kind_ != Kind::views; }
    /// Name k. Its data() is NULL only for a pointer that is.
    std::string_view operator[](std::size_t k) const noexcept {
        if (kind_ == Kind::strings) { return static_cast<const std::string *>(pNames_)[k]; }
        if (kind_ == Kind::views) {
            const std::string_view name = static_cast<const std::string_view *>(pNames_)[k];
            return name.data() != nullptr ? name : std::string_view("");
        }
        const char *szName = pointers()[k];
        return szName != nullptr ? std::string_view(szName) : std::string_view();
    }

private:
    enum class Kind { pointers, views, strings };
    template <typename Element>
    static constexpr Kind kindOf() noexcept {
        return std::is_same_v<Element, std::string_view> ? Kind::views
               : std::is_same_v<Element, std::string>    ? Kind::strings
                                                         : Kind::pointers;
    }
    const void *pNames_;
    std::size_t nNames_;
    Kind kind_;
};

/// A list of indices as a parameter, to be read (const int32_t) or written (int32_t): a pointer and
/// a count, or anything contiguous of int32_t.
template <typename Index>
class IndexList {
public:
    IndexList(Index *pIndices, std::size_t nIndices) noexcept
        : pIndices_(pIndices), nIndices_(nIndices) {}
    template <
        typename List,
        std::enable_if_t<
            std::is_convertible_v<decltype(std::data(std::declval<List &>())), Index *>, int> = 0>
    IndexList(List &&indices) noexcept : IndexList(std::data(indices), std::size(indices)) {}

    Index *data() const noexcept { return pIndices_; }
    std::size_t size() const noexcept { return nIndices_; }

private:
    Index *pIndices_;
    std::size_t nIndices_;
};

/// The existing names of an index range in ascending order: a view, with a size, of string views,
/// which last as long as those of Manager::name do. An iterator reads up to 100 names ahead; what
/// invalidates views invalidates these, too. It generates no names, never switches the manager to
/// individual positions, and ends early where names have been removed since the range was made.
class NameRange {
public:
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::string_view;
        using difference_type = std::ptrdiff_t;
        using pointer = const std::string_view *;
        using reference = std::string_view;

        Iterator() = default;
        Iterator(NamesManager *mgr, int32_t iNext, int32_t iEnd) noexcept
            : pManager_(mgr), iNext_(iNext), iEnd_(iEnd) {
            readAhead();
        }
        std::string_view operator*() const noexcept {
            return {apNames_[iAhead_], static_cast<std::size_t>(aLengths_[iAhead_])};
        }
        Iterator &operator++() noexcept {
            ++iNext_;
            if (++iAhead_ == nAhead_) { readAhead(); }
            return *this;
        }
        Iterator operator++(int) noexcept {
            Iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const Iterator &a, const Iterator &b) noexcept {
            return a.iNext_ == b.iNext_;
        }
        friend bool operator!=(const Iterator &a, const Iterator &b) noexcept {
            return a.iNext_ != b.iNext_;
        }
        friend difference_type operator-(const Iterator &a, const Iterator &b) noexcept {
            return difference_type{a.iNext_} - b.iNext_;
        }

    private:
        void readAhead() noexcept {
            iAhead_ = 0;
            nAhead_ = 0;
            if (iNext_ >= iEnd_) { return; }
            NamesManager_Lock(pManager_);
            const int32_t nLeft = std::min(iEnd_, NamesManager_GetNumNames(pManager_)) - iNext_;
            if (nLeft > 0) { readNext(std::min(nLeft, kAhead)); }
            NamesManager_Unlock(pManager_);
            if (nAhead_ == 0) { iNext_ = iEnd_; }
        }
        // The cursor is elsewhere after a step that ended with a segment, or when others read, too.
        // A search for the next name counts as a miss then; reading name 0 ends the row of misses
        // before it, so that they never become enough for a switch to positions.
        void readNext(int32_t nNames) noexcept {
            if (pManager_->pSegments != nullptr && pManager_->iCursorName != iNext_) {
                static_cast<void>(NamesManager_GetName(pManager_, 0, 0));
            }
            if (NamesManager_GetNameViews(pManager_, iNext_, iNext_ + nNames - 1, 0, apNames_,
                                          aLengths_) == 0) {
                nAhead_ = nNames;
            }
        }

        static constexpr int32_t kAhead = 100;  // full segments, of 128 names, seldom end a step
        NamesManager *pManager_ = nullptr;
        int32_t iNext_ = 0;
        int32_t iEnd_ = 0;
        int32_t iAhead_ = 0;
        int32_t nAhead_ = 0;
        const char *apNames_[kAhead] = {};
        int32_t aLengths_[kAhead] = {};
    };

    NameRange() = default;
    /// Those of the names first to last that exist; none if the range is outside the contract of
    /// reading.
    NameRange(NamesManager *mgr, int32_t first, int32_t last) noexcept : pManager_(mgr) {
        const int32_t nNames = NamesManager_GetNumNames(mgr);
        if (0 <= first && first < nNames && first <= last && last < INT32_MAX) {
            iFirst_ = first;
            iEnd_ = last < nNames ? last + 1 : nNames;
        }
    }
    Iterator begin() const noexcept { return {pManager_, iFirst_, iEnd_}; }
    Iterator end() const noexcept { return {pManager_, iEnd_, iEnd_}; }
    /// The names that there were when the range was made.
    std::size_t size() const noexcept { return static_cast<std::size_t>(iEnd_ - iFirst_); }
    bool empty() const noexcept { return iFirst_ == iEnd_; }

private:
    NamesManager *pManager_ = nullptr;
    int32_t iFirst_ = 0;
    int32_t iEnd_ = 0;
};

/// What a check for repeated names found. The name at iSecond repeats the one at iFirst.
struct [[nodiscard]] Duplicate {
    Status status = Status::failed;  ///< ok: the check was made
    bool found = false;
    int32_t iFirst = -1;
    int32_t iSecond = -1;
};

/// The name at index is held at the lower index iEarlier, too; both are -1 if there is none.
struct [[nodiscard]] Repeated {
    int32_t index = -1;
    int32_t iEarlier = -1;
};

/// Reads a manager that nobody changes, without its lock; names_reader.h says what may happen
/// meanwhile. A cheap value: each thread has a copy of its own.
class Reader {
public:
    int32_t size() const noexcept { return NamesReader_GetNumNames(&reader_); }
    /// A view with data() == nullptr when there is no such name.
    std::string_view name(int32_t index) noexcept {
        int32_t nLength = 0;
        const char *szName = NamesReader_GetName(&reader_, index, 0, &nLength);
        return {szName, static_cast<std::size_t>(nLength)};
    }
    /// Either array may be NULL. Fails if not all of these names exist.
    Status views(int32_t first, int32_t last, const char **ppNames, int32_t *pLengths) noexcept {
        return Status{NamesReader_GetNameViews(&reader_, first, last, 0, ppNames, pLengths)};
    }
    /// The index, -1 for none.
    int32_t find(const char *szName) noexcept { return NamesReader_FindName(&reader_, szName, 0); }
    /// Many at once, which is faster; pIndices has room for nNames.
    Status find(const char *const *pszNames, int32_t nNames, int32_t *pIndices) noexcept {
        return Status{NamesReader_FindNames(&reader_, pszNames, nNames,
                                            NamesManagerWidth_Terminated, 0, pIndices)};
    }

private:
    friend class Manager;
    Reader(NamesManager *mgr, bool bLookups, Status *pStatus) noexcept {
        *pStatus = Status{NamesReader_Open(&reader_, mgr, bLookups ? 1 : 0)};
    }
    NamesReader reader_;
};

/// Owns a manager; moves, does not copy (see copyFrom). One that was moved from, or could not be
/// created, is false and must not be used for anything else.
class Manager {
public:
    /// Is false if the manager could not be created. For szFormat, the format of default names, see
    /// NamesManager_Create().
    explicit Manager(const char *szFormat = nullptr, void *pOwner = nullptr) noexcept
        : pManager_(NamesManager_Create(pOwner, szFormat)) {}
    static Manager adopt(NamesManager *mgr) noexcept { return Manager(Handle(mgr)); }

    explicit operator bool() const noexcept { return pManager_ != nullptr; }
    /// For every operation that has no method here.
    NamesManager *get() const noexcept { return pManager_.get(); }
    NamesManager *release() noexcept { return pManager_.release(); }

    /// Several calls as one, also by std::scoped_lock: see NamesManager_Lock.
    void lock() const noexcept { NamesManager_Lock(get()); }
    void unlock() const noexcept { NamesManager_Unlock(get()); }

    int32_t size() const noexcept { return NamesManager_GetNumNames(get()); }
    bool empty() const noexcept { return size() == 0; }
    Status clear() noexcept { return Status{NamesManager_Clear(get())}; }
    Status copyFrom(const Manager &source) noexcept {
        return Status{NamesManager_Copy(get(), source.get())};
    }
    Status usePositions() noexcept {
        return Status{NamesManager_StoreIndividualNamePositions(get())};
    }

    /// @name Storing
    /// @{

    template <typename Text, IfText<Text> = 0>
    Status add(int32_t index, const Text &name) noexcept {
        if constexpr (kIsPointer<Text>) {
            return Status{NamesManager_AddName(get(), index, 0, name)};
        } else {
            const OneText one(name);
            if (one.nLength < 0) { return Status::failed; }
            return Status{
                NamesManager_AddNamesWithLengths(get(), index, index, 0, &one.pText, &one.nLength)};
        }
    }
    /// Stores names from index first on.
    Status add(int32_t first, Names names) noexcept {
        if (names.size() == 0) { return Status::ok; }
        if (!fits(first, names)) { return Status::failed; }
        const Texts texts(names, Texts::Form::asGiven);
        if (texts.status != Status::ok) { return texts.status; }
        const int32_t last = lastOf(first, names);
        return Status{texts.pLengths == nullptr
                          ? NamesManager_AddNames(get(), first, last, 0, texts.ppNames)
                          : NamesManager_AddNamesWithLengths(get(), first, last, 0, texts.ppNames,
                                                             texts.pLengths.get())};
    }
    /// Adds a name at the end, wherever other threads have brought it meanwhile.
    template <typename Text, IfText<Text> = 0>
    Status push_back(const Text &name) noexcept {
        const Hold hold(*this);
        return add(size(), name);
    }
    Status push_back(Names names) noexcept {
        const Hold hold(*this);
        return add(size(), names);
    }
    /// Finds a name or, if it is not held, adds it at the end. Returns its index, -1 on failure.
    template <typename Text, IfText<Text> = 0>
    int32_t findOrAdd(const Text &name) noexcept {
        const std::conditional_t<kIsPointer<Text>, const char *, std::string_view> one = name;
        int32_t iFound = -1;
        static_cast<void>(findOrAdd({&one, 1}, {&iFound, 1}));
        return iFound;
    }
    /// Finds or adds many at once, which is faster, and writes their indices. There must be room
    /// for these (else tooSmall: nothing is done). See NamesManager_FindOrAddNames(). The text of
    /// views is copied for the call.
    Status findOrAdd(Names names, IndexList<int32_t> indices) noexcept {
        if (indices.size() < names.size()) { return Status::tooSmall; }
        if (!fits(0, names)) { return Status::failed; }
        const Texts texts(names, Texts::Form::terminated);
        if (texts.status != Status::ok) { return noneOf(names, indices); }
        return Status{
            NamesManager_FindOrAddNames(get(), texts.ppNames, countOf(names), 0, indices.data())};
    }
    Status addFromBuffer(int32_t first, int32_t last, const char *pBuffer) noexcept {
        return Status{NamesManager_AddNamesFromBuffer(get(), first, last, 0, pBuffer)};
    }
    /// Stores the prefix and after it the source's name, which must exist. The source may be this
    /// manager.
    Status addCopy(int32_t index, const Manager &source, int32_t iSource,
                   const char *szPrefix = "") noexcept {
        if (iSource >= source.size()) { return Status::failed; }
        return Status{
            NamesManager_CopyNameWithPrefix(get(), index, 0, source.get(), iSource, 0, szPrefix)};
    }
    Status generate(int32_t nCount) noexcept {
        return Status{NamesManager_GenerateNames(get(), nCount)};
    }

    /// @}

    /// @name Reading
    /// @{

    /// A view with data() == nullptr if there is no such name. A manager that is not const
    /// generates default names up to it first.
    std::string_view name(int32_t index) const noexcept {
        const Hold hold(*this);
        return 0 <= index && index < size() ? read(index) : std::string_view();
    }
    std::string_view name(int32_t index) noexcept { return read(index); }
    NameRange names() const noexcept { return {get(), 0, INT32_MAX - 1}; }
    NameRange names(int32_t first, int32_t last) const noexcept { return {get(), first, last}; }
    /// Generates default names up to last first, as many as it can.
    NameRange names(int32_t first, int32_t last) noexcept {
        const Hold hold(*this);
        static_cast<void>(NamesManager_GetNamePointers(get(), first, last, 0, nullptr));
        return {get(), first, last};
    }
    /// Either array may be NULL. Generates nothing; fails if not all of these names exist.
    Status views(int32_t first, int32_t last, const char **ppNames,
                 int32_t *pLengths) const noexcept {
        const Hold hold(*this);
        if (last >= size()) { return Status::failed; }
        return Status{NamesManager_GetNameViews(get(), first, last, 0, ppNames, pLengths)};
    }
    /// Copies plain names back to back, each with its NUL. pnRequired may be NULL. Generates
    /// nothing; fails if not all of these names exist.
    Status copyOut(int32_t first, int32_t last, char *pBuffer, uint64_t nBytes,
                   uint64_t *pnRequired = nullptr) const noexcept {
        const Hold hold(*this);
        if (last >= size()) { return Status::failed; }
        return Status{
            NamesManager_GetNames(get(), first, last, 0, 0, 0, 0, pBuffer, nBytes, pnRequired)};
    }
    int32_t maxNameLength() const noexcept { return NamesManager_GetMaxNameLength(get()); }
    /// For threads that read at once. With bLookups names can be found, too, unless there was no
    /// memory for the index (failed).
    Reader reader(bool bLookups, Status *pStatus) const noexcept {
        return {get(), bLookups, pStatus};
    }

    /// @}

    /// @name Looking up
    /// @{

    /// The index, -1 for none.
    template <typename Text, IfText<Text> = 0>
    int32_t find(const Text &name) const noexcept {
        if constexpr (kIsPointer<Text>) {
            return NamesManager_FindName(get(), name, 0);
        } else {
            const OneText one(name);
            int32_t iFound = -1;
            if (one.nLength < 0) { return iFound; }
            static_cast<void>(
                NamesManager_FindNamesWithLengths(get(), &one.pText, &one.nLength, 1, 0, &iFound));
            return iFound;
        }
    }
    /// Finds many at once, which is faster, and writes their indices, -1 for none. There must be
    /// room for these (else tooSmall: nothing is done). If memory runs out, all are -1 (failed).
    Status find(Names names, IndexList<int32_t> indices) const noexcept {
        if (indices.size() < names.size()) { return Status::tooSmall; }
        if (!fits(0, names)) { return Status::failed; }
        const Texts texts(names, Texts::Form::emptyIfNone);
        if (texts.status != Status::ok) { return noneOf(names, indices); }
        if (texts.pLengths == nullptr) {
            return Status{
                NamesManager_FindNameList(get(), texts.ppNames, countOf(names), 0, indices.data())};
        }
        const Status status{NamesManager_FindNamesWithLengths(
            get(), texts.ppNames, texts.pLengths.get(), countOf(names), 0, indices.data())};
        for (std::size_t k = 0; texts.bAnyNone && k < names.size(); ++k) {
            if (!isName(names[k])) { indices.data()[k] = -1; }
        }
        return status;
    }
    /// See NamesManager_FindRepeatedName().
    Repeated findRepeated(int32_t first = 0) const noexcept {
        Repeated repeated;
        repeated.index = NamesManager_FindRepeatedName(get(), first, 0, &repeated.iEarlier);
        return repeated;
    }
    /// Checks names before they are added from index first on: see
    /// NamesManager_CheckDuplicateNames(). A pointer may be NULL, for no name. The text of views is
    /// copied for the call.
    Duplicate findDuplicate(int32_t first, Names names) noexcept {
        Duplicate duplicate;
        if (!fits(first, names)) { return duplicate; }
        const Texts texts(names, Texts::Form::measured);
        if (texts.status != Status::ok) { return duplicate; }
        int32_t bFound = 0;
        duplicate.status = Status{NamesManager_CheckDuplicateNames(
            get(), first, lastOf(first, names), 0, texts.ppNames, texts.pLengths.get(), &bFound,
            &duplicate.iFirst, &duplicate.iSecond, nullptr, 0)};
        duplicate.found = bFound != 0;
        return duplicate;
    }

    /// @}

    /// @name Removing
    /// @{

    Status remove(int32_t index) noexcept { return remove(index, index); }
    Status remove(int32_t first, int32_t last) noexcept {
        return Status{NamesManager_RemoveNames(get(), first, last, 0)};
    }
    Status remove(IndexList<const int32_t> indices) noexcept {
        if (indices.size() > INT32_MAX) { return Status::failed; }
        return Status{NamesManager_RemoveNamesByIndices(get(), indices.data(),
                                                        static_cast<int32_t>(indices.size()))};
    }
    Status remove(std::initializer_list<int32_t> indices) noexcept {
        return remove({std::data(indices), indices.size()});
    }

    /// @}

    /// @name Images
    /// @{

    ImageStatus save(HostOutputStream *pStream) const noexcept {
        return ImageStatus(NamesManager_Save(get(), nullptr, pStream));
    }
    ImageStatus load(HostInputStream *pStream) noexcept {
        return ImageStatus(NamesManager_Load(get(), nullptr, pStream));
    }

    /// @}

private:
    struct Destroy {
        void operator()(NamesManager *mgr) const noexcept { NamesManager_Destroy(mgr); }
    };
    using Handle = std::unique_ptr<NamesManager, Destroy>;
    explicit Manager(Handle handle) noexcept : pManager_(std::move(handle)) {}

    // Holds the lock for a scope.
    class Hold {
    public:
        explicit Hold(const Manager &manager) noexcept : manager_(manager) { manager.lock(); }
        ~Hold() { manager_.unlock(); }
        Hold(const Hold &) = delete;
        Hold &operator=(const Hold &) = delete;

    private:
        const Manager &manager_;
    };

    // A view for a call that takes lengths. nLength is -1 if no name has so many bytes.
    struct OneText {
        explicit OneText(std::string_view name) noexcept
            : pText(name.data() != nullptr ? name.data() : ""),
              nLength(name.size() <= INT32_MAX ? static_cast<int32_t>(name.size()) : -1) {}
        const char *pText;
        int32_t nLength;
    };

    // Names as arrays for one call, unless status says that they could not be had: memory ran out,
    // or there is something among them that is no name. Pointers go as they are, without lengths
    // unless these are to be measured.
    struct Texts {
        enum class Form {
            asGiven,      // the call itself refuses names that hold a NUL
            emptyIfNone,  // what is no name becomes the empty one, which sets bAnyNone
            terminated,   // a NUL follows each name, for which views are copied
            measured      // the same, and pointers have lengths, too
        };

        Texts(const Names &given, Form form) noexcept : ppNames(given.pointers()) {
            if (ppNames != nullptr && form != Form::measured) {
                status = Status::ok;
                return;
            }
            pNames.reset(new (std::nothrow) const char *[given.size()]);
            pLengths.reset(new (std::nothrow) int32_t[given.size()]);
            ppNames = pNames.get();
            if (pNames == nullptr || pLengths == nullptr || !take(given, form)) { return; }
            const bool bTerminated = given.terminated() || form < Form::terminated;
            if (bTerminated || terminate(given.size())) { status = Status::ok; }
        }
        bool take(const Names &given, Form form) noexcept {
            for (std::size_t k = 0; k < given.size(); ++k) {
                std::string_view name = given[k];
                if (form == Form::asGiven ? name.size() > INT32_MAX : !isName(name)) {
                    if (form != Form::emptyIfNone) { return false; }
                    bAnyNone = true;
                    name = std::string_view("");
                }
                pNames[k] = name.data();
                pLengths[k] = static_cast<int32_t>(name.size());
            }
            return true;
        }
        bool terminate(std::size_t nNames) noexcept {
            std::size_t nBytes = nNames;
            for (std::size_t k = 0; k < nNames; ++k) { nBytes += lengthOf(k); }
            pCopies.reset(new (std::nothrow) char[nBytes]);
            char *pNext = pCopies.get();
            for (std::size_t k = 0; pNext != nullptr && k < nNames; ++k) {
                std::memcpy(pNext, pNames[k], lengthOf(k));
                pNames[k] = pNext;
                pNext += lengthOf(k);
                *pNext++ = '\0';
            }
            return pNext != nullptr;
        }
        std::size_t lengthOf(std::size_t k) const noexcept {
            return static_cast<std::size_t>(pLengths[k]);
        }

        Status status = Status::failed;
        bool bAnyNone = false;
        const char *const *ppNames;
        std::unique_ptr<const char *[]> pNames;
        std::unique_ptr<int32_t[]> pLengths;
        std::unique_ptr<char[]> pCopies;
    };

    static bool isName(std::string_view name) noexcept {
        return name.size() <= INT32_MAX && name.find('\0') == std::string_view::npos;
    }
    static bool fits(int32_t first, const Names &names) noexcept {
        return first >= 0 && names.size() <= static_cast<std::size_t>(INT32_MAX - first);
    }
    static int32_t countOf(const Names &names) noexcept {
        return static_cast<int32_t>(names.size());
    }
    static int32_t lastOf(int32_t first, const Names &names) noexcept {
        return first + (countOf(names) - 1);
    }
    static Status noneOf(const Names &names, IndexList<int32_t> indices) noexcept {
        std::fill_n(indices.data(), names.size(), -1);
        return Status::failed;
    }
    std::string_view read(int32_t index) const noexcept {
        const char *szName = NamesManager_GetName(get(), index, 0);
        return szName != nullptr ? std::string_view(szName) : std::string_view();
    }

    Handle pManager_;
};

}  // namespace names_manager

#ifdef __cpp_lib_ranges
template <>
inline constexpr bool std::ranges::enable_view<names_manager::NameRange> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<names_manager::NameRange> = true;
#endif

#endif
