#include "tools/commands.hpp"

#include "tools/tool.hpp"

namespace tool {
namespace {

Argument operand(const char *szName, std::string Request::*pValue, const char *szText) {
    return {.szName = szName, .szText = szText, .pValue = pValue, .bRequired = true};
}

Argument flag(const char *szName, bool Request::*pFlag, const char *szText) {
    return {.szName = szName, .szText = szText, .pFlag = pFlag};
}

Command importCommand() {
    return {
        .szName = "import",
        .szSummary = "Make an image from a list: one name per line, ended by LF or CR LF",
        .operands = {operand("LIST", &Request::list, "List to read, `-` for standard input"),
                     operand("IMAGE", &Request::image, "Image to write, `-` for standard output")},
        .options = {flag("--null", &Request::bNull,
                         "Names end with NUL instead of line ends, and may hold any other byte")},
        .sections = {{.szText = R"(
Blanks at a line's end are not part of the name, nor is a UTF-8 byte order mark before the first
line. A line with a NUL or with a name of more than 1048575 bytes is refused.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool import words.txt words.names
cut -d, -f1 rows.csv | names_tool import - rows.names
find . -type f -print0 | names_tool import --null - files.names)"}},
        .pfnRun = runImport,
    };
}

Command exportCommand() {
    return {
        .szName = "export",
        .szSummary = "Write the names of an image, one per line",
        .operands = {operand("IMAGE", &Request::image, "Image to read, `-` for standard input"),
                     {.szName = "LIST",
                      .szText = "List to write; standard output if missing or `-`",
                      .pValue = &Request::list}},
        .options = {flag("--null", &Request::bNull,
                         "End names with NUL instead of LF; every name can be written then")},
        .sections = {{.szText = R"(
What a list of lines would give back changed is refused: a name with LF inside or CR at its end,
and a byte order mark at the beginning of the first one.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool export words.names words.txt
names_tool export --null files.names | xargs -0 ls -ld)"}},
        .pfnRun = runExport,
    };
}

Command findCommand() {
    return {
        .szName = "find",
        .szSummary = "Print index, tab and name for each name; the index is `-1` where it is not "
                     "held",
        .operands = {operand("IMAGE", &Request::image,
                             "Image to search, `-` for standard input if names are given"),
                     {.szName = "NAME",
                      .szText = "Names (after `--` if they begin with `-`); without any, a list on "
                                "standard input",
                      .pValues = &Request::names}},
        .options =
            {flag("--null", &Request::bNull,
                  "Names end with NUL instead of line ends, in the list and in what is printed"),
             flag("--one-based", &Request::bOneBased, "Count indices from 1")},
        .sections = {{.szText = R"(
Blanks at a name's end do not count. Of repeated names the lowest index is printed. The exit status
is 1 when any name is missing.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool find words.names zebra aardvark
names_tool find --one-based rows.names -- -x1
names_tool find words.names <wanted.txt | grep -c '^-1')"}},
        .pfnRun = runFind,
    };
}

Command diffCommand() {
    return {
        .szName = "diff",
        .szSummary = "Compare the names of two images or lists, and print those that differ",
        .operands = {operand("A", &Request::image, "Image or list, `-` for standard input"),
                     operand("B", &Request::other,
                             "Image or list, `-` for standard input unless A is")},
        .options = {flag("--null", &Request::bNull,
                         "Names end with NUL instead of line ends, in lists and in what is "
                         "printed"),
                    flag("--json", &Request::bJson, "Print counts and names as JSON"),
                    flag("--summary", &Request::bSummary, "Print the counts alone")},
        .sections = {{.szText = R"(
Prints index in A, tab, index in B, tab and name: first for the names that are only in A, whose
index in B is `-1`; then for those only in B; then for those whose index differs. A file that
begins as images do is read as an image, any other as a list.)"},
                     {.szText = R"(
Of a repeated name each occurrence counts. Occurrences at the same index are the same; of the others
as many are paired as both A and B have, and what is left over is only in one of them.)"},
                     {.szText = R"(
The exit status is 0 when the names and their indices are the same, 1 when they differ, and 2 when
something went wrong.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool diff --summary old.names new.names
names_tool diff words.txt words.names && echo up to date
names_tool diff --json old.names new.names | jq -r '.onlyInB[].name')"}},
        .pfnRun = runDiff,
    };
}

Command showCommand() {
    return {
        .szName = "show",
        .szSummary = "Show what an image holds and how its blocks are filled",
        .operands = {operand("IMAGE", &Request::image, "Image to show, `-` for standard input")},
        .options = {flag("--json", &Request::bJson, "Print the same facts as JSON, block by block"),
                    {.szName = "--svg",
                     .szText = "Draw the storage into FILE instead, `-` for standard output",
                     .pValue = &Request::picture,
                     .szValue = "FILE",
                     .szExcludes = "--json"}},
        .sections = {{.szText = R"(
Full blocks of one size that follow each other share a line. The picture has a row for each block,
or for each few of them where they are many: live text in the colour of its names' indices, dead
and free bytes, and the totals.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool show words.names
names_tool show --json words.names | jq .text.dead
names_tool show --svg words.svg words.names)"}},
        .pfnRun = runShow,
    };
}

Command checkCommand() {
    return {
        .szName = "check",
        .szSummary = "Load an image, audit it, build its lookup index and look for repeated names",
        .operands = {operand("IMAGE", &Request::image, "Image to check, `-` for standard input")},
        .options = {},
        .sections = {{.szText = R"(
The exit status is 0 only when the image is sound and no name is repeated, otherwise 1.)"},
                     {.szHeading = "What an image cannot tell", .szText = R"(
Sound means that counts, tables and names agree with each other. Letters changed inside a name go
unnoticed, as images have no checksum. Nor do they say which encoding their names are in, or who
saved them and when. Where that matters, keep a checksum beside the image.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool check words.names && echo sound
sha256sum words.names >words.names.sha256)"}},
        .pfnRun = runCheck,
    };
}

Command selfCheckCommand() {
    return {
        .szName = "self-check",
        .szSummary = "Run the names module's own scenarios on this machine",
        .operands = {},
        .options = {},
        .sections = {{.szText = R"(
Takes some seconds. The exit status is 0 when every expectation was met, otherwise 1.)"},
                     {.szHeading = "Examples", .szLines = R"(
names_tool self-check)"}},
        .pfnRun = runSelfCheck,
    };
}

std::vector<Section> generalSections() {
    return {
        {.szHeading = "Files", .szText = R"(
A file called `-` is standard input or standard output, wherever a command reads or writes one; a
file that really has that name is `./-`. Files are replaced in one step: whatever goes wrong, and
whoever interrupts the tool, an older one stays whole. Nothing is left beside it but where the tool
is killed or the machine fails: a file `.names-*`. Pipes and devices are written as they come.
An image that is read from a pipe is held in memory as a whole meanwhile. Images can be read on
machines of the byte order of the one that wrote them.)"},
        {.szHeading = "Exit status", .szLines = R"(
0  success
1  find: a name is missing; diff: names differ; check: not sound, or a name
   is repeated; self-check: failed
2  anything else that went wrong; standard error says what)"},
        {.szHeading = "Examples", .szLines = R"(
names_tool import /usr/share/dict/words words.names
names_tool find words.names zebra
names_tool show words.names)"},
    };
}

}  // namespace

const Program &namesTool() {
    static const Program program = {
        .szName = "names_tool",
        .szTopic = "keeps lists of names in images",
        .szSummary = "Makes images of names from lists, and looks into images that a host has "
                     "saved",
        .help = {.szName = "-h, --help", .szText = "Print this help, or a command's"},
        .version = {.szName = "--version", .szText = "Print the version"},
        .commands = {importCommand(), exportCommand(), findCommand(), diffCommand(), showCommand(),
                     checkCommand(), selfCheckCommand()},
        .sections = generalSections(),
    };
    return program;
}

}  // namespace tool
