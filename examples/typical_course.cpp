// The course of one names manager in C++: names are stored, read, looked up, replaced, removed,
// saved and loaded again.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "host/host_stream.h"
#include "names/names_manager.hpp"

namespace {

using names_manager::Manager;
using names_manager::Status;

struct StreamRelease {
    void operator()(HostOutputStream *pStream) const { HostOutputStream_Close(pStream, 0); }
    void operator()(HostInputStream *pStream) const { HostInputStream_Close(pStream); }
};

void printNames(const Manager &manager, const char *szTitle) {
    std::printf("%s:", szTitle);
    for (const std::string_view name : manager.names()) {
        std::printf(" %.*s", static_cast<int>(name.size()), name.data());
    }
    std::printf(" (the longest has %d bytes)\n", manager.maxNameLength());
}

// A manager with the same names, by way of an image in memory; false when that failed.
Manager saveAndLoad(const Manager &manager) {
    Manager loaded;
    const std::unique_ptr<HostOutputStream, StreamRelease> output(
        HostOutputStream_CreateInMemory());
    if (!loaded || !output || !manager.save(output.get()).ok()) { return Manager::adopt(nullptr); }
    uint64_t nBytes = 0;
    const void *pImage = HostOutputStream_GetMemory(output.get(), &nBytes);
    const std::unique_ptr<HostInputStream, StreamRelease> input(
        HostInputStream_CreateInMemory(pImage, nBytes));
    if (!input || !loaded.load(input.get()).ok()) { return Manager::adopt(nullptr); }
    return loaded;
}

bool run() {
    Manager manager;
    if (!manager) { return false; }
    if (manager.add(0, {"one", "two", "three", "four", "five"}) != Status::ok) { return false; }
    printNames(manager, "stored");
    std::printf("\"three\" has index %d\n", manager.find("three"));
    if (manager.add(2, std::string_view("third-name")) != Status::ok) { return false; }
    printNames(manager, "replaced");
    if (manager.remove(0, 1) != Status::ok) { return false; }
    printNames(manager, "removed the first two");
    Manager loaded = saveAndLoad(std::exchange(manager, Manager::adopt(nullptr)));
    if (!loaded) { return false; }
    printNames(loaded, "loaded");
    std::printf("the name at index 4, never given, is %s\n", loaded.name(4).data());
    return loaded.find(std::string_view("third-named", 10)) == 0;
}

}  // namespace

int main() {
    if (run()) { return EXIT_SUCCESS; }
    std::fprintf(stderr, "typical_course: out of memory\n");
    return EXIT_FAILURE;
}
