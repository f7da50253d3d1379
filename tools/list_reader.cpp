#include "tools/list_reader.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr size_t kChunk = size_t{4} << 20;
constexpr size_t kMaxNameLength = 1048575;

// The most that is kept of an unfinished name: enough to see that it is too long, one blank beyond
// it, a carriage return, a NUL.
constexpr size_t kMaxRest = kMaxNameLength + 3;

size_t lengthWithoutBlanks(const char *begin, const char *end) {
    while (end > begin && end[-1] == ' ') { --end; }
    return static_cast<size_t>(end - begin);
}

}  // namespace

ListReader::ListReader(const std::string &list, bool bNull, bool bEager)
    : mInput(list), mNull(bNull), mEager(bEager), mBuffer(kChunk + kMaxRest) {}

std::string ListReader::place(int64_t iNumber) const {
    return (mNull ? "entry " : "line ") + std::to_string(iNumber);
}

void ListReader::failAtNext(const char *szWhat) const {
    fail(name(), place(mNamesRead + 1) + ": " + szWhat);
}

bool ListReader::next() {
    mNames.clear();
    while (mNames.empty() && !mEnded) {
        keepRest();
        fill();
        split();
    }
    return !mNames.empty();
}

// Moves the unfinished name to the front. Blanks beyond the longest name count only if more text
// follows, and one of them shows that as well as all, so a line of any length stays within the
// buffer.
void ListReader::keepRest() {
    size_t nRest = mFilled - mRest;
    std::memmove(mBuffer.data(), mBuffer.data() + mRest, nRest);
    if (nRest > kMaxNameLength + 2) {
        const bool bReturn = endsInReturn(mBuffer.data(), mBuffer.data() + nRest);
        nRest = kMaxNameLength + 1;
        if (bReturn) { mBuffer[nRest++] = '\r'; }
    }
    mRest = 0;
    mFilled = nRest;
    mSearched = nRest;
}

// Whether the buffer may be the beginning of a byte order mark.
bool ListReader::mayBeMark() const {
    return mAtStart && !mNull && mFilled < kByteOrderMark.size() &&
           kByteOrderMark.compare(0, mFilled, mBuffer.data(), mFilled) == 0;
}

// Reads until the buffer is full (but for the NUL that ends a last name), or once if eager. Drops a
// byte order mark.
void ListReader::fill() {
    const size_t nRoom = mBuffer.size() - 1;
    bool bEnough = false;
    while (!bEnough) {
        const size_t nRead = mInput.read(mBuffer.data() + mFilled, nRoom - mFilled);
        mEnded = nRead == 0;
        mFilled += nRead;
        bEnough = mEnded || mFilled == nRoom || (mEager && !mayBeMark());
    }
    if (mAtStart && !mNull && startsWithMark(std::string_view(mBuffer.data(), mFilled))) {
        mFilled -= kByteOrderMark.size();
        std::memmove(mBuffer.data(), mBuffer.data() + kByteOrderMark.size(), mFilled);
    }
    mAtStart = false;
}

bool ListReader::endsInReturn(const char *begin, const char *end) const {
    return !mNull && end > begin && end[-1] == '\r';
}

void ListReader::split() {
    char *pEnd = mBuffer.data() + mFilled;
    char *pName = mBuffer.data();
    for (char *pSearch = pName + mSearched; pSearch < pEnd;) {
        auto *pNameEnd = static_cast<char *>(
            std::memchr(pSearch, mNull ? '\0' : '\n', static_cast<size_t>(pEnd - pSearch)));
        if (!pNameEnd) { break; }
        addName(pName, endsInReturn(pName, pNameEnd) ? pNameEnd - 1 : pNameEnd);
        pName = pSearch = pNameEnd + 1;
    }
    if (mEnded && pName < pEnd) {
        addName(pName, pEnd);
        pName = pEnd;
    }
    if (std::memchr(pName, '\0', static_cast<size_t>(pEnd - pName))) {
        failAtNext("a NUL inside the line");
    }
    if (lengthWithoutBlanks(pName, endsInReturn(pName, pEnd) ? pEnd - 1 : pEnd) > kMaxNameLength) {
        failAtNext("longer than 1048575 bytes");
    }
    mRest = static_cast<size_t>(pName - mBuffer.data());
}

void ListReader::addName(char *begin, char *end) {
    if (mNamesRead == std::numeric_limits<int32_t>::max()) {
        failAtNext("more than 2147483647 names");
    }
    if (std::memchr(begin, '\0', static_cast<size_t>(end - begin))) {
        failAtNext("a NUL inside the line");
    }
    if (lengthWithoutBlanks(begin, end) > kMaxNameLength) {
        failAtNext("longer than 1048575 bytes");
    }
    *end = '\0';
    mNames.push_back(begin);
    ++mNamesRead;
}

}  // namespace tool
