#include "tools/list_reader.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr size_t kChunk = size_t{4} << 20;
constexpr size_t kMaxNameLength = 1048575;

// The most that is kept of an unfinished line: enough to see that a name is too long, one blank beyond it, a carriage return, a NUL.
constexpr size_t kMaxRest = kMaxNameLength + 3;

size_t lengthWithoutBlanks(const char *begin, const char *end) {
    while (end > begin && end[-1] == ' ')
        --end;
    return static_cast<size_t>(end - begin);
}

}  // namespace

ListReader::ListReader(const std::string &list, bool bEager)
    : mName(list == "-" ? "standard input" : list), mDescriptor(list == "-" ? STDIN_FILENO : open(list.c_str(), O_RDONLY | O_CLOEXEC)),
      mEager(bEager), mBuffer(kChunk + kMaxRest) {
    if (mDescriptor < 0) fail(mName, "cannot open: " + systemError());
}

ListReader::~ListReader() {
    if (mDescriptor != STDIN_FILENO) close(mDescriptor);
}

void ListReader::failAtLine(const char *szWhat) const {
    fail(mName, "line " + std::to_string(mLinesRead + 1) + ": " + szWhat);
}

bool ListReader::next() {
    mLines.clear();
    while (mLines.empty() && !mEnded) {
        keepRest();
        fill();
        split();
    }
    return !mLines.empty();
}

// Moves the unfinished line to the front. Blanks beyond the longest name count only if more text follows, and one of them shows that as
// well as all, so a line of any length stays within the buffer.
void ListReader::keepRest() {
    size_t nRest = mFilled - mRest;
    std::memmove(mBuffer.data(), mBuffer.data() + mRest, nRest);
    if (nRest > kMaxNameLength + 2) {
        const bool bCarriageReturn = mBuffer[nRest - 1] == '\r';
        nRest = kMaxNameLength + 1;
        if (bCarriageReturn) mBuffer[nRest++] = '\r';
    }
    mRest = 0;
    mFilled = nRest;
    mSearched = nRest;
}

// Reads until the buffer is full (but for the NUL that ends a last line), or once if eager.
void ListReader::fill() {
    const size_t nRoom = mBuffer.size() - 1;
    while (mFilled < nRoom) {
        const ssize_t nRead = read(mDescriptor, mBuffer.data() + mFilled, nRoom - mFilled);
        if (nRead < 0 && errno == EINTR) continue;
        if (nRead < 0) fail(mName, "cannot read: " + systemError());
        mEnded = nRead == 0;
        mFilled += static_cast<size_t>(nRead);
        if (mEnded || mEager) return;
    }
}

void ListReader::split() {
    char *pEnd = mBuffer.data() + mFilled;
    char *pLine = mBuffer.data();
    for (char *pSearch = pLine + mSearched; pSearch < pEnd;) {
        auto *pLineEnd = static_cast<char *>(std::memchr(pSearch, '\n', static_cast<size_t>(pEnd - pSearch)));
        if (!pLineEnd) break;
        const bool bCarriageReturn = pLineEnd > pLine && pLineEnd[-1] == '\r';
        addLine(pLine, bCarriageReturn ? pLineEnd - 1 : pLineEnd);
        pLine = pSearch = pLineEnd + 1;
    }
    if (mEnded && pLine < pEnd) {
        addLine(pLine, pEnd);
        pLine = pEnd;
    }
    const bool bCarriageReturn = pEnd > pLine && pEnd[-1] == '\r';
    if (std::memchr(pLine, '\0', static_cast<size_t>(pEnd - pLine))) failAtLine("a NUL inside the line");
    if (lengthWithoutBlanks(pLine, bCarriageReturn ? pEnd - 1 : pEnd) > kMaxNameLength) failAtLine("longer than 1048575 bytes");
    mRest = static_cast<size_t>(pLine - mBuffer.data());
}

void ListReader::addLine(char *begin, char *end) {
    if (mLinesRead == std::numeric_limits<int32_t>::max()) failAtLine("more than 2147483647 lines");
    if (std::memchr(begin, '\0', static_cast<size_t>(end - begin))) failAtLine("a NUL inside the line");
    if (lengthWithoutBlanks(begin, end) > kMaxNameLength) failAtLine("longer than 1048575 bytes");
    *end = '\0';
    mLines.push_back(begin);
    ++mLinesRead;
}

}  // namespace tool
