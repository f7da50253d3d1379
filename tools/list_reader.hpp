// Lists of names: text files with one name per line, read in large chunks and split in place.
#ifndef TOOLS_LIST_READER_HPP
#define TOOLS_LIST_READER_HPP

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

class ListReader {
public:
    // list: a file, or "-" for standard input. bEager: hand lines out as soon as a read delivers any, for someone typing.
    explicit ListReader(const std::string &list, bool bEager = false);
    ListReader(const ListReader &) = delete;
    ListReader &operator=(const ListReader &) = delete;
    ~ListReader();

    // Reads on. False at the end of the list. Fails, with file and line, on lines that cannot be names.
    bool next();

    // The lines of the last next(), NUL-terminated, without their line ends (LF or CR LF), with (most of) their trailing blanks; good until
    // the next one.
    std::vector<const char *> &lines() { return mLines; }

    // For messages: the list's name, and lines read up to and with the last next().
    const std::string &name() const { return mName; }
    int64_t linesRead() const { return mLinesRead; }

private:
    void fill();
    void split();
    void addLine(char *begin, char *end);
    void keepRest();
    [[noreturn]] void failAtLine(const char *szWhat) const;

    std::string mName;
    int mDescriptor;
    bool mEager;
    bool mEnded = false;
    std::vector<char> mBuffer;
    size_t mRest = 0;      // where the unfinished line at the buffer's end begins
    size_t mFilled = 0;    // bytes in the buffer
    size_t mSearched = 0;  // the bytes before hold no line end beyond mRest
    int64_t mLinesRead = 0;
    std::vector<const char *> mLines;
};

}  // namespace tool

#endif
