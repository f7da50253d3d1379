// The switch to individual positions and the release of empty blocks, asked for by the caller.
#include "names/storage/blocks.hpp"
#include "names/storage/positions.hpp"

using namespace names;

int32_t NamesManager_StoreIndividualNamePositions(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return storeIndividualPositions(mgr) ? 0 : 1;
}

int32_t NamesManager_ReleaseEmptyBlocks(NamesManager *mgr) {
    ScopedLock lock(mgr);
    releaseEmptyBlocks(mgr);
    return 0;
}
