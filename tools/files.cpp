#include "tools/files.hpp"

#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "tools/platform.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

namespace fs = std::filesystem;

// Standard streams may be files, too; where the system has them, these are their names.
bool isSameFile(const std::string &file, const std::string &other, const char *szStandard) {
    std::error_code error;
    return fs::equivalent(file, other == "-" ? szStandard : other, error);
}

bool isStandardOutput(const std::string &file) {
    constexpr char kStandardOutput[] = "/dev/stdout";
    return file == "-" || file == kStandardOutput || isSameFile(file, "-", kStandardOutput);
}

}  // namespace

Input::Input(const std::string &file)
    : name_(inputName(file)),
      descriptor_(file == "-" ? STDIN_FILENO : host::openForReading(file.c_str())) {
    if (descriptor_ < 0) { fail(name_, "cannot open: " + systemError()); }
}

Input::~Input() {
    if (descriptor_ != STDIN_FILENO) { host::closeFile(descriptor_); }
}

size_t Input::read(char *pBuffer, size_t nBytes) {
    const int64_t nRead = host::readSome(descriptor_, pBuffer, nBytes);
    if (nRead < 0) { fail(name_, "cannot read: " + systemError()); }
    return static_cast<size_t>(nRead);
}

Output::Output(const std::string &file, const std::string &input) : name_(file) {
    if (isStandardOutput(file)) {
        name_ = "standard output";
        pFile_ = stdout;
        return;
    }
    if (isSameFile(file, input, "/dev/stdin")) { fail(file, "cannot be read and written at once"); }
    open(file);
}

void Output::open(const std::string &file) {
    if (!host::planReplacement(file.c_str(), &replaced_)) {
        fail(file, "cannot write: " + systemError());
    }
    bBeside_ = replaced_.szTemporary[0] != '\0';
    // Before there is a file beside it, so that no signal comes in between.
    if (bBeside_) { removeAtSignals(replaced_.szTemporary, -1); }
    const int descriptor = host::openReplacement(&replaced_);
    if (bBeside_ && descriptor >= 0) { removeAtSignals(replaced_.szTemporary, descriptor); }
    pFile_ = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
    if (pFile_) { return; }
    if (descriptor >= 0) {
        host::closeQuietly(descriptor);
        host::dropReplacement(&replaced_);
    }
    removeNothingAtSignals();
    fail(file, (bBeside_ ? "cannot create a file beside it: " : "cannot open: ") + systemError());
}

Output::~Output() {
    if (pFile_ && !isStandard()) { std::fclose(pFile_); }
    if (bBeside_) {
        host::dropReplacement(&replaced_);
        removeNothingAtSignals();
    }
}

bool Output::isTerminal() const {
    return tool::isTerminal(pFile_);
}

bool Output::tryWrite(const void *pData, size_t nBytes) {
    return std::fwrite(pData, 1, nBytes, pFile_) == nBytes;
}

void Output::write(const std::string &text) {
    if (!tryWrite(text.data(), text.size())) { fail(name_, "cannot write: " + systemError()); }
}

void Output::print(const char *szFormat, ...) {
    va_list arguments;
    va_start(arguments, szFormat);
    const int nPrinted = std::vfprintf(pFile_, szFormat, arguments);
    va_end(arguments);
    if (nPrinted < 0) { fail(name_, "cannot write: " + systemError()); }
}

void Output::flush() {
    errno = 0;
    if (std::fflush(pFile_) != 0 || std::ferror(pFile_)) {
        fail(name_, "cannot write: " + systemError());
    }
}

void Output::finish() {
    flush();
    if (isStandard()) { return; }
    const int nError = bBeside_ ? host::syncFile(fileno(pFile_)) : 0;
    const bool bClosed = std::fclose(std::exchange(pFile_, nullptr)) == 0;
    if (nError != 0) { errno = nError; }
    if (nError != 0 || !bClosed) { fail(name_, "cannot write: " + systemError()); }
    if (bBeside_) { putInPlace(); }
}

void Output::putInPlace() {
    if (!host::finishReplacement(&replaced_)) {
        fail(name_, "cannot replace it: " + systemError());
    }
    removeNothingAtSignals();
    if (!host::syncFolderOf(replaced_)) {
        fail(name_, "is replaced, but its folder cannot be synced: " + systemError());
    }
}

}  // namespace tool
