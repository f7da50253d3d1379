// write_images FOLDER: writes an image of each kind into the folder.
#include <initializer_list>
#include <string>

#include "files/names_file.h"

namespace {

void addNames(NamesManager *mgr, int32_t nNames, const std::string &what) {
    std::string buffer;
    for (int32_t i = 0; i < nNames; ++i) {
        buffer.append(what, 0, 1 + size_t(i) % what.size()).append(std::to_string(i)) += '\0';
    }
    const int32_t nBefore = NamesManager_GetNumNames(mgr);
    NamesManager_AddNamesFromBuffer(mgr, nBefore, nBefore + nNames - 1, 0, buffer.data());
}

// 1500 names in two blocks and several segments, some replaced and removed; a cursor, or misses.
void fill(NamesManager *mgr) {
    addNames(mgr, 300, "short");
    addNames(mgr, 1200, "rather more, \xe4\xf6\xfc\x01");
    const char *aNew[] = {"", "replaced by more than was there", " before blanks  "};
    NamesManager_AddNames(mgr, 40, 42, 0, aNew);
    NamesManager_AddName(mgr, 1499, 0, "z");
    NamesManager_RemoveNames(mgr, 700, 720, 0);
    for (const int32_t i : {5, 800, 77, 1200}) { NamesManager_GetName(mgr, i, 0); }
}

void fillAndSwitch(NamesManager *mgr) {
    fill(mgr);
    NamesManager_StoreIndividualNamePositions(mgr);
}

void fillWithCursor(NamesManager *mgr) {
    fill(mgr);
    const char *aRead[250];
    NamesManager_GetNamePointers(mgr, 1201, 1450, 0, aRead);
}

void generate(NamesManager *mgr) {
    NamesManager_SetFirstGeneratedName(mgr, "the first");
    NamesManager_AddName(mgr, 4, 0, "not generated");
    NamesManager_GenerateNames(mgr, 9);
    NamesManager_RemoveNames(mgr, 6, 7, 0);
}

const struct {
    const char *szKind, *szFormat;
    void (*pfnMake)(NamesManager *mgr);
} kKinds[] = {{"empty", nullptr, [](NamesManager *) {}},
              {"empty_switched", nullptr,
               [](NamesManager *mgr) { NamesManager_StoreIndividualNamePositions(mgr); }},
              {"segments_misses", nullptr, fill},
              {"segments_cursor", "%+05i", fillWithCursor},
              {"positions", "%-#12.4xrow", fillAndSwitch},
              {"generated", "%4d. of 100%%", generate}};

}  // namespace

int main(int, char **szArguments) {
    const std::string folder = szArguments[1] + std::string("/");
    NamesManager_SaveToFile(nullptr, (folder + "no_manager").c_str());
    for (const auto &[szKind, szFormat, pfnMake] : kKinds) {
        NamesManager *mgr = NamesManager_Create(nullptr, szFormat);
        pfnMake(mgr);
        NamesManager_SaveToFile(mgr, (folder + szKind).c_str());
        NamesManager_Destroy(mgr);
    }
}
