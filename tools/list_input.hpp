// Lists of names: text files with one name per line, or with names ended by NULs. They are read
// many names at once, and split in place.
#ifndef TOOLS_LIST_INPUT_HPP
#define TOOLS_LIST_INPUT_HPP

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "names/names_manager.h"
#include "tools/files.hpp"
#include "tools/progress.hpp"

namespace tool {

class ListInput {
public:
    // bNull: names end with NUL. bEager: next() returns as soon as some names have been read, for
    // a person who types them. beginning: what has been read from the file already.
    ListInput(Input *pFile, bool bNull, bool bEager = false, std::string_view beginning = "");
    ListInput(const ListInput &) = delete;
    ListInput &operator=(const ListInput &) = delete;

    // Reads more names. Returns false at the end of the list. Fails on what cannot be a name; the
    // message says where it is.
    bool next();

    // The names that the last next() read, NUL-terminated, at least one; they stay valid until the
    // next one. Line ends (LF or CR LF) and a UTF-8 byte order mark before the first line are
    // removed; trailing blanks are not, except for very many.
    std::vector<const char *> &names() { return names_; }

    // The list's name in messages.
    const std::string &name() const { return pFile_->name(); }

    // The number of names read so far, those of the last next() included.
    int64_t namesRead() const { return nNamesRead_; }

    // "line 3", or "entry 3" where names end with NUL, for a number that counts from 1.
    std::string place(int64_t number) const;

private:
    [[noreturn]] void failAtNext(const char *szWhat) const;
    size_t read(char *pBuffer, size_t nBytes);
    void keepRest();
    bool mayBeMark() const;
    void fill();
    bool endsInReturn(const char *begin, const char *end) const;
    void checkName(const char *begin, const char *end) const;
    void addName(char *begin, char *end);
    void split();

    Input *pFile_;
    std::string beginning_;
    bool bNull_;
    bool bEager_;
    bool bAtStart_ = true;
    bool bEnded_ = false;
    std::vector<char> buffer_;
    size_t iRest_ = 0;      // where the unfinished name at the end of the buffer begins
    size_t nFilled_ = 0;    // bytes in the buffer
    size_t nSearched_ = 0;  // as many bytes at the buffer's start hold no end of a name
    int64_t nNamesRead_ = 0;
    std::vector<const char *> names_;
};

// Stores all names of the list at the end of mgr. Fails when memory runs out.
void storeList(NamesManager *mgr, ListInput *pList, Progress *pProgress);

}  // namespace tool

#endif
