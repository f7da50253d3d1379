// names_tool: makes images of names from lists, and looks into images that a host has saved.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string_view>

#include <CLI/CLI.hpp>

#include "tools/man_page.hpp"
#include "tools/tool.hpp"

namespace {

constexpr int kExitFailure = 2;

// What the command line asks for.
struct Request {
    std::string list = "-";
    std::string image;
    std::string picture;
    std::vector<std::string> names;
    bool bNull = false;
    bool bOneBased = false;
    bool bJson = false;
    std::function<int()> run;
};

// Descriptions and footers are what --help prints and what the manual page is made of. In a footer a line that ends with ':' is a heading,
// and lines that begin with a blank are printed as they stand.
CLI::App *addCommand(CLI::App &app, const char *szName, const char *szDescription, const char *szFooter) {
    return app.add_subcommand(szName, szDescription)->footer(szFooter);
}

// Wherever an operand is needed, its place in the usage line says so.
CLI::Option *addOperand(CLI::App *pCommand, const char *szName, std::string &value, const char *szDescription) {
    return pCommand->add_option(szName, value, szDescription)->option_text(" ");
}

void addImport(CLI::App &app, Request &request) {
    CLI::App *pCommand = addCommand(app, "import", "Make an image from a list: one name per line, ended by LF or CR LF",
                                    "Blanks at a line's end are not part of the name. A line with a NUL or with a name of more\n"
                                    "than 1048575 bytes is refused. An older image is replaced in one step or not at all.\n\n"
                                    "Examples:\n"
                                    "  names_tool import words.txt words.names\n"
                                    "  cut -d, -f1 rows.csv | names_tool import - rows.names");
    addOperand(pCommand, "LIST", request.list, "Text file, or - for standard input")->required();
    addOperand(pCommand, "IMAGE", request.image, "Image to write")->required();
    pCommand->callback([&request] { request.run = [&request] { return tool::runImport(request.list, request.image); }; });
}

void addExport(CLI::App &app, Request &request) {
    CLI::App *pCommand = addCommand(app, "export", "Write the names of an image, one per line",
                                    "A name that a line cannot hold (with LF inside or CR at its end) is refused.\n\n"
                                    "Examples:\n"
                                    "  names_tool export words.names words.txt\n"
                                    "  names_tool export --null words.names | xargs -0 -n1 echo");
    addOperand(pCommand, "IMAGE", request.image, "Image to read")->required();
    addOperand(pCommand, "LIST", request.list, "File to write; standard output if missing or -");
    pCommand->add_flag("--null", request.bNull, "End names by NUL instead of LF; every name can be written then");
    pCommand->callback([&request] { request.run = [&request] { return tool::runExport(request.image, request.list, request.bNull); }; });
}

void addFind(CLI::App &app, Request &request) {
    CLI::App *pCommand = addCommand(app, "find", "Print \"index<TAB>name\" for each name, index -1 for one that is not there",
                                    "Blanks at a name's end do not count. Of repeated names the lowest index is printed.\n"
                                    "Exit code 1 when any name is missing.\n\n"
                                    "Examples:\n"
                                    "  names_tool find words.names zebra aardvark\n"
                                    "  names_tool find --one-based rows.names -- -x1\n"
                                    "  names_tool find words.names <wanted.txt | grep -c '^-1'");
    addOperand(pCommand, "IMAGE", request.image, "Image to search")->required();
    pCommand->add_option("NAME", request.names, "Names (after -- if they begin with -); without any, lines of standard input")
        ->option_text("...");
    pCommand->add_flag("--one-based", request.bOneBased, "Count indices from 1");
    pCommand->callback([&request] { request.run = [&request] { return tool::runFind(request.image, request.names, request.bOneBased); }; });
}

void addShow(CLI::App &app, Request &request) {
    CLI::App *pCommand = addCommand(app, "show", "Show what an image holds and how its blocks are filled",
                                    "The picture has a row for each block, or for each few of them where they are many: live\n"
                                    "text in the colour of its names' indices, dead and free bytes, and the totals.\n\n"
                                    "Examples:\n"
                                    "  names_tool show words.names\n"
                                    "  names_tool show --json words.names | jq .text.dead\n"
                                    "  names_tool show --svg words.svg words.names");
    addOperand(pCommand, "IMAGE", request.image, "Image to show")->required();
    CLI::Option *pJson = pCommand->add_flag("--json", request.bJson, "Print the same facts as JSON")->option_text(" ");
    pCommand->add_option("--svg", request.picture, "Draw the storage into FILE instead, - for standard output")
        ->option_text("FILE")
        ->excludes(pJson);
    pCommand->callback([&request] { request.run = [&request] { return tool::runShow(request.image, request.bJson, request.picture); }; });
}

void addChecks(CLI::App &app, Request &request) {
    CLI::App *pCheck = addCommand(app, "check", "Load an image, audit it, build its lookup index and look for repeated names",
                                  "Exit code 0 only when it is sound and no name is repeated, 1 otherwise.\n\n"
                                  "Examples:\n"
                                  "  names_tool check words.names && echo sound");
    addOperand(pCheck, "IMAGE", request.image, "Image to check")->required();
    pCheck->callback([&request] { request.run = [&request] { return tool::runCheck(request.image); }; });

    CLI::App *pSelfCheck = addCommand(app, "self-check", "Run the names module's own scenarios on this machine",
                                      "Takes some seconds. Exit code 0 when every expectation was met, 1 otherwise.\n\n"
                                      "Examples:\n"
                                      "  names_tool self-check");
    pSelfCheck->callback([&request] { request.run = tool::runSelfCheck; });
}

void describe(CLI::App &app) {
    app.footer("Exit codes:\n"
               "  0  success\n"
               "  1  find: a name is missing; check: not sound, or a name is repeated; self-check: failed\n"
               "  2  anything else that went wrong; standard error says what\n\n"
               "Examples:\n"
               "  names_tool import /usr/share/dict/words words.names\n"
               "  names_tool find words.names zebra\n"
               "  names_tool show words.names");
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Positionals", "Operands");
    app.get_formatter()->column_width(24);
    app.set_help_flag("-h,--help", "Print this help, or a command's");
    app.set_version_flag("--version", "names_tool " NAMES_VERSION, "Print the version");
    app.require_subcommand(1);
    app.failure_message([](const CLI::App *, const CLI::Error &error) {
        return std::string("names_tool: ") + error.what() + " (names_tool --help tells more)\n";
    });
}

void flushOutput() {
    errno = 0;
    std::cout.flush();
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) tool::fail("standard output", "cannot write: " + tool::systemError());
}

int run(int argc, char **argv) {
    CLI::App app{"Makes images of names from lists, and looks into images that a host has saved", "names_tool"};
    Request request;
    describe(app);
    addImport(app, request);
    addExport(app, request);
    addFind(app, request);
    addShow(app, request);
    addChecks(app, request);
    int nExit = kExitFailure;
    try {
        if (argc == 2 && std::string_view(argv[1]) == "--man-page") {  // for the build, so no part of --help
            std::fputs(tool::manPage(app, NAMES_VERSION).c_str(), stdout);
            nExit = 0;
        } else {
            app.parse(argc, argv);
            nExit = request.run();
        }
    } catch (const CLI::ParseError &error) {
        nExit = app.exit(error) == 0 ? 0 : kExitFailure;
    } catch (const std::bad_alloc &) {
        tool::fail(request.image, "out of memory");
    }
    flushOutput();
    return nExit;
}

}  // namespace

int main(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_DFL);  // whoever started us may ignore it; a reader that has seen enough ends us quietly
    try {
        return run(argc, argv);
    } catch (const tool::Failure &failure) {
        std::fprintf(stderr, "names_tool: %s\n", failure.text.c_str());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "names_tool: %s\n", error.what());
    }
    return kExitFailure;
}
