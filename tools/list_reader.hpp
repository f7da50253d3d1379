// Lists of names: text files with one name per line, or with names ended by NULs, read in large
// chunks and split in place.
#ifndef TOOLS_LIST_READER_HPP
#define TOOLS_LIST_READER_HPP

#include <cstdint>
#include <string>
#include <vector>

#include "tools/files.hpp"

namespace tool {

class ListReader {
public:
    // list: a file, or "-" for standard input. bNull: names end by NUL. bEager: hand names out as
    // soon as a read delivers any, for someone typing.
    ListReader(const std::string &list, bool bNull, bool bEager = false);
    ListReader(const ListReader &) = delete;
    ListReader &operator=(const ListReader &) = delete;

    // Reads on. False at the end of the list. Fails, with file and place, on what cannot be a name.
    bool next();

    // What the last next() read, NUL-terminated, without line ends (LF or CR LF) and a byte order
    // mark (UTF-8) before the first line, with (most of) the trailing blanks; good until the next
    // one.
    std::vector<const char *> &names() { return mNames; }

    // For messages: the list's name, names read up to and with the last next(), and "line 3" or
    // "entry 3" for the one with that number.
    const std::string &name() const { return mInput.name(); }
    int64_t namesRead() const { return mNamesRead; }
    std::string place(int64_t iNumber) const;

private:
    void fill();
    bool mayBeMark() const;
    void split();
    void addName(char *begin, char *end);
    bool endsInReturn(const char *begin, const char *end) const;
    void keepRest();
    [[noreturn]] void failAtNext(const char *szWhat) const;

    Input mInput;
    bool mNull;
    bool mEager;
    bool mAtStart = true;
    bool mEnded = false;
    std::vector<char> mBuffer;
    size_t mRest = 0;      // where the unfinished name at the buffer's end begins
    size_t mFilled = 0;    // bytes in the buffer
    size_t mSearched = 0;  // the bytes before hold no end of a name beyond mRest
    int64_t mNamesRead = 0;
    std::vector<const char *> mNames;
};

}  // namespace tool

#endif
