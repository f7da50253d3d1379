#include "tools/list_input.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr size_t kListReadSize = size_t{4} << 20;
constexpr size_t kMaxNameLength = NAMES_MANAGER_MAX_NAME_BYTES;

// The most bytes of an unfinished name that are kept: the longest name and one blank after it (or
// one byte that makes it too long), a carriage return, a NUL.
constexpr size_t kMaxRest = kMaxNameLength + 3;

size_t lengthWithoutBlanks(const char *begin, const char *end) {
    while (end > begin && end[-1] == ' ') { --end; }
    return static_cast<size_t>(end - begin);
}

}  // namespace

ListInput::ListInput(Input *pFile, bool bNull, bool bEager, std::string_view beginning)
    : pFile_(pFile), beginning_(beginning), bNull_(bNull), bEager_(bEager),
      buffer_(kListReadSize + kMaxRest) {}

std::string ListInput::place(int64_t number) const {
    return (bNull_ ? "entry " : "line ") + std::to_string(number);
}

void ListInput::failAtNext(const char *szWhat) const {
    fail(name(), place(nNamesRead_ + 1) + ": " + szWhat);
}

// Reads what has been read from the file already, then on from the file.
size_t ListInput::read(char *pBuffer, size_t nBytes) {
    if (beginning_.empty()) { return pFile_->read(pBuffer, nBytes); }
    const size_t nCopied = beginning_.copy(pBuffer, nBytes);
    beginning_.erase(0, nCopied);
    return nCopied;
}

// Moves the unfinished name to the start of the buffer. After as many bytes as the longest name
// has, blanks matter only if other text follows, for which one of them does as well as all: so a
// name with any number of blanks fits the buffer.
void ListInput::keepRest() {
    size_t nRest = nFilled_ - iRest_;
    std::memmove(buffer_.data(), buffer_.data() + iRest_, nRest);
    if (nRest > kMaxNameLength + 2) {
        const bool bReturn = endsInReturn(buffer_.data(), buffer_.data() + nRest);
        nRest = kMaxNameLength + 1;
        if (bReturn) { buffer_[nRest++] = '\r'; }
    }
    iRest_ = 0;
    nFilled_ = nRest;
    nSearched_ = nRest;
}

// Whether more has to be read to see if the list begins with a byte order mark.
bool ListInput::mayBeMark() const {
    return bAtStart_ && !bNull_ && nFilled_ < kByteOrderMark.size() &&
           kByteOrderMark.compare(0, nFilled_, buffer_.data(), nFilled_) == 0;
}

// Reads until the buffer is full, or once if eager; one byte is left for the NUL after the last
// name. Removes a byte order mark.
void ListInput::fill() {
    const size_t nRoom = buffer_.size() - 1;
    bool bEnough = false;
    while (!bEnough) {
        const size_t nRead = read(buffer_.data() + nFilled_, nRoom - nFilled_);
        bEnded_ = nRead == 0;
        nFilled_ += nRead;
        bEnough = bEnded_ || nFilled_ == nRoom || (bEager_ && !mayBeMark());
    }
    if (bAtStart_ && !bNull_ && startsWithMark(std::string_view(buffer_.data(), nFilled_))) {
        nFilled_ -= kByteOrderMark.size();
        std::memmove(buffer_.data(), buffer_.data() + kByteOrderMark.size(), nFilled_);
    }
    bAtStart_ = false;
}

bool ListInput::endsInReturn(const char *begin, const char *end) const {
    return !bNull_ && end > begin && end[-1] == '\r';
}

// Fails if the name, or what there is of it, cannot be one.
void ListInput::checkName(const char *begin, const char *end) const {
    if (std::memchr(begin, '\0', static_cast<size_t>(end - begin))) {
        failAtNext("a NUL inside the line");
    }
    if (lengthWithoutBlanks(begin, end) > kMaxNameLength) {
        failAtNext("longer than 1048575 bytes");
    }
}

void ListInput::addName(char *begin, char *end) {
    if (nNamesRead_ == std::numeric_limits<int32_t>::max()) {
        failAtNext("more than 2147483647 names");
    }
    checkName(begin, end);
    *end = '\0';
    names_.push_back(begin);
    ++nNamesRead_;
}

// Adds all names that are complete, and what is left at the end of the list.
void ListInput::split() {
    char *const pEnd = buffer_.data() + nFilled_;
    char *pName = buffer_.data();
    for (char *pSearch = pName + nSearched_; pSearch < pEnd;) {
        auto *pNameEnd = static_cast<char *>(
            std::memchr(pSearch, bNull_ ? '\0' : '\n', static_cast<size_t>(pEnd - pSearch)));
        if (!pNameEnd) { break; }
        addName(pName, endsInReturn(pName, pNameEnd) ? pNameEnd - 1 : pNameEnd);
        pName = pSearch = pNameEnd + 1;
    }
    if (bEnded_ && pName < pEnd) {
        addName(pName, pEnd);
        pName = pEnd;
    }
    checkName(pName, endsInReturn(pName, pEnd) ? pEnd - 1 : pEnd);
    iRest_ = static_cast<size_t>(pName - buffer_.data());
}

bool ListInput::next() {
    names_.clear();
    while (names_.empty() && !bEnded_) {
        keepRest();
        fill();
        split();
    }
    return !names_.empty();
}

void storeList(NamesManager *mgr, ListInput *pList, Progress *pProgress) {
    while (pList->next()) {
        const int32_t first = NamesManager_GetNumNames(mgr);
        const auto last = static_cast<int32_t>(pList->namesRead() - 1);
        if (NamesManager_AddNames(mgr, first, last, 0, pList->names().data()) != 0) {
            fail(pList->name(),
                 "out of memory after " + pList->place(NamesManager_GetNumNames(mgr)));
        }
        pProgress->set("storing", pList->namesRead());
    }
}

}  // namespace tool
