#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#ifndef _WIN32
#include <fcntl.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>
#endif

#include "host/host_report.h"
#include "host/host_stream.h"
#include "host/host_text.h"
#include "tests/counted_host/counted_memory.h"
#include "tests/starve.hpp"

namespace {

// Pieces below, at and beyond the size of a file stream's buffer; one byte more follows them.
const std::vector<size_t> kPieces = {0, 7, 65535, 1, 65536, 300000, 65537, 1000};

std::string writePieces(HostOutputStream *pStream) {
    std::mt19937 random(3);
    std::string written;
    for (const size_t nPiece : kPieces) {
        const std::string piece(nPiece, static_cast<char>(random()));
        EXPECT_EQ(0, HostStream_Write(pStream, piece.data(), nPiece));
        written += piece;
    }
    EXPECT_EQ(0, HostStream_Write(pStream, "!", 1));
    return written;
}

void readPieces(HostInputStream *pStream, const std::string &written,
                const std::string &endOfStream) {
    ASSERT_NE(nullptr, pStream);
    std::string read(written.size(), '?');
    size_t nOffset = 0;
    for (auto piece = kPieces.rbegin(); piece != kPieces.rend(); nOffset += *piece++) {
        ASSERT_EQ(0, HostStream_Read(pStream, read.data() + nOffset, *piece));
    }
    EXPECT_TRUE(written == read);
    char buffer[] = "???";
    EXPECT_EQ(HostStreamError_End, HostStream_Read(pStream, buffer, 3));
    EXPECT_EQ(endOfStream, buffer);
    HostInputStream_Close(pStream);
}

TEST(Stream, DeliversWhatWasWrittenAndEndsEarly) {
    HostOutputStream *pMemory = HostOutputStream_CreateInMemory();
    const std::string written = writePieces(pMemory);
    EXPECT_EQ(HostStreamError_Memory, HostStream_Write(pMemory, "", UINT64_MAX));
    uint64_t nBytes = 0;
    const void *pBytes = HostOutputStream_GetMemory(pMemory, &nBytes);
    readPieces(HostInputStream_CreateInMemory(pBytes, nBytes), written, "???");
    EXPECT_EQ(0, HostOutputStream_Close(pMemory, 0));

    const std::string path = testing::TempDir() + "host_stream_test";
    HostOutputStream *pFile = HostOutputStream_CreateForFile(path.c_str());
    ASSERT_NE(nullptr, pFile);
    writePieces(pFile);
    EXPECT_EQ(0, HostOutputStream_Close(pFile, 1));
    readPieces(HostInputStream_CreateForFile(path.c_str()), written, "!??");
    std::remove(path.c_str());
    EXPECT_EQ(nullptr, HostInputStream_CreateForFile(path.c_str()));
}

#ifndef _WIN32
int g_aEnds[2];  // of a pipe

// Interrupts what waits at one end of the pipe, again and again, to serve the other end.
void serveAtAlarms(void (*pfnServe)(int)) {
    struct sigaction action = {};
    action.sa_handler = pfnServe;
    sigaction(SIGALRM, &action, nullptr);
}

TEST(Stream, OfAPipeOutlastsSignals) {
    ASSERT_EQ(0, pipe(g_aEnds));
    HostInputStream *pFrom = HostInputStream_CreateForDescriptor(g_aEnds[0]);
    HostOutputStream *pTo = HostOutputStream_CreateForDescriptor(g_aEnds[1]);
    std::string bytes(100000, '?');
    const itimerval often = {{0, 500}, {0, 500}}, never = {};
    serveAtAlarms([](int) { EXPECT_EQ(1, write(g_aEnds[1], "s", 1)); });
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(0, HostStream_Read(pFrom, bytes.data(), 20));
    EXPECT_EQ(std::string(20, 's') + '?', bytes.substr(0, 21));
    EXPECT_EQ(0, fcntl(g_aEnds[0], F_SETFL, O_NONBLOCK));
    serveAtAlarms([](int) {
        char aBytes[1000];  // less than a page, so that the writer mostly goes on waiting
        EXPECT_NE(0, read(g_aEnds[0], aBytes, sizeof aBytes));
    });
    EXPECT_EQ(0, HostStream_Write(pTo, bytes.data(), bytes.size()));
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(0, HostOutputStream_Close(pTo, 1));
    HostInputStream_Close(pFrom);
}

TEST(Stream, GivesDescriptorsBack) {
    const int nNext = dup(0);
    close(nNext);
    starve([] {
        HostInputStream_Close(HostInputStream_CreateForFile("/dev/null"));
        HostOutputStream_Close(HostOutputStream_CreateForFile("/dev/null"), 0);
    });
    EXPECT_EQ(nNext, dup(0));
    close(nNext);
}
#endif

TEST(Stream, ReportsAFullDeviceAndLackOfMemory) {
    HostOutputStream *pFull = HostOutputStream_CreateForFile("/dev/full");
    ASSERT_NE(nullptr, pFull);
    EXPECT_EQ(0, HostStream_Write(pFull, "a", 1));  // buffered
    EXPECT_EQ(HostStreamError_IO, HostOutputStream_Close(pFull, 1));
    pFull = HostOutputStream_CreateForFile("/dev/full");
    const std::string large(100000, 'x');
    for (const size_t nBytes : {large.size(), size_t{3}}) {
        EXPECT_EQ(HostStreamError_IO, HostStream_Write(pFull, large.data(), nBytes));
        EXPECT_EQ(ENOSPC, std::exchange(errno, 0));
    }
    EXPECT_EQ(HostStreamError_IO, HostOutputStream_Close(pFull, 0));
    starve([&large] {
        HostOutputStream *pMemory = HostOutputStream_CreateInMemory();
        if (pMemory == nullptr) { return; }
        uint64_t nBytes = 0;
        const uint64_t nExpected =
            HostStream_Write(pMemory, large.data(), large.size()) == 0 ? large.size() : 0;
        EXPECT_NE(nullptr, HostOutputStream_GetMemory(pMemory, &nBytes));
        EXPECT_EQ(nExpected, nBytes);
        HostOutputStream_Close(pMemory, 0);
    });
}

TEST(Text, AppendsAllOrNothing) {
    std::string last;
    starve([&last] {
        HostText *pText = HostText_Create();
        if (pText == nullptr) { return; }
        std::string expected;
        if (HostText_AppendPadded(pText, "ab", 4) == 0) { expected += "ab  "; }
        if (HostText_AppendPadded(pText, "longer", 3) == 0) { expected += "longer"; }
        for (int i = 0; i < 300; ++i) {
            expected += HostText_AppendRepeated(pText, 1, 'x') == 0 ? "x" : "";
        }
        EXPECT_EQ(0,
                  HostText_AppendPadded(pText, "", -5) + HostText_AppendRepeated(pText, -1, 'y'));
        EXPECT_EQ(1, HostText_AppendRepeated(pText, std::numeric_limits<int64_t>::max(), 'z'));
        EXPECT_EQ(expected, last = HostText_GetString(pText));
        EXPECT_EQ(expected.size(), HostText_GetLength(pText));
        HostText_Destroy(pText);
    });
    EXPECT_EQ("ab  longer" + std::string(300, 'x'), last);
}

void note(void *pContext, uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    *static_cast<std::ostream *>(pContext)
        << nSourceTag << ' ' << nLine << ' ' << nCode << ' ' << szText << '\n';
}

TEST(Report, TellsAllOfItToHandlersOrOnStandardError) {
    std::ostringstream told;
    const HostReportHandlers handlers = {&told, note, note}, none = {}, *pBefore = nullptr,
                             *pOfTests = Host_SetReportHandlers(nullptr);
    testing::internal::CaptureStderr();
    for (const HostReportHandlers *pHandlers : {&none, pBefore, &handlers}) {
        EXPECT_EQ(std::exchange(pBefore, pHandlers), Host_SetReportHandlers(pHandlers));
        Host_ReportError(1, 2, 3, "text");
        Host_ReportAssertion(4, 5, 6, "%d %s", 7, "text");
        Host_AssertStringsEqual(8, 9, "text", nullptr);
        Host_AssertStringsEqual(10, 11, "text", std::string("text").c_str());
        Host_AssertStringsEqual(12, 13, nullptr, nullptr);
    }
    const std::string toHandlers =
        "1 2 3 text\n4 5 6 7 text\n8 9 0 expected \"text\", got \"(null)\"\n";
    const std::string onStandardError =
        "error 3 (0000000000000001:2): text\nassertion 6 (0000000000000004:5): 7 text\n"
        "assertion 0 (0000000000000008:9): expected \"text\", got \"(null)\"\n";
    EXPECT_EQ(toHandlers, told.str());
    EXPECT_EQ(onStandardError + onStandardError, testing::internal::GetCapturedStderr());
    Host_ReportAssertion(1, 1, 1, "%2000d", 1);
    EXPECT_EQ(toHandlers.size() + 7 + 1023, told.str().size());
    Host_SetReportHandlers(pOfTests);
}

TEST(Memory, KeepsItsContentAndRefusesTheImpossible) {
    const int64_t nLive = HostMem_GetNumLive();
    HostMem_FailAt(2, 0);
    auto *pTable = static_cast<unsigned char *>(HostMem_Realloc(nullptr, 0, 0, 0));
    EXPECT_TRUE(pTable != nullptr && HostMem_Realloc(pTable, 10, 0, 0) == nullptr);
    for (uint32_t n = 4001; n < 600000;
         n += 4001) {  // past the size from which resizing is rounded
        pTable = static_cast<unsigned char *>(HostMem_Realloc(pTable, n, 0, 0));
        for (uint32_t i = n - 4001; i < n; ++i) { pTable[i] = static_cast<unsigned char>(i % 251); }
    }
    for (const uint64_t nBytes : {~uint64_t{0}, uint64_t{1} << 63, (uint64_t{1} << 63) - 1}) {
        EXPECT_EQ(nullptr, HostMem_Realloc(pTable, nBytes, 0, 0));
    }
    for (uint32_t i = 0; i < 590000; ++i) { ASSERT_EQ(i % 251, pTable[i]); }
    EXPECT_NE(nullptr, pTable = static_cast<unsigned char *>(HostMem_Realloc(pTable, 0, 0, 0)));
    HostMem_Free(pTable, 0, 0);
    EXPECT_EQ(nLive, HostMem_GetNumLive());
}

}  // namespace
