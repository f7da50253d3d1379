// What a command reads and writes.
#ifndef TOOLS_FILES_HPP
#define TOOLS_FILES_HPP

#include <cstdio>
#include <string>

#include "host/file_system.hpp"

#if defined(__GNUC__)
#define TOOLS_PRINTF_LIKE __attribute__((format(printf, 2, 3)))
#else
#define TOOLS_PRINTF_LIKE
#endif

namespace tool {

// A file, or standard input for "-". Everything here fails when it cannot be opened or read.
class Input {
public:
    explicit Input(const std::string &file);
    Input(const Input &) = delete;
    Input &operator=(const Input &) = delete;
    ~Input();

    const std::string &name() const { return name_; }

    // Reads what is there, at most nBytes. Returns how many bytes, at least one; 0 at the end.
    size_t read(char *pBuffer, size_t nBytes);

private:
    std::string name_;  // for messages
    int descriptor_;
};

// Standard output; or a file, replaced in one step: after any failure an older one is whole and
// nothing is left beside it; or a pipe or device, written as the bytes come. Everything here fails
// if a byte could not be written.
class Output {
public:
    // file: "-" for standard output. input: what the command reads, which must not be the same
    // file; "" for nothing.
    explicit Output(const std::string &file = "-", const std::string &input = "");
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;
    ~Output();

    const std::string &name() const { return name_; }
    bool isStandard() const { return pFile_ == stdout; }
    bool isTerminal() const;

    // As write, for callers that must not throw. False and sets errno.
    bool tryWrite(const void *pData, size_t nBytes);
    void write(const std::string &text);
    void print(const char *szFormat, ...) TOOLS_PRINTF_LIKE;
    void flush();

    // Puts the file in its place; without this, what was written to a file is thrown away.
    void finish();

private:
    void open(const std::string &file);
    void putInPlace();

    std::string name_;  // for messages
    std::FILE *pFile_ = nullptr;
    bool bBeside_ = false;  // pFile_ is a file beside the one to replace
    host::ReplacedFile replaced_;
};

}  // namespace tool

#endif
