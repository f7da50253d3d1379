#include "tools/tool.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

namespace tool {

void fail(const std::string &file, const std::string &what) {
    throw Failure{file + ": " + what};
}

std::string systemError() {
    return std::generic_category().message(errno);
}

std::string quoted(const char *text) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string result = "\"";
    for (; *text; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        if (byte < 0x20 || byte == 0x7f) {
            result += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            if (byte == '"' || byte == '\\') result += '\\';
            result += *text;
        }
    }
    return result + '"';
}

ManagerHandle makeManager() {
    ManagerHandle mgr(NamesManager_Create(nullptr, nullptr));
    if (!mgr) throw std::bad_alloc();
    return mgr;
}

OutputFile::OutputFile(const std::string &file, const std::string &image) : name(file == "-" ? "standard output" : file), pFile(stdout) {
    if (file == "-") return;
    std::error_code error;
    if (std::filesystem::equivalent(file, image, error)) fail(file, "is the image itself");
    pFile = std::fopen(file.c_str(), "we");
    if (!pFile) fail(file, "cannot open: " + systemError());
}

OutputFile::~OutputFile() {
    if (pFile && pFile != stdout) std::fclose(pFile);
}

void OutputFile::finish() {
    errno = 0;
    bool bWritten = std::fflush(pFile) == 0 && !std::ferror(pFile);
    if (pFile != stdout) bWritten = std::fclose(std::exchange(pFile, nullptr)) == 0 && bWritten;
    if (!bWritten) fail(name, "cannot write: " + systemError());
}

void visitNames(NamesManager *mgr, const NamesVisitor &visit) {
    std::array<const char *, 4096> names;
    const int32_t nNames = NamesManager_GetNumNames(mgr);
    for (int32_t first = 0; first < nNames;) {
        const int32_t count = std::min(nNames - first, static_cast<int32_t>(names.size()));
        if (NamesManager_GetNamePointers(mgr, first, first + count - 1, 0, names.data()) != 0) throw std::bad_alloc();
        visit(first, count, names.data());
        first += count;
    }
}

}  // namespace tool
