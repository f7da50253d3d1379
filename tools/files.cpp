#include "tools/files.hpp"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

#include "tools/platform.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

namespace fs = std::filesystem;

// Standard streams may be files as well, known by these names where the system has them.
bool isSameFile(const std::string &file, const std::string &other, const char *szStandard) {
    std::error_code error;
    return fs::equivalent(file, other == "-" ? szStandard : other, error);
}

bool isStandardOutput(const std::string &file) {
    constexpr char kStandardOutput[] = "/dev/stdout";
    return file == "-" || file == kStandardOutput || isSameFile(file, "-", kStandardOutput);
}

// Names that nobody can foresee and that do not meet.
std::string temporaryName() {
    std::random_device random;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), ".names_tool-%08x%08x", random(), random());
    return text.data();
}

}  // namespace

Input::Input(const std::string &file) : mName(inputName(file)), mDescriptor(openInput(file)) {
    if (mDescriptor < 0) { fail(mName, "cannot open: " + systemError()); }
}

Input::~Input() {
    closeInput(mDescriptor);
}

size_t Input::read(char *pBuffer, size_t nBytes) {
    const std::ptrdiff_t nRead = readInput(mDescriptor, pBuffer, nBytes);
    if (nRead < 0) { fail(mName, "cannot read: " + systemError()); }
    return static_cast<size_t>(nRead);
}

Output::Output(const std::string &file, const std::string &input) : mName(file) {
    if (isStandardOutput(file)) {
        mName = "standard output";
        mpFile = stdout;
        return;
    }
    if (isSameFile(file, input, "/dev/stdin")) { fail(file, "cannot be read and written at once"); }
    open(file);
}

void Output::open(const std::string &file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        mpFile = std::fopen(file.c_str(), "wb");
        if (!mpFile) { fail(file, "cannot open: " + systemError()); }
        return;
    }
    const fs::path target = fs::weakly_canonical(file, error);
    if (error) { fail(file, "cannot write: " + error.message()); }
    mTarget = target.string();
    mTemporary = (target.parent_path() / temporaryName()).string();
    mpFile = createTemporary(mTemporary, mTarget);
    if (!mpFile) { fail(file, "cannot create a file beside it: " + systemError()); }
}

Output::~Output() {
    if (mpFile && mpFile != stdout) { std::fclose(mpFile); }
    if (!mTemporary.empty()) { removeTemporary(mTemporary); }
}

bool Output::isTerminal() const {
    return tool::isTerminal(mpFile);
}

bool Output::tryWrite(const void *pData, size_t nBytes) {
    return std::fwrite(pData, 1, nBytes, mpFile) == nBytes;
}

void Output::write(const std::string &text) {
    if (!tryWrite(text.data(), text.size())) { fail(mName, "cannot write: " + systemError()); }
}

void Output::print(const char *szFormat, ...) {
    va_list arguments;
    va_start(arguments, szFormat);
    const int nPrinted = std::vfprintf(mpFile, szFormat, arguments);
    va_end(arguments);
    if (nPrinted < 0) { fail(mName, "cannot write: " + systemError()); }
}

void Output::flush() {
    errno = 0;
    if (std::fflush(mpFile) != 0 || std::ferror(mpFile)) {
        fail(mName, "cannot write: " + systemError());
    }
}

void Output::finish() {
    flush();
    if (mpFile == stdout) { return; }
    const bool bReplaces = !mTemporary.empty();
    const bool bSynced = !bReplaces || syncFile(mpFile);
    const std::string reason = systemError();
    if (std::fclose(std::exchange(mpFile, nullptr)) != 0) {
        fail(mName, "cannot write: " + systemError());
    }
    if (!bSynced) { fail(mName, "cannot write: " + reason); }
    if (bReplaces) { putInPlace(); }
}

void Output::putInPlace() {
    std::error_code error;
    fs::rename(mTemporary, mTarget, error);
    if (error) { fail(mName, "cannot replace it: " + error.message()); }
    keepTemporary();
    mTemporary.clear();
    if (!syncFolderOf(mTarget)) {
        fail(mName, "is replaced, but its folder cannot be synced: " + systemError());
    }
}

}  // namespace tool
