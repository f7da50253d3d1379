// Images in files: read whole, written beside their place and renamed into it.
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

// A file beside the one that it is to replace, removed again unless it gets there.
struct TemporaryFile {
    std::string path;
    int descriptor = -1;

    explicit TemporaryFile(const std::filesystem::path &target) : path((target.parent_path() / ".names_tool-XXXXXX").string()) {
        descriptor = mkostemp(path.data(), O_CLOEXEC);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile() {
        if (descriptor >= 0) unlink(path.c_str());
    }
};

// The mode that the image gets: the older image's, or what a newly created file would have.
mode_t imageMode(const std::string &image, const std::string &target) {
    struct stat status {};
    if (stat(target.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) fail(image, "not a regular file");
        return status.st_mode & 07777;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// Writes the image to the descriptor, which it closes. Fails when a byte did not reach the device.
void writeImage(NamesManager *mgr, int descriptor, const std::string &image) {
    HostOutputStream *pStream = HostOutputStream_CreateForDescriptor(descriptor);
    if (!pStream) {
        close(descriptor);
        throw std::bad_alloc();
    }
    const int32_t nSaved = NamesManager_Save(mgr, nullptr, pStream);
    const int32_t nClosed = HostOutputStream_Close(pStream, 1);
    if (nSaved != 0 || nClosed != 0) fail(image, "cannot write: " + systemError());
}

}  // namespace

std::string loadProblem(NamesManager *mgr, const std::string &image) {
    HostInputStream *pStream = HostInputStream_CreateForFile(image.c_str());
    if (!pStream) fail(image, "cannot open: " + systemError());
    const int32_t nCode = NamesManager_Load(mgr, nullptr, pStream);
    const std::string reason = systemError();
    char cBeyond = 0;
    const bool bGoesOn = nCode == 0 && HostStream_Read(pStream, &cBeyond, 1) == 0;
    HostInputStream_Close(pStream);
    if (nCode == HostStreamError_IO) fail(image, "cannot read: " + reason);
    if (nCode == HostStreamError_End) return "not an image of names: it ends too early";
    if (nCode != 0) return "not a sound image of names, or too large for the memory";
    return bGoesOn ? "not an image of names alone: more bytes follow" : "";
}

ManagerHandle loadImage(const std::string &image) {
    const Progress progress("loading");
    ManagerHandle mgr = makeManager();
    const std::string problem = loadProblem(mgr.get(), image);
    if (!problem.empty()) fail(image, problem);
    return mgr;
}

void saveImage(NamesManager *mgr, const std::string &image) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::weakly_canonical(image, error);
    if (error) fail(image, "cannot write: " + error.message());
    const mode_t mode = imageMode(image, target.string());
    const TemporaryFile temporary(target);
    if (temporary.descriptor < 0) fail(image, "cannot write beside it: " + systemError());
    if (fchmod(temporary.descriptor, mode) != 0) fail(image, "cannot set its mode: " + systemError());
    writeImage(mgr, temporary.descriptor, image);
    if (rename(temporary.path.c_str(), target.c_str()) != 0) fail(image, "cannot replace it: " + systemError());
}

}  // namespace tool
