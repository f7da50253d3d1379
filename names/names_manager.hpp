// A thin C++ face on names_manager.h: an owning handle, string views, names in a range-for. Everything here is one C call, whose
// declaration tells what it does, when it fails and which views it ends; indices count from 0. No exceptions; an operation that cannot
// answer says so.
#ifndef NAMES_NAMES_MANAGER_HPP
#define NAMES_NAMES_MANAGER_HPP

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "names/names_manager.h"

namespace names_manager {

enum class [[nodiscard]] Status : int32_t{
    ok = 0,
    failed = 1,   // memory ran out, or an argument lies outside the operation's contract
    tooLong = 2,  // a name of more than 1048575 bytes
    tooSmall = 3  // the buffer given
};

// The names of an index range in ascending order. It reads ahead, many names per lock, so nothing may change the manager while it is in
// use. It ends early if default names in the range cannot be generated. Views last as those of Manager::name do.
class NameRange {
public:
    struct End {};
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::string_view;
        using difference_type = std::ptrdiff_t;
        using pointer = const std::string_view *;
        using reference = std::string_view;

        Iterator() = default;
        Iterator(NamesManager *mgr, int32_t first, int32_t last) noexcept : pManager_(mgr), iNext_(first), iLast_(last) { readAhead(); }
        std::string_view operator*() const noexcept { return apNames_[iAhead_]; }
        Iterator &operator++() noexcept {
            if (++iAhead_ == nAhead_) readAhead();
            return *this;
        }
        void operator++(int) noexcept { ++*this; }
        friend bool operator==(const Iterator &iterator, End /*end*/) noexcept { return iterator.nAhead_ == 0; }
        friend bool operator!=(const Iterator &iterator, End /*end*/) noexcept { return iterator.nAhead_ != 0; }

    private:
        void readAhead() noexcept {
            const int32_t nWanted = iNext_ > iLast_ ? 0 : iLast_ - iNext_ < kAhead ? iLast_ - iNext_ + 1 : kAhead;
            const bool bRead = nWanted > 0 && NamesManager_GetNamePointers(pManager_, iNext_, iNext_ + nWanted - 1, 0, apNames_) == 0;
            nAhead_ = bRead ? nWanted : 0;
            iNext_ += nAhead_;
            iAhead_ = 0;
        }

        static constexpr int32_t kAhead = 128;
        NamesManager *pManager_ = nullptr;
        int32_t iNext_ = 0;
        int32_t iLast_ = -1;
        int32_t iAhead_ = 0;
        int32_t nAhead_ = 0;
        const char *apNames_[kAhead] = {};
    };

    NameRange(NamesManager *mgr, int32_t first, int32_t last) noexcept : pManager_(mgr), first_(first), last_(last) {}
    Iterator begin() const noexcept { return {pManager_, first_, last_}; }
    End end() const noexcept { return {}; }

private:
    NamesManager *pManager_;
    int32_t first_;
    int32_t last_;
};

// Owns a manager; moves, does not copy (see copyFrom). One that was moved from, or could not be created, is false and good for nothing
// else.
class Manager {
public:
    // False when it could not be created. The format of default names: see NamesManager_Create.
    explicit Manager(const char *szFormat = nullptr, void *pOwner = nullptr) noexcept : pManager_(NamesManager_Create(pOwner, szFormat)) {}
    static Manager adopt(NamesManager *mgr) noexcept { return Manager(Adopted{mgr}); }
    Manager(Manager &&other) noexcept : pManager_(other.release()) {}
    Manager &operator=(Manager &&other) noexcept {
        if (this != &other) {
            NamesManager_Destroy(std::exchange(pManager_, other.release()));
        }
        return *this;
    }
    Manager(const Manager &) = delete;
    Manager &operator=(const Manager &) = delete;
    ~Manager() { NamesManager_Destroy(pManager_); }

