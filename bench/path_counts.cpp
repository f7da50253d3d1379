// Single paths of the component over lists of kNames names, each in a function of its own whose
// instructions bench/count_paths.sh counts. Prints the names that each path goes through.
#include <cstdio>
#include <string>
#include <vector>

#include "names/names_reader.h"

namespace {

constexpr int32_t kNames = 20000;

struct Texts {
    std::string buffer;
    std::vector<const char *> names;
};

Texts textsWith(const std::string &start, const std::string &end) {
    Texts texts;
    std::vector<size_t> offsets;
    for (int32_t i = 0; i < kNames; ++i) {
        offsets.push_back(texts.buffer.size());
        texts.buffer.append(start).append(i % 3 == 0 ? "n" : "name_00").append(std::to_string(i));
        texts.buffer.append(end).append(1, '\0');
    }
    for (const size_t nOffset : offsets) { texts.names.push_back(&texts.buffer[nOffset]); }
    return texts;
}

const Texts kTexts = textsWith("", ""), kOthers = textsWith("other ", ""),
            kLonger = textsWith("", " longer");

// In segments, in positions, and what is made singly.
NamesManager *const kSegments = NamesManager_Create(nullptr, nullptr),
                    *const kPositions = NamesManager_Create(nullptr, nullptr),
                    *const kSingle = NamesManager_Create(nullptr, nullptr);
NamesReader g_reader;
HostOutputStream *g_pOutput;
HostInputStream *g_pInput;
std::vector<const char *> g_read(kNames);
std::vector<int32_t> g_numbers(kNames);
std::vector<char> g_fields(size_t{kNames} * 24);

int32_t scattered(int32_t i) {
    return static_cast<int32_t>(int64_t{i} * 7919 % kNames);
}

std::vector<int32_t> everySecond() {
    std::vector<int32_t> indices;
    for (int32_t i = 0; i < kNames; i += 2) { indices.push_back(i); }
    return indices;
}

}  // namespace

// A path is a function that no caller takes in and that the linker knows by name.
#define PATH(name) extern "C" __attribute__((noinline)) void path_##name()

PATH(store_buffer) {
    NamesManager_AddNamesFromBuffer(kSegments, 0, kNames - 1, 0, kTexts.buffer.data());
}
PATH(store_pointers) {
    NamesManager_AddNames(kPositions, 0, kNames - 1, 0, kTexts.names.data());
}
PATH(append_single) {
    for (int32_t i = 0; i < kNames; ++i) {
        NamesManager_AddName(kSingle, i, 0, kTexts.names[size_t(i)]);
    }
}
PATH(read_ascending) {
    for (int32_t i = 0; i < kNames; ++i) {
        g_read[size_t(i)] = NamesManager_GetName(kSegments, i, 0);
    }
}
PATH(read_ranges) {
    for (int32_t i = 0; i < kNames; i += 250) {
        NamesManager_GetNamePointers(kSegments, i, i + 249, 0, &g_read[size_t(i)]);
    }
}
PATH(switch_to_positions) {
    NamesManager_StoreIndividualNamePositions(kPositions);
}
PATH(read_random) {
    for (int32_t i = 0; i < kNames; ++i) {
        g_read[size_t(i)] = NamesManager_GetName(kPositions, scattered(i), 0);
    }
}
PATH(read_lengths) {
    NamesManager_GetNameLengths(kSegments, 0, kNames - 1, 0, g_numbers.data());
}
PATH(fields) {
    NamesManager_GetNames(kSegments, 0, kNames - 1, 0, 1, 1, 24, g_fields.data(), g_fields.size(),
                          nullptr);
}
PATH(longest) {
    NamesManager_GetMaxNameLength(kSegments);
}
PATH(build_index) {
    NamesManager_FindName(kSegments, "not held", 0);
}
PATH(find_hit) {
    for (int32_t i = 0; i < kNames; ++i) {
        g_numbers[size_t(i)] = NamesManager_FindName(kSegments, kTexts.names[size_t(i)], 0);
    }
}
PATH(find_miss) {
    for (int32_t i = 0; i < kNames; ++i) {
        g_numbers[size_t(i)] = NamesManager_FindName(kSegments, kOthers.names[size_t(i)], 0);
    }
}
PATH(find_list) {
    NamesManager_FindNameList(kSegments, kTexts.names.data(), kNames, 0, g_numbers.data());
}
PATH(reader_ascending) {
    for (int32_t i = 0; i < kNames; ++i) {
        g_read[size_t(i)] = NamesReader_GetName(&g_reader, i, 0, nullptr);
    }
}
PATH(reader_random) {
    for (int32_t i = 0; i < kNames; ++i) {
        g_read[size_t(i)] = NamesReader_GetName(&g_reader, scattered(i), 0, nullptr);
    }
}
PATH(duplicates) {
    int32_t bDuplicate = 0, iFirst = 0, iSecond = 0;
    char szName[8];
    NamesManager_CheckDuplicateNamesInBuffer(kSegments, kNames, 2 * kNames - 1, 0,
                                             kOthers.buffer.data(), &bDuplicate, &iFirst, &iSecond,
                                             szName, sizeof szName);
}
PATH(store_with_index) {
    NamesManager_AddNamesFromBuffer(kSegments, kNames, 2 * kNames - 1, 0, kOthers.buffer.data());
}
PATH(replace_same) {
    NamesManager_AddNames(kSingle, 0, kNames - 1, 0, kTexts.names.data());
}
PATH(replace_longer) {
    NamesManager_AddNames(kSingle, 0, kNames - 1, 0, kLonger.names.data());
}
PATH(replace_scattered) {
    for (int32_t i = 0; i < kNames; ++i) {
        NamesManager_AddName(kPositions, scattered(i), 0, kLonger.names[size_t(i)]);
    }
}
PATH(save) {
    NamesManager_Save(kSegments, nullptr, g_pOutput);
}
PATH(load) {
    NamesManager_Load(kSingle, nullptr, g_pInput);
}
PATH(copy) {
    NamesManager_Copy(kSingle, kPositions);
}
PATH(remove_range) {
    NamesManager_RemoveNames(kSegments, 0, kNames - 1, 0);
}
PATH(remove_list) {
    const std::vector<int32_t> indices = everySecond();
    NamesManager_RemoveNamesByIndices(kSegments, indices.data(), int32_t(indices.size()));
}
PATH(remove_list_positions) {
    const std::vector<int32_t> indices = everySecond();
    NamesManager_RemoveNamesByIndices(kPositions, indices.data(), int32_t(indices.size()));
}
PATH(generate) {
    NamesManager_GenerateNames(kPositions, kNames + kNames / 2);
}

int main() {
    path_store_buffer();
    path_store_pointers();
    path_append_single();
    path_read_ascending();
    path_read_ranges();
    path_switch_to_positions();
    path_read_random();
    path_read_lengths();
    path_fields();
    path_longest();
    path_build_index();
    path_find_hit();
    path_find_miss();
    path_find_list();
    NamesReader_Open(&g_reader, kSegments, 0);
    path_reader_ascending();
    path_reader_random();
    path_duplicates();
    path_store_with_index();
    path_replace_same();
    path_replace_longer();
    path_replace_scattered();
    g_pOutput = HostOutputStream_CreateInMemory();
    path_save();
    uint64_t nBytes = 0;
    const void *pImage = HostOutputStream_GetMemory(g_pOutput, &nBytes);
    g_pInput = HostInputStream_CreateInMemory(pImage, nBytes);
    path_load();
    path_copy();
    path_remove_range();
    path_remove_list();
    path_remove_list_positions();
    path_generate();
    std::printf("%d\n", kNames);
}
