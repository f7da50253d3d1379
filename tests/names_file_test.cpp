// Managers in files by their paths, also where the system or the memory refuses.
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>

#include "files/names_file.h"
#include "tests/counted_host/counted_memory.h"
#include "tests/loaded_manager.hpp"

namespace {

using loaded::namesOf;
using loaded::Strings;

NamesManager *managerOf(const Strings &names) {
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
    for (const std::string &name : names) {
        EXPECT_EQ(0, NamesManager_AddName(mgr, mgr->nNames, 0, name.c_str()));
    }
    return mgr;
}

TEST(NamesFile, IsWrittenWholeAndReadBack) {
    const std::string path = testing::TempDir() + "names_file_test", missing = path + "/missing";
    const Strings names = {"one", "line\r\nbreak", "\x1a"}, few = {"few"};
    NamesManager *saved = managerOf(names), *other = managerOf(few);
    std::ofstream(path) << std::string(100000, 'x');  // longer, and emptied first
    EXPECT_EQ(0, NamesManager_SaveToFile(saved, path.c_str()));
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(loaded::save(saved), std::string(std::istreambuf_iterator<char>(file), {}));

    EXPECT_EQ(HostStreamError_IO, NamesManager_SaveToFile(saved, missing.c_str()));
    EXPECT_TRUE(errno == ENOTDIR || errno == ENOENT);
    errno = 0;
    EXPECT_EQ(HostStreamError_IO, NamesManager_LoadFromFile(other, missing.c_str()));
    EXPECT_TRUE(errno == ENOTDIR || errno == ENOENT);
    EXPECT_EQ(few, namesOf(other));
    EXPECT_EQ(0, NamesManager_LoadFromFile(other, path.c_str()));
    EXPECT_EQ(names, namesOf(other));

    const std::string image = loaded::save(saved);
    for (const auto &[content, nExpected] :
         {std::pair(image + "behind it", 0),
          {image.substr(0, image.size() - 1), int{HostStreamError_End}},
          {"\x10" + image.substr(1), int{NamesManagerStatus_Refused}}}) {
        std::ofstream(path, std::ios::binary) << content;
        EXPECT_EQ(nExpected, NamesManager_LoadFromFile(other, path.c_str()));
        EXPECT_EQ(nExpected == 0 ? names : Strings(), namesOf(other));
    }
    std::remove(path.c_str());
    NamesManager_Destroy(saved);
    NamesManager_Destroy(other);
}

TEST(NamesFile, TellsWhatWasMissing) {
    const std::string path = testing::TempDir() + "names_file_test";
    NamesManager *mgr = managerOf({"name"});
    for (const auto pfnOperation : {NamesManager_SaveToFile, NamesManager_LoadFromFile}) {
        EXPECT_EQ(0, NamesManager_SaveToFile(mgr, path.c_str()));
        HostMem_FailAt(1, 1);
        EXPECT_EQ(HostStreamError_IO, pfnOperation(mgr, path.c_str()));
        EXPECT_EQ(ENOMEM, errno);
        HostMem_FailAt(0, 0);
        EXPECT_EQ(Strings{"name"}, namesOf(mgr));
    }
#ifdef __linux__
    EXPECT_EQ(HostStreamError_IO, NamesManager_SaveToFile(mgr, "/dev/full"));
    EXPECT_EQ(ENOSPC, errno);
#endif
    std::remove(path.c_str());
    NamesManager_Destroy(mgr);
}

}  // namespace
