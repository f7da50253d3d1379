/// @file
/// files/names_file.h for the C++ face: a manager to a file and back by the file's path.
#ifndef FILES_NAMES_FILE_HPP
#define FILES_NAMES_FILE_HPP

#include "files/names_file.h"
#include "names/names_manager.hpp"

namespace names_manager {

/// See NamesManager_SaveToFile().
inline ImageStatus saveToFile(const Manager &manager, const char *szPath) noexcept {
    return ImageStatus(NamesManager_SaveToFile(manager.get(), szPath));
}

/// See NamesManager_LoadFromFile().
inline ImageStatus loadFromFile(Manager &manager, const char *szPath) noexcept {
    return ImageStatus(NamesManager_LoadFromFile(manager.get(), szPath));
}

}  // namespace names_manager

#endif
