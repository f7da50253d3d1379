#include "tools/tool.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <system_error>

namespace tool {

void fail(const std::string &file, const std::string &what) {
    throw Failure{file + ": " + what};
}

std::string systemError() {
    return errno == 0 ? "the system does not say why" : std::generic_category().message(errno);
}

std::string inputName(const std::string &file) {
    return file == "-" ? "standard input" : file;
}

std::string counted(int64_t number, const std::string &noun) {
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

bool startsWithMark(std::string_view text) {
    return text.substr(0, kByteOrderMark.size()) == kByteOrderMark;
}

std::string quoted(const char *text) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string result = "\"";
    for (; *text; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        if (byte < 0x20 || byte == 0x7f) {
            result += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            if (byte == '"' || byte == '\\') { result += '\\'; }
            result += *text;
        }
    }
    return result + '"';
}

ManagerHandle makeManager() {
    ManagerHandle mgr(NamesManager_Create(nullptr, nullptr));
    if (!mgr) { throw std::bad_alloc(); }
    return mgr;
}

void visitNames(NamesManager *mgr, const NamesVisitor &visit) {
    std::array<const char *, 4096> names;
    const int32_t nNames = NamesManager_GetNumNames(mgr);
    for (int32_t first = 0; first < nNames;) {
        const int32_t count = std::min(nNames - first, static_cast<int32_t>(names.size()));
        if (NamesManager_GetNamePointers(mgr, first, first + count - 1, 0, names.data()) != 0) {
            throw std::bad_alloc();
        }
        if (!visit(first, count, names.data())) { return; }
        first += count;
    }
}

}  // namespace tool
