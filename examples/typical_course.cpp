// The course of one names manager in C++: names are stored, read, looked up, replaced, removed, saved and loaded again.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <vector>

#include "host/host_stream.h"
#include "names/names_manager.h"

namespace {

// Owners of what the C interface makes.
struct Releaser {
    void operator()(NamesManager *mgr) const { NamesManager_Destroy(mgr); }
    void operator()(HostOutputStream *stream) const { HostOutputStream_Close(stream, 0); }
    void operator()(HostInputStream *stream) const { HostInputStream_Close(stream); }
};
template <typename T>
using Owned = std::unique_ptr<T, Releaser>;

template <typename T>
Owned<T> owned(T *object) {
    return object ? Owned<T>(object) : throw std::runtime_error("out of memory");
}

void check(int32_t status, const char *what) {
    if (status != 0) throw std::runtime_error(what);
}

void printNames(NamesManager *mgr, const char *title) {
    std::vector<const char *> names(static_cast<size_t>(NamesManager_GetNumNames(mgr)));
    check(NamesManager_GetNamePointers(mgr, 0, static_cast<int32_t>(names.size()) - 1, 0, names.data()), "the names cannot be read");
    std::printf("%s:", title);
    for (const char *name : names)
        std::printf(" %s", name);
    std::printf(" (the longest has %d bytes)\n", NamesManager_GetMaxNameLength(mgr));
}

void run() {
    const auto mgr = owned(NamesManager_Create(nullptr, nullptr));
    const char *const names[] = {"one", "two", "three", "four", "five"};
    check(NamesManager_AddNames(mgr.get(), 1, 5, 1, names), "the names cannot be stored");
    printNames(mgr.get(), "stored");
    std::printf("\"three\" has index %d\n", NamesManager_FindName(mgr.get(), "three", 0));
    check(NamesManager_AddName(mgr.get(), 2, 0, "third-name"), "a name cannot be replaced");
    printNames(mgr.get(), "replaced");
    check(NamesManager_RemoveNames(mgr.get(), 0, 1, 0), "the names cannot be removed");
    printNames(mgr.get(), "removed the first two");

    const auto output = owned(HostOutputStream_CreateInMemory());
    check(NamesManager_Save(mgr.get(), nullptr, output.get()), "the manager cannot be saved");
    uint64_t nBytes = 0;
    const void *image = HostOutputStream_GetMemory(output.get(), &nBytes);
    const auto input = owned(HostInputStream_CreateInMemory(image, nBytes));
    const auto loaded = owned(NamesManager_Create(nullptr, nullptr));
    check(NamesManager_Load(loaded.get(), nullptr, input.get()), "the image cannot be loaded");
    printNames(loaded.get(), "loaded");
    std::printf("the name at index 4, never given, is %s\n", NamesManager_GetName(loaded.get(), 4, 0));
}

}  // namespace

int main() {
    try {
        run();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "typical_course: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
