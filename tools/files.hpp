// What a command reads and writes.
#ifndef TOOLS_FILES_HPP
#define TOOLS_FILES_HPP

#include <cstdio>
#include <string>

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

    const std::string &name() const { return mName; }

    // Reads what is there, at most nBytes (below 2^31). How many bytes, at least one; 0 at the end.
    size_t read(char *pBuffer, size_t nBytes);

private:
    std::string mName;  // for messages
    int mDescriptor;
};

// Standard output; or a file, replaced in one step: whatever goes wrong, an older one stays whole
// and nothing is left beside it; or a pipe or device, written as it comes. Everything here fails
// when a byte could not be written.
class Output {
public:
    // file: "-" for standard output. input: what the command reads, which must not be the same
    // file; "" for nothing.
    explicit Output(const std::string &file = "-", const std::string &input = "");
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;
    ~Output();

    const std::string &name() const { return mName; }
    bool isStandard() const { return mpFile == stdout; }
    bool isTerminal() const;

    // As write, for callers that must not throw; errno tells why it answers false.
    bool tryWrite(const void *pData, size_t nBytes);
    void write(const std::string &text);
    void print(const char *szFormat, ...) TOOLS_PRINTF_LIKE;
    void flush();

    // Puts the file in its place. Without it, what was written is thrown away, as far as it has not
    // gone.
    void finish();

private:
    void open(const std::string &file);
    void putInPlace();

    std::string mName;  // for messages
    std::FILE *mpFile = nullptr;
    std::string mTarget;     // the file to replace, links followed
    std::string mTemporary;  // the file beside it, "" when the output is written as it comes
};

}  // namespace tool

#endif
