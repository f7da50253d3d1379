// names_tool: makes images of names from lists, and looks into images that a host has saved.
#include <cerrno>
#include <cstdio>
#include <exception>
#include <new>

#include <CLI/CLI.hpp>

#include "tools/tool.hpp"

namespace {

constexpr int kExitFailure = 2;

// What the command line asks for.
struct Request {
    std::string list = "-";
    std::string image;
    std::vector<std::string> names;
    bool bNull = false;
    bool bOneBased = false;
    bool bJson = false;
    std::function<int()> run;
};

void addCommands(CLI::App &app, Request &request) {
    CLI::App *pImport = app.add_subcommand("import", "Make an image from a list: one name per line, ended by LF or CR LF");
    pImport->footer("Blanks at a line's end are not part of the name. A line with a NUL or with a name of more\n"
                    "than 1048575 bytes is refused. An older image is replaced in one step or not at all.");
    pImport->add_option("LIST", request.list, "Text file, or - for standard input")->required();
    pImport->add_option("IMAGE", request.image, "Image to write")->required();
    pImport->callback([&request] { request.run = [&request] { return tool::runImport(request.list, request.image); }; });

    CLI::App *pExport = app.add_subcommand("export", "Write the names of an image, one per line");
    pExport->footer("A name that a line cannot hold (with LF inside or CR at its end) is refused.");
    pExport->add_option("IMAGE", request.image, "Image to read")->required();
    pExport->add_option("LIST", request.list, "File to write; standard output if missing or -");
    pExport->add_flag("--null", request.bNull, "End names by NUL instead of LF; every name can be written then");
    pExport->callback([&request] { request.run = [&request] { return tool::runExport(request.image, request.list, request.bNull); }; });

    CLI::App *pFind = app.add_subcommand("find", "Print \"index<TAB>name\" for each name, index -1 for one that is not there");
    pFind->footer("Blanks at a name's end do not count. Of repeated names the lowest index is printed.\n"
                  "Exit code 1 when any name is missing.");
    pFind->add_option("IMAGE", request.image, "Image to search")->required();
    pFind->add_option("NAME", request.names, "Names (after -- if they begin with -); without any, lines of standard input");
    pFind->add_flag("--one-based", request.bOneBased, "Count indices from 1");
    pFind->callback([&request] { request.run = [&request] { return tool::runFind(request.image, request.names, request.bOneBased); }; });

    CLI::App *pShow = app.add_subcommand("show", "Show what an image holds and how its blocks are filled");
    pShow->add_option("IMAGE", request.image, "Image to show")->required();
    pShow->add_flag("--json", request.bJson, "The same facts as JSON");
    pShow->callback([&request] { request.run = [&request] { return tool::runShow(request.image, request.bJson); }; });

    CLI::App *pCheck = app.add_subcommand("check", "Load an image, audit it, build its lookup index and look for repeated names");
    pCheck->footer("Exit code 0 only when it is sound and no name is repeated, 1 otherwise.");
    pCheck->add_option("IMAGE", request.image, "Image to check")->required();
    pCheck->callback([&request] { request.run = [&request] { return tool::runCheck(request.image); }; });
}

int run(int argc, char **argv) {
    CLI::App app{"Makes images of names from lists, and looks into images that a host has saved", "names_tool"};
    app.footer("Exit codes: 0 success, 1 a name is missing or an image is not sound, 2 anything else that went wrong.");
    app.require_subcommand(1);
    app.failure_message([](const CLI::App *, const CLI::Error &error) {
        return std::string("names_tool: ") + error.what() + " (names_tool --help tells more)\n";
    });
    Request request;
    addCommands(app, request);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : kExitFailure;
    }
    int nExit = kExitFailure;
    try {
        nExit = request.run();
    } catch (const std::bad_alloc &) {
        tool::fail(request.image, "out of memory");
    }
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) tool::fail("standard output", "cannot write: " + tool::systemError());
    return nExit;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const tool::Failure &failure) {
        std::fprintf(stderr, "names_tool: %s\n", failure.text.c_str());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "names_tool: %s\n", error.what());
    }
    return kExitFailure;
}
