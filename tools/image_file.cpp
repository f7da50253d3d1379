// Reads images from files and pipes, and writes them.
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <vector>

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

// All are 0 if there are too few bytes.
Counts countsIn(const void *pBytes, uint64_t nBytes) {
    Counts counts;
    if (nBytes >= sizeof counts) { std::memcpy(&counts, pBytes, sizeof counts); }
    return counts;
}

Counts countsOf(const HostOutputStream *pBytes) {
    uint64_t nBytes = 0;
    const void *pMemory = HostOutputStream_GetMemory(pBytes, &nBytes);
    return countsIn(pMemory, nBytes);
}

Counts countsOf(const std::string &image) {
    std::array<char, sizeof(Counts)> bytes{};
    return countsIn(bytes.data(), Input(image).read(bytes.data(), bytes.size()));
}

// Whether the counts may be those of an image, of either byte order.
bool mayBeImage(const Counts &counts) {
    return arePlausible(counts) || arePlausible(swapped(counts));
}

// Reads all that comes from a pipe, so that the start of an image can be looked at again when it
// could not be loaded. What is no image may have no end, so not much of that is read.
Bytes gather(const std::string &image) {
    Input input(image);
    Bytes gathered(HostOutputStream_CreateInMemory());
    if (!gathered) { throw std::bad_alloc(); }
    std::vector<char> buffer(kReadSize);
    size_t nGathered = 0;
    while (const size_t nRead = input.read(buffer.data(), buffer.size())) {
        if (HostStream_Write(gathered.get(), buffer.data(), nRead) != 0) { throw std::bad_alloc(); }
        nGathered += nRead;
        if (nGathered >= sizeof(Counts) && !mayBeImage(countsOf(gathered.get()))) { break; }
    }
    return gathered;
}

InputStream openStream(const std::string &image, const HostOutputStream *pGathered) {
    uint64_t nBytes = 0;
    const void *pMemory = pGathered ? HostOutputStream_GetMemory(pGathered, &nBytes) : nullptr;
    InputStream stream(pGathered ? HostInputStream_CreateInMemory(pMemory, nBytes)
                                 : HostInputStream_CreateForFile(image.c_str()));
    if (!stream) { fail(inputName(image), "cannot open: " + systemError()); }
    return stream;
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
    std::error_code error;
    const bool bDirect = image != "-" && std::filesystem::is_regular_file(image, error);
    const Bytes gathered = bDirect ? nullptr : gather(image);
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
    if (areOfOtherOrder(bDirect ? countsOf(image) : countsOf(gathered.get()))) {
        return "an image from a machine of the other byte order";
    }
    if (nCode == HostStreamError_End) { return "not an image of names: it ends too early"; }
    if (nError == ENOMEM) {
        fail(inputName(image), "out of memory: it asks for more than there is");
    }
    return "not a sound image of names";
}

ManagerHandle loadImage(const std::string &image) {
    const Progress progress("loading");
    ManagerHandle mgr = makeManager();
    const std::string problem = loadProblem(mgr.get(), image);
    if (!problem.empty()) { fail(inputName(image), problem); }
    return mgr;
}

void saveImage(NamesManager *mgr, Output &output) {
    FileStream stream = {{&kFileOps}, &output};
    if (NamesManager_Save(mgr, nullptr, &stream.stream) != 0) {
        fail(output.name(), "cannot write: " + systemError());
    }
    output.finish();
}

}  // namespace tool