    explicit operator bool() const noexcept { return pManager_ != nullptr; }
    NamesManager *get() const noexcept { return pManager_; }  // for every operation that has no method here
    NamesManager *release() noexcept { return std::exchange(pManager_, nullptr); }

    int32_t size() const noexcept { return NamesManager_GetNumNames(pManager_); }
    Status clear() noexcept { return Status{NamesManager_Clear(pManager_)}; }
    Status copyFrom(const Manager &source) noexcept { return Status{NamesManager_Copy(pManager_, source.pManager_)}; }

    // ---- Storing ----
    Status add(int32_t index, const char *szName) noexcept { return Status{NamesManager_AddName(pManager_, index, 0, szName)}; }
    Status add(int32_t index, std::string_view name) noexcept {  // no limit of 1048575 bytes; ends at a NUL
        if (name.size() > INT32_MAX) return Status::failed;
        return Status{NamesManager_AddNameWithMaxLength(pManager_, index, 0, textOf(name), static_cast<int32_t>(name.size()))};
    }
    Status add(int32_t first, int32_t last, const char *const *pszNames) noexcept {
        return Status{NamesManager_AddNames(pManager_, first, last, 0, pszNames)};
    }
    Status addFromBuffer(int32_t first, int32_t last, const char *pBuffer) noexcept {
        return Status{NamesManager_AddNamesFromBuffer(pManager_, first, last, 0, pBuffer)};
    }
    Status generate(int32_t nCount) noexcept { return Status{NamesManager_GenerateNames(pManager_, nCount)}; }

    // ---- Reading ----
    // A view with data() == nullptr when there is no such name and it could not be generated.
    std::string_view name(int32_t index) const noexcept {
        const char *szName = NamesManager_GetName(pManager_, index, 0);
        return szName != nullptr ? std::string_view(szName) : std::string_view();
    }
    NameRange names() const noexcept { return {pManager_, 0, size() - 1}; }
    NameRange names(int32_t first, int32_t last) const noexcept { return {pManager_, first, last}; }
    int32_t maxNameLength() const noexcept { return NamesManager_GetMaxNameLength(pManager_); }
    // Plain names back to back, each with its NUL. pnRequired may be NULL.
    Status copyOut(int32_t first, int32_t last, char *pBuffer, uint64_t nBytes, uint64_t *pnRequired = nullptr) const noexcept {
        return Status{NamesManager_GetNames(pManager_, first, last, 0, 0, 0, 0, pBuffer, nBytes, pnRequired)};
    }

    // ---- Looking up: the index, -1 for none ----
    int32_t find(const char *szName) const noexcept { return NamesManager_FindName(pManager_, szName, 0); }
    int32_t find(std::string_view name) const noexcept {
        if (name.size() > INT32_MAX) return -1;
        return NamesManager_FindNameInField(pManager_, textOf(name), static_cast<int32_t>(name.size()), 0);
    }

    // ---- Removing ----
    Status remove(int32_t first, int32_t last) noexcept { return Status{NamesManager_RemoveNames(pManager_, first, last, 0)}; }
    Status remove(const int32_t *pIndices, int32_t nCount) noexcept {
        return Status{NamesManager_RemoveNamesByIndices(pManager_, pIndices, nCount)};
    }

    // ---- Images: 0, -1, or the stream's code ----
    int32_t save(HostOutputStream *pStream) const noexcept { return NamesManager_Save(pManager_, nullptr, pStream); }
    int32_t load(HostInputStream *pStream) noexcept { return NamesManager_Load(pManager_, nullptr, pStream); }

private:
    struct Adopted {
        NamesManager *mgr;
    };
    explicit Manager(Adopted adopted) noexcept : pManager_(adopted.mgr) {}
    static const char *textOf(std::string_view name) noexcept { return name.data() != nullptr ? name.data() : ""; }

    NamesManager *pManager_;
};

}  // namespace names_manager

#endif
