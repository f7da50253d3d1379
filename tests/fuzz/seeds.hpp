// The inputs that fuzzing starts from.
#pragma once

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

// Where NAMES_FUZZ_SEEDS names a folder, writes the seeds there, a file for each, and ends the
// process.
inline void writeSeeds(const std::vector<std::string> &seeds) {
    const char *szFolder = std::getenv("NAMES_FUZZ_SEEDS");
    if (szFolder == nullptr) { return; }
    for (size_t i = 0; i < seeds.size(); ++i) {
        std::ofstream(szFolder + ("/seed" + std::to_string(i)), std::ios::binary) << seeds[i];
    }
    std::exit(0);
}
