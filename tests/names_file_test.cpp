// Managers in files by their paths, also where the system or the memory refuses.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <thread>

#ifdef __linux__
#include <cstdarg>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include "files/names_file.h"
#include "tests/loaded_manager.hpp"
#include "tests/starve.hpp"

namespace {

namespace fs = std::filesystem;
using loaded::namesOf;
using loaded::Strings;

NamesManager *managerOf(const Strings &names) {
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
    for (const std::string &name : names) {
        EXPECT_EQ(0, NamesManager_AddName(mgr, mgr->nNames, 0, name.c_str()));
    }
    return mgr;
}

void writeTo(const std::string &path, const std::string &content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string contentOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// A folder of one's own; what lies in it beside the files that belong there is left over.
struct NamesFile : testing::Test {
    NamesFile() {
        fs::remove_all(folder);
        fs::create_directory(folder);
    }
    ~NamesFile() override {
        NamesManager_Destroy(mgr);
        fs::remove_all(folder);
    }
    void expectFiles(std::ptrdiff_t nFiles) {
        EXPECT_EQ(nFiles, std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    const std::string folder = "names_file_test.folder", path = folder + "/file";
    const Strings names = {"one", "line\r\nbreak", "\x1a"};
    NamesManager *mgr = managerOf(names);
    const std::string image = loaded::save(mgr), older = std::string(100000, 'x');
};

TEST_F(NamesFile, IsWrittenWholeAndReadBack) {
    const std::string missing = path + "/missing";
    const Strings few = {"few"};
    NamesManager *other = managerOf(few);
    writeTo(path, older);
    EXPECT_EQ(0, NamesManager_SaveToFile(mgr, path.c_str()));
    EXPECT_EQ(image, contentOf(path));
    for (const auto pfnOperation : {NamesManager_SaveToFile, NamesManager_LoadFromFile}) {
        errno = 0;
        EXPECT_EQ(HostStreamError_IO, pfnOperation(other, missing.c_str()));
        EXPECT_TRUE(errno == ENOTDIR || errno == ENOENT);
    }
    EXPECT_EQ(HostStreamError_IO, NamesManager_SaveToFile(mgr, folder.c_str()));
    EXPECT_EQ(few, namesOf(other));
    EXPECT_EQ(0, NamesManager_LoadFromFile(other, path.c_str()));
    EXPECT_EQ(names, namesOf(other));

    for (const auto &[content, nExpected] :
         {std::pair(image + "after it", 0),
          {image.substr(0, image.size() - 1), int{HostStreamError_End}},
          {"\x10" + image.substr(1), int{NamesManagerStatus_Refused}}}) {
        writeTo(path, content);
        EXPECT_EQ(nExpected, NamesManager_LoadFromFile(other, path.c_str()));
        EXPECT_EQ(nExpected == 0 ? names : Strings(), namesOf(other));
    }
    expectFiles(1);
    NamesManager_Destroy(other);
}

TEST_F(NamesFile, SurvivesLackOfMemory) {
    starve([this] {
        writeTo(path, older);
        const bool bSaved = NamesManager_SaveToFile(mgr, path.c_str()) == 0;
        EXPECT_TRUE(bSaved || errno == ENOMEM);
        EXPECT_EQ(bSaved, contentOf(path) != older);
        expectFiles(1);
    });
    HostMem_FailAt(1, 0);
    EXPECT_EQ(HostStreamError_IO, NamesManager_LoadFromFile(mgr, path.c_str()));
    EXPECT_EQ(ENOMEM, errno);
    EXPECT_EQ(names, namesOf(mgr));
}

#ifdef __linux__
bool g_bFaulty = false;  // a system call is to fail
int g_nWritten = -1;     // what a write returns then
int g_nCallsBefore = 0;  // that it
std::string g_failed;    // its name, once it has failed

template <typename... Arguments>
int callSystem(const char *szName, long nNumber, Arguments... arguments) {
    const bool bFails = g_bFaulty && g_nCallsBefore-- == 0;
    if (!bFails || nNumber == SYS_close) {
        const int nDone = static_cast<int>(syscall(nNumber, arguments...));
        if (!bFails) { return nDone; }
    }
    g_failed = szName;
    const int nResult = nNumber == SYS_write ? g_nWritten : -1;
    errno = nResult < 0 ? EIO : 0;
    return nResult;
}

}  // namespace

// The system calls of a save, which take the place of the C library's.
extern "C" {
int access(const char *szPath, int nMode) noexcept {
    return callSystem("access", SYS_faccessat, AT_FDCWD, szPath, nMode);
}
int open(const char *szPath, int nFlags, ...) {
    va_list arguments;
    va_start(arguments, nFlags);
    const mode_t nMode = (nFlags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return callSystem("open", SYS_openat, AT_FDCWD, szPath, nFlags, nMode);
}
int fchown(int nFile, uid_t nUser, gid_t nGroup) noexcept {
    return callSystem("fchown", SYS_fchown, nFile, nUser, nGroup);
}
int fchmod(int nFile, mode_t nMode) noexcept {
    return callSystem("fchmod", SYS_fchmod, nFile, nMode);
}
ssize_t write(int nFile, const void *pBytes, size_t nBytes) {
    return callSystem("write", SYS_write, nFile, pBytes, nBytes);
}
int fsync(int nFile) {
    return callSystem("fsync", SYS_fsync, nFile);
}
int close(int nFile) {
    return callSystem("close", SYS_close, nFile);
}
int rename(const char *szFrom, const char *szTo) noexcept {
    return callSystem("rename", SYS_renameat2, AT_FDCWD, szFrom, AT_FDCWD, szTo, 0);
}
}

namespace {

TEST_F(NamesFile, ReplacesTheOlderOneWholeOrNotAtAll) {
    const std::string link = folder + "/link";
    fs::create_symlink("file", link);
    for (const int nWritten : {-1, 0}) {
        std::string outcomes;
        for (int nCalls = 0; g_failed = "", nCalls < 20; ++nCalls) {
            writeTo(path, older);
            fs::permissions(path, fs::perms(0640));
            g_nWritten = nWritten;
            g_nCallsBefore = nCalls;
            g_bFaulty = true;
            const int32_t nStatus = NamesManager_SaveToFile(mgr, link.c_str());
            g_bFaulty = false;
            EXPECT_TRUE(nStatus == 0 || errno == EIO);
            const std::string content = contentOf(path);
            outcomes += g_failed + (nStatus == 0 ? ", done: " : ", failed: ") +
                        (content == image   ? "new\n"
                         : content == older ? "older\n"
                                            : "neither\n");
            EXPECT_EQ(fs::perms(0640), fs::status(path).permissions());
            EXPECT_TRUE(fs::is_symlink(link));
            expectFiles(2);
            if (g_failed.empty()) { break; }
        }
        EXPECT_EQ("access, failed: older\nopen, failed: older\nfchown, done: new\n"
                  "fchmod, failed: older\nwrite, failed: older\nfsync, failed: older\n"
                  "close, failed: older\nrename, failed: older\nopen, done: new\n"
                  "fsync, failed: new\nclose, done: new\n, done: new\n",
                  outcomes);
    }
}

TEST_F(NamesFile, FollowsLinksAndWritesToWhatHasNoName) {
    const std::string link = folder + "/link", hard = folder + "/hard", pipe = folder + "/pipe";
    fs::create_directory(folder + "/sub");
    fs::create_symlink("sub/link", link);
    fs::create_symlink("../file", folder + "/sub/link");
    const mode_t nBefore = umask(027);
    EXPECT_EQ(0, NamesManager_SaveToFile(mgr, link.c_str()));  // to a file that is not there yet
    umask(nBefore);
    EXPECT_EQ(fs::perms(0640), fs::status(path).permissions());
    EXPECT_EQ(image, contentOf(link));
    fs::create_hard_link(path, hard);
    EXPECT_EQ(0, NamesManager_SaveToFile(nullptr, link.c_str()));
    EXPECT_EQ(image, contentOf(hard));
    EXPECT_NE(image, contentOf(path));

    const int nUnnamed = open(hard.c_str(), O_RDWR);
    fs::remove(hard);
    EXPECT_EQ(
        0, NamesManager_SaveToFile(nullptr, ("/proc/self/fd/" + std::to_string(nUnnamed)).c_str()));
    EXPECT_EQ(static_cast<off_t>(sizeof(int32_t)), lseek(nUnnamed, 0, SEEK_END));
    close(nUnnamed);

    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const int nReader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(0, NamesManager_SaveToFile(mgr, pipe.c_str()));
    std::string piped(image.size() + 1, '\0');
    EXPECT_EQ(std::ssize(image), read(nReader, piped.data(), piped.size()));
    EXPECT_EQ(image + '\0', piped);
    close(nReader);
    expectFiles(4);
}

TEST_F(NamesFile, IsWholeWhenTwoSaveAtOnce) {
    const auto saveOften = [this](NamesManager *saved) {
        for (int i = 0; i < 50; ++i) { EXPECT_EQ(0, NamesManager_SaveToFile(saved, path.c_str())); }
    };
    writeTo(path, image);
    std::thread one(saveOften, mgr), other(saveOften, nullptr);
    for (int i = 0; i < 200; ++i) {
        const size_t nBytes = contentOf(path).size();
        EXPECT_TRUE(nBytes == image.size() || nBytes == sizeof(int32_t));
    }
    one.join();
    other.join();
    expectFiles(1);
}
#endif

}  // namespace
