#include "tools/tool.hpp"

#include <algorithm>
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

void buildIndex(NamesManager *mgr) {
    NamesManager_FindNameList(mgr, nullptr, 0, 0, nullptr);
    if (mgr->nNames > 0 && !mgr->pLookupIndex) { throw std::bad_alloc(); }
}

int32_t readNames(NamesManager *mgr, int32_t first, NamePointers *pNames) {
    const int32_t nMore = std::max(NamesManager_GetNumNames(mgr) - first, 0);
    const int32_t count = std::min(nMore, static_cast<int32_t>(pNames->size()));
    if (count == 0) { return 0; }  // to read from beyond the end would generate names
    if (NamesManager_GetNamePointers(mgr, first, first + count - 1, 0, pNames->data()) != 0) {
        throw std::bad_alloc();
    }
    return count;
}

void visitNames(NamesManager *mgr, const NamesVisitor &visit) {
    NamePointers names;
    for (int32_t first = 0; const int32_t count = readNames(mgr, first, &names);) {
        if (!visit(first, count, names.data())) { return; }
        first += count;
    }
}

}  // namespace tool
