// Two threads on one manager: first each adds names that the other may add as well, checking and
// adding under one hold of the lock; then both read at once, each with a reader of its own, without
// any lock.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "names/names_manager.hpp"

namespace {

using names_manager::Manager;
using names_manager::Reader;
using names_manager::Status;

constexpr int kNames = 1000;

// Adds the names that are not held yet. Between find and push_back nobody else gets in.
void addMissing(Manager &manager) {
    for (int i = 0; i < kNames; ++i) {
        const std::string name = "name " + std::to_string(i);
        const std::scoped_lock hold(manager);
        if (manager.find(name.c_str()) < 0 && manager.push_back(name.c_str()) != Status::ok) {
            std::fprintf(stderr, "two_threads: out of memory\n");
            return;
        }
    }
}

// Looks up every name that it reads.
void readAll(Reader reader, int *pnFound) {
    for (int i = 0; i < reader.size(); ++i) {
        *pnFound += reader.find(reader.name(i).data()) == i ? 1 : 0;
    }
}

}  // namespace

int main() {
    Manager manager;
    if (!manager) { return EXIT_FAILURE; }
    std::thread other(addMissing, std::ref(manager));
    addMissing(manager);
    other.join();
    std::printf("%d names, none of them twice\n", manager.size());

    Status opened = Status::ok;
    const Reader reader = manager.reader(true, &opened);
    if (opened != Status::ok) { return EXIT_FAILURE; }
    int aFound[2] = {0, 0};
    std::thread second(readAll, reader, &aFound[1]);
    readAll(reader, &aFound[0]);
    second.join();
    std::printf("found by the two readers: %d and %d\n", aFound[0], aFound[1]);
    return aFound[0] == kNames && aFound[1] == kNames ? EXIT_SUCCESS : EXIT_FAILURE;
}
