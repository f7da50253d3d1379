// Reads images from files and pipes, and writes them.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <vector>

#include "tools/list_input.hpp"
#include "tools/progress.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr size_t kReadSize = size_t{1} << 20;

// ---- The byte order of an image ----

// The numbers that an image begins with.
struct Counts {
    int32_t nNames = 0;
    int32_t nBlocks = 0;
    int32_t nBlocksAlloc = 0;
    int32_t nSegments = 0;
    int32_t nSegmentsAlloc = 0;
    int32_t nPositionsAlloc = 0;
};

int32_t swapped(int32_t number) {
    const auto n = static_cast<uint32_t>(number);
    return static_cast<int32_t>(n << 24 | (n & 0xff00) << 8 | (n >> 8 & 0xff00) | n >> 24);
}

Counts swapped(const Counts &counts) {
    return {swapped(counts.nNames),         swapped(counts.nBlocks),
            swapped(counts.nBlocksAlloc),   swapped(counts.nSegments),
            swapped(counts.nSegmentsAlloc), swapped(counts.nPositionsAlloc)};
}

bool arePlausible(const Counts &counts) {
    return counts.nNames >= 0 && 1 <= counts.nBlocks && counts.nBlocks <= counts.nBlocksAlloc &&
           0 <= counts.nSegments && counts.nSegments <= counts.nSegmentsAlloc &&
           counts.nPositionsAlloc >= 0 &&
           (counts.nSegmentsAlloc == 0 || counts.nPositionsAlloc == 0);
}

// Whether the counts come from a machine of the other byte order: read in the wrong order, numbers
// of usual sizes are negative or huge.
bool areOfOtherOrder(const Counts &counts) {
    const Counts other = swapped(counts);
    return arePlausible(other) &&
           static_cast<uint32_t>(other.nBlocks) < static_cast<uint32_t>(counts.nBlocks);
}

// ---- Reading ----

struct StreamCloser {
    void operator()(HostInputStream *pStream) const { HostInputStream_Close(pStream); }
    void operator()(HostOutputStream *pStream) const { HostOutputStream_Close(pStream, 0); }
};
using InputStream = std::unique_ptr<HostInputStream, StreamCloser>;
using Bytes = std::unique_ptr<HostOutputStream, StreamCloser>;  // a stream in memory

// The first bytes of a file, as many as the counts of an image take; fewer if the file has no more.
std::string readBeginning(Input *pFile) {
    std::string beginning(sizeof(Counts), '\0');
    size_t nFilled = 0;
    size_t nRead = 1;
    while (nRead > 0 && nFilled < beginning.size()) {
        nRead = pFile->read(&beginning[nFilled], beginning.size() - nFilled);
        nFilled += nRead;
    }
    beginning.resize(nFilled);
    return beginning;
}

// All are 0 if the beginning is too short.
Counts countsIn(const std::string &beginning) {
    Counts counts;
    if (beginning.size() == sizeof counts) {
        std::memcpy(&counts, beginning.data(), sizeof counts);
    }
    return counts;
}

// Whether a file with this beginning may be an image, of either byte order.
bool mayBeImage(const std::string &beginning) {
    const Counts counts = countsIn(beginning);
    return arePlausible(counts) || arePlausible(swapped(counts));
}

void append(const char *pBytes, size_t nBytes, HostOutputStream *pGathered) {
    if (HostStream_Write(pGathered, pBytes, nBytes) != 0) { throw std::bad_alloc(); }
}

// Reads the rest of a pipe after its beginning into memory. What is no image may have no end, so
// that is read once only.
Bytes gather(Input *pPipe, const std::string &beginning) {
    Bytes gathered(HostOutputStream_CreateInMemory());
    if (!gathered) { throw std::bad_alloc(); }
    append(beginning.data(), beginning.size(), gathered.get());
    std::vector<char> buffer(kReadSize);
    size_t nRead = 0;
    do {
        nRead = pPipe->read(buffer.data(), buffer.size());
        append(buffer.data(), nRead, gathered.get());
    } while (nRead > 0 && mayBeImage(beginning));
    return gathered;
}

bool isFile(const std::string &image) {
    std::error_code error;
    return image != "-" && std::filesystem::is_regular_file(image, error);
}

InputStream openStream(const std::string &image, const HostOutputStream *pGathered) {
    uint64_t nBytes = 0;
    const void *pMemory = pGathered ? HostOutputStream_GetMemory(pGathered, &nBytes) : nullptr;
    InputStream stream(pGathered ? HostInputStream_CreateInMemory(pMemory, nBytes)
                                 : HostInputStream_CreateForFile(image.c_str()));
    if (!stream) { fail(inputName(image), "cannot open: " + systemError()); }
    return stream;
}

// Loads an image whose beginning has been read. Returns what is wrong with it, or "".
std::string loadAfter(const std::string &beginning, Input *pFile, const std::string &image,
                      NamesManager *mgr) {
    const Bytes gathered = isFile(image) ? nullptr : gather(pFile, beginning);
    const InputStream stream = openStream(image, gathered.get());
    errno = 0;
    const int32_t nCode = NamesManager_Load(mgr, nullptr, stream.get());
    const int nError = errno;
    if (nCode == 0) {
        char cBeyond = 0;
        const bool bEnds = HostStream_Read(stream.get(), &cBeyond, 1) != 0;
        return bEnds ? "" : "not an image of names alone: more bytes follow";
    }
    if (nCode == HostStreamError_IO) { fail(inputName(image), "cannot read: " + systemError()); }
    if (areOfOtherOrder(countsIn(beginning))) {
        return "an image from a machine of the other byte order";
    }
    if (nCode == HostStreamError_End) { return "not an image of names: it ends too early"; }
    if (nError == ENOMEM) {
        fail(inputName(image), "out of memory: it asks for more than there is");
    }
    return "not a sound image of names";
}

// ---- Writing ----

// A stream that writes to an output.
struct FileStream {
    HostOutputStream stream;  // first, as the stream's functions get its address
    Output *pOutput;
};

int32_t writeToOutput(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    return reinterpret_cast<FileStream *>(pStream)->pOutput->tryWrite(pData, nBytes)
               ? 0
               : HostStreamError_IO;
}

constexpr HostOutputStreamOps kFileOps = {writeToOutput};

}  // namespace

std::string loadProblem(NamesManager *mgr, const std::string &image) {
    Input file(image);
    return loadAfter(readBeginning(&file), &file, image, mgr);
}

ManagerHandle loadImage(const std::string &image) {
    const Progress progress("loading");
    ManagerHandle mgr = makeManager();
    const std::string problem = loadProblem(mgr.get(), image);
    if (!problem.empty()) { fail(inputName(image), problem); }
    return mgr;
}

ManagerHandle loadImageOrList(const std::string &name, bool bNull) {
    Progress progress("loading");
    ManagerHandle mgr = makeManager();
    Input file(name);
    const std::string beginning = readBeginning(&file);
    if (mayBeImage(beginning)) {
        const std::string problem = loadAfter(beginning, &file, name, mgr.get());
        if (!problem.empty()) { fail(inputName(name), problem); }
    } else {
        ListInput list(&file, bNull, false, beginning);
        storeList(mgr.get(), &list, &progress);
    }
    return mgr;
}

void saveImage(NamesManager *mgr, Output *pOutput) {
    FileStream stream = {{&kFileOps}, pOutput};
    if (NamesManager_Save(mgr, nullptr, &stream.stream) != 0) {
        fail(pOutput->name(), "cannot write: " + systemError());
    }
    pOutput->finish();
}

}  // namespace tool
