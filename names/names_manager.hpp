/// @file
/// A thin C++ face on names_manager.h: an owning handle, string views, names as a range. Everything
/// here is one C call, whose declaration says what it does, when it fails and which views it
/// invalidates. Indices count from 0. Nothing throws; what fails says so by its result.
///
/// Names are taken as pointers to NUL-terminated text, as views, or as strings. A view that holds a
/// NUL is refused (Status::failed) rather than cut. Views and strings given many at a time are
/// copied to NUL-terminated text for the duration of the call.
#ifndef NAMES_NAMES_MANAGER_HPP
#define NAMES_NAMES_MANAGER_HPP

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#if __has_include(<version>)
#include <version>
#endif
#ifdef __cpp_lib_ranges
#include <ranges>
#endif
#ifdef __cpp_lib_span
#include <span>
#endif

#include "files/names_file.h"
#include "names/names_manager.h"
#include "names/names_reader.h"

/// The C++ face of names_manager.h.
namespace names_manager {

/// Results, as NamesManagerStatus has them.
enum class [[nodiscard]] Status : int32_t{
    ok = 0,
    failed = 1,   ///< memory ran out, or an argument lies outside the operation's contract
    tooLong = 2,  ///< a name has more than NAMES_MANAGER_MAX_NAME_BYTES
    tooSmall = 3  ///< the buffer given
};

/// The existing names of an index range in ascending order: a sized view of string views, which
/// last as long as those of Manager::name do. An iterator reads ahead, many names per lock, so
/// nothing may change the manager while an iterator is in use.
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
        std::string_view operator*() const noexcept { return apNames_[iAhead_]; }
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
            nAhead_ = iEnd_ - iNext_ < kAhead ? iEnd_ - iNext_ : kAhead;
            if (nAhead_ > 0 && NamesManager_GetNamePointers(pManager_, iNext_, iNext_ + nAhead_ - 1,
                                                            0, apNames_) != 0) {
                iNext_ = iEnd_;  // somebody has removed names meanwhile
            }
        }

        static constexpr int32_t kAhead = 128;
        NamesManager *pManager_ = nullptr;
        int32_t iNext_ = 0;
        int32_t iEnd_ = 0;
        int32_t iAhead_ = 0;
        int32_t nAhead_ = 0;
        const char *apNames_[kAhead] = {};
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
    static Manager adopt(NamesManager *mgr) noexcept { return Manager(Adopted{mgr}); }
    Manager(Manager &&other) noexcept : pManager_(other.release()) {}
    Manager &operator=(Manager &&other) noexcept {
        if (this != &other) { NamesManager_Destroy(std::exchange(pManager_, other.release())); }
        return *this;
    }
    Manager(const Manager &) = delete;
    Manager &operator=(const Manager &) = delete;
    ~Manager() { NamesManager_Destroy(pManager_); }

    explicit operator bool() const noexcept { return pManager_ != nullptr; }
    /// For every operation that has no method here.
    NamesManager *get() const noexcept { return pManager_; }
    NamesManager *release() noexcept { return std::exchange(pManager_, nullptr); }

    /// Several calls as one, also by std::scoped_lock: see NamesManager_Lock.
    void lock() const noexcept { NamesManager_Lock(pManager_); }
    void unlock() const noexcept { NamesManager_Unlock(pManager_); }

    int32_t size() const noexcept { return NamesManager_GetNumNames(pManager_); }
    bool empty() const noexcept { return size() == 0; }
    Status clear() noexcept { return Status{NamesManager_Clear(pManager_)}; }
    Status copyFrom(const Manager &source) noexcept {
        return Status{NamesManager_Copy(pManager_, source.pManager_)};
    }
    Status usePositions() noexcept {
        return Status{NamesManager_StoreIndividualNamePositions(pManager_)};
    }

    /// @name Storing
    /// @{

    Status add(int32_t index, const char *szName) noexcept {
        return Status{NamesManager_AddName(pManager_, index, 0, szName)};
    }
    Status add(int32_t index, std::string_view name) noexcept {
        const Status status = check(name);
        return status != Status::ok ? status
                                    : Status{NamesManager_AddNameWithMaxLength(
                                          pManager_, index, 0, textOf(name), lengthOf(name))};
    }
    /// Adds a name at the end, wherever other threads have brought it meanwhile.
    Status push_back(const char *szName) noexcept {
        const Hold hold(*this);
        return add(size(), szName);
    }
    Status push_back(std::string_view name) noexcept {
        const Hold hold(*this);
        return add(size(), name);
    }
    Status add(int32_t first, int32_t last, const char *const *pszNames) noexcept {
        return Status{NamesManager_AddNames(pManager_, first, last, 0, pszNames)};
    }
    /// Stores nNames names from index first on.
    Status add(int32_t first, const char *const *pszNames, std::size_t nNames) noexcept {
        return nNames == 0           ? Status::ok
               : fits(first, nNames) ? add(first, lastOf(first, nNames), pszNames)
                                     : Status::failed;
    }
    Status add(int32_t first, const std::string_view *pNames, std::size_t nNames) noexcept {
        return addTexts(first, pNames, nNames);
    }
    Status add(int32_t first, const std::string *pNames, std::size_t nNames) noexcept {
        return addTexts(first, pNames, nNames);
    }
    Status addFromBuffer(int32_t first, int32_t last, const char *pBuffer) noexcept {
        return Status{NamesManager_AddNamesFromBuffer(pManager_, first, last, 0, pBuffer)};
    }
    /// Stores the prefix and after it the source's name. The source may be this manager.
    Status addCopy(int32_t index, const Manager &source, int32_t iSource,
                   const char *szPrefix = "") noexcept {
        return Status{NamesManager_CopyNameWithPrefix(pManager_, index, 0, source.pManager_,
                                                      iSource, 0, szPrefix)};
    }
    Status generate(int32_t nCount) noexcept {
        return Status{NamesManager_GenerateNames(pManager_, nCount)};
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
    NameRange names() const noexcept { return {pManager_, 0, size() - 1}; }
    NameRange names(int32_t first, int32_t last) const noexcept { return {pManager_, first, last}; }
    /// Generates default names up to last first, as many as it can.
    NameRange names(int32_t first, int32_t last) noexcept {
        static_cast<void>(NamesManager_GetNamePointers(pManager_, first, last, 0, nullptr));
        return {pManager_, first, last};
    }
    int32_t maxNameLength() const noexcept { return NamesManager_GetMaxNameLength(pManager_); }
    /// For threads that read at once. With bLookups names can be found, too, unless there was no
    /// memory for the index (failed).
    Reader reader(bool bLookups, Status *pStatus) const noexcept {
        return {pManager_, bLookups, pStatus};
    }
    /// Copies plain names back to back, each with its NUL. pnRequired may be NULL.
    Status copyOut(int32_t first, int32_t last, char *pBuffer, uint64_t nBytes,
                   uint64_t *pnRequired = nullptr) const noexcept {
        return Status{
            NamesManager_GetNames(pManager_, first, last, 0, 0, 0, 0, pBuffer, nBytes, pnRequired)};
    }

    /// @}

    /// @name Looking up: the index, -1 for none
    /// @{

    int32_t find(const char *szName) const noexcept {
        return NamesManager_FindName(pManager_, szName, 0);
    }
    int32_t find(std::string_view name) const noexcept {
        return check(name) != Status::ok
                   ? -1
                   : NamesManager_FindNameInField(pManager_, textOf(name), lengthOf(name), 0);
    }
    /// Finds many at once, which is faster. pIndices has room for nNames.
    Status find(const char *const *pszNames, std::size_t nNames, int32_t *pIndices) const noexcept {
        if (!fits(0, nNames)) { return Status::failed; }
        return Status{NamesManager_FindNameList(pManager_, pszNames, static_cast<int32_t>(nNames),
                                                0, pIndices)};
    }
    Status find(const std::string_view *pNames, std::size_t nNames,
                int32_t *pIndices) const noexcept {
        return findTexts(pNames, nNames, pIndices);
    }
    Status find(const std::string *pNames, std::size_t nNames, int32_t *pIndices) const noexcept {
        return findTexts(pNames, nNames, pIndices);
    }

    /// @}

    /// @name Checking, before names are added from index first on
    /// See NamesManager_CheckDuplicateNames().
    /// @{

    Duplicate findDuplicate(int32_t first, const char *const *pszNames,
                            std::size_t nNames) noexcept {
        const auto lengths = std::unique_ptr<int32_t[]>(new (std::nothrow) int32_t[nNames + 1]);
        if (lengths == nullptr || !fits(first, nNames)) { return {}; }
        for (std::size_t k = 0; k < nNames; ++k) {
            const std::size_t nLength =
                pszNames[k] != nullptr ? std::char_traits<char>::length(pszNames[k]) : 0;
            if (nLength > INT32_MAX) { return {}; }
            lengths[k] = static_cast<int32_t>(nLength);
        }
        return findDuplicate(first, pszNames, lengths.get(), nNames);
    }
    Duplicate findDuplicate(int32_t first, const std::string_view *pNames,
                            std::size_t nNames) noexcept {
        return findDuplicateText(first, pNames, nNames);
    }
    Duplicate findDuplicate(int32_t first, const std::string *pNames, std::size_t nNames) noexcept {
        return findDuplicateText(first, pNames, nNames);
    }

    /// @}

    /// @name Removing
    /// @{

    Status remove(int32_t index) noexcept { return remove(index, index); }
    Status remove(int32_t first, int32_t last) noexcept {
        return Status{NamesManager_RemoveNames(pManager_, first, last, 0)};
    }
    Status remove(const int32_t *pIndices, int32_t nCount) noexcept {
        return Status{NamesManager_RemoveNamesByIndices(pManager_, pIndices, nCount)};
    }

    /// @}

    /// @name Images: 0, -1, or the stream's code; by path on the shipped host alone
    /// @{

    int32_t save(HostOutputStream *pStream) const noexcept {
        return NamesManager_Save(pManager_, nullptr, pStream);
    }
    int32_t load(HostInputStream *pStream) noexcept {
        return NamesManager_Load(pManager_, nullptr, pStream);
    }
    int32_t save(const char *szPath) const noexcept {
        return NamesManager_SaveToFile(pManager_, szPath);
    }
    int32_t load(const char *szPath) noexcept {
        return NamesManager_LoadFromFile(pManager_, szPath);
    }

    /// @}

#ifdef __cpp_lib_span
    /// @name Spans
    /// @{

    Status add(int32_t first, std::span<const char *const> names) noexcept {
        return add(first, names.data(), names.size());
    }
    Status add(int32_t first, std::span<const std::string_view> names) noexcept {
        return add(first, names.data(), names.size());
    }
    Status add(int32_t first, std::span<const std::string> names) noexcept {
        return add(first, names.data(), names.size());
    }
    /// There must be as many indices as names, else nothing is done (tooSmall).
    Status find(std::span<const char *const> names, std::span<int32_t> indices) const noexcept {
        return findIn(names, indices);
    }
    Status find(std::span<const std::string_view> names,
                std::span<int32_t> indices) const noexcept {
        return findIn(names, indices);
    }
    Status find(std::span<const std::string> names, std::span<int32_t> indices) const noexcept {
        return findIn(names, indices);
    }
    Status remove(std::span<const int32_t> indices) noexcept {
        return indices.size() <= INT32_MAX
                   ? remove(indices.data(), static_cast<int32_t>(indices.size()))
                   : Status::failed;
    }

    /// @}
#endif

private:
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
    struct Adopted {
        NamesManager *mgr;
    };
    explicit Manager(Adopted adopted) noexcept : pManager_(adopted.mgr) {}

    static const char *textOf(std::string_view name) noexcept {
        return name.data() != nullptr ? name.data() : "";
    }
    static int32_t lengthOf(std::string_view name) noexcept {
        return static_cast<int32_t>(name.size());
    }
    static bool fits(int32_t first, std::size_t nNames) noexcept {
        return first >= 0 && nNames <= static_cast<std::size_t>(INT32_MAX - first);
    }
    static int32_t lastOf(int32_t first, std::size_t nNames) noexcept {
        return first + (static_cast<int32_t>(nNames) - 1);
    }
    // What storing the name as NUL-terminated text would return.
    static Status check(std::string_view name) noexcept {
        constexpr std::size_t kLongest = NAMES_MANAGER_MAX_NAME_BYTES;
        if (name.find('\0') != std::string_view::npos || name.size() > INT32_MAX) {
            return Status::failed;
        }
        return name.find_last_not_of(' ') + 1 > kLongest ? Status::tooLong : Status::ok;
    }

    // Names that are views or strings, NUL-terminated for the duration of a call.
    struct Terminated {
        template <typename Text>
        Terminated(const Text *pNames, std::size_t nNames) noexcept {
            std::size_t nBytes = 0;
            for (std::size_t k = 0; k < nNames && status == Status::ok; ++k) {
                status = check(pNames[k]);
                nBytes += pNames[k].size() + 1;
            }
            text.reset(status == Status::ok ? new (std::nothrow) char[nBytes + 1] : nullptr);
            names.reset(status == Status::ok ? new (std::nothrow) const char *[nNames + 1]
                                             : nullptr);
            if (text == nullptr || names == nullptr) {
                status = status == Status::ok ? Status::failed : status;
                return;
            }
            char *pNext = text.get();
            for (std::size_t k = 0; k < nNames; ++k) {
                names[k] = pNext;
                pNext += std::string_view(pNames[k]).copy(pNext, pNames[k].size());
                *pNext++ = '\0';
            }
        }
        Status status = Status::ok;
        std::unique_ptr<char[]> text;
        std::unique_ptr<const char *[]> names;
    };

    template <typename Text>
    Status addTexts(int32_t first, const Text *pNames, std::size_t nNames) noexcept {
        const Terminated texts(pNames, nNames);
        return texts.status != Status::ok ? texts.status : add(first, texts.names.get(), nNames);
    }
    template <typename Text>
    Status findTexts(const Text *pNames, std::size_t nNames, int32_t *pIndices) const noexcept {
        const Terminated texts(pNames, nNames);
        return texts.status != Status::ok ? texts.status
                                          : find(texts.names.get(), nNames, pIndices);
    }
    template <typename Text>
    Duplicate findDuplicateText(int32_t first, const Text *pNames, std::size_t nNames) noexcept {
        const Terminated texts(pNames, nNames);
        return texts.status != Status::ok ? Duplicate{texts.status}
                                          : findDuplicate(first, texts.names.get(), nNames);
    }
    Duplicate findDuplicate(int32_t first, const char *const *pszNames, const int32_t *pLengths,
                            std::size_t nNames) noexcept {
        Duplicate duplicate;
        int32_t bFound = 0;
        duplicate.status = Status{NamesManager_CheckDuplicateNames(
            pManager_, first, lastOf(first, nNames), 0, pszNames, pLengths, &bFound,
            &duplicate.iFirst, &duplicate.iSecond, nullptr, 0)};
        duplicate.found = bFound != 0;
        return duplicate;
    }
#ifdef __cpp_lib_span
    template <typename Name>
    Status findIn(std::span<Name> names, std::span<int32_t> indices) const noexcept {
        return indices.size() < names.size() ? Status::tooSmall
                                             : find(names.data(), names.size(), indices.data());
    }
#endif
    std::string_view read(int32_t index) const noexcept {
        const char *szName = NamesManager_GetName(pManager_, index, 0);
        return szName != nullptr ? std::string_view(szName) : std::string_view();
    }

    NamesManager *pManager_;
};

}  // namespace names_manager

#ifdef __cpp_lib_ranges
template <>
inline constexpr bool std::ranges::enable_view<names_manager::NameRange> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<names_manager::NameRange> = true;
#endif

#endif
