// names_tool: makes images of names from lists, and looks into images that a host has saved.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string_view>

#include <CLI/CLI.hpp>

#include "tools/files.hpp"
#include "tools/manual.hpp"
#include "tools/platform.hpp"
#include "tools/tool.hpp"

namespace {

constexpr int kExitFailure = 2;
constexpr char kManualDate[] = "2026-11-23";  // of the latest change to what the manual says

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

// Descriptions and footers are what --help prints and what the manual is made of. In a footer a
// line that ends with ':' is a heading, and lines that begin with a blank are examples and printed
// as they stand.
CLI::App *addCommand(CLI::App &app, const char *szName, const char *szDescription,
                     const char *szFooter) {
    return app.add_subcommand(szName, szDescription)->footer(szFooter)->group("Commands");
}

// Wherever an operand is needed, its place in the usage line says so.
CLI::Option *addOperand(CLI::App *pCommand, const char *szName, std::string &value,
                        const char *szDescription) {
    return pCommand->add_option(szName, value, szDescription)->option_text(" ");
}

void addImport(CLI::App &app, Request &request) {
    CLI::App *pCommand = addCommand(
        app, "import", "Make an image from a list: one name per line, ended by LF or CR LF",
        "Blanks at a line's end are not part of the name, nor is a UTF-8 byte order mark before "
        "the\n"
        "first line. A line with a NUL or with a name of more than 1048575 bytes is refused.\n\n"
        "Examples:\n"
        "  names_tool import words.txt words.names\n"
        "  cut -d, -f1 rows.csv | names_tool import - rows.names\n"
        "  find . -type f -print0 | names_tool import --null - files.names");
    addOperand(pCommand, "LIST", request.list, "List to read, - for standard input")->required();
    addOperand(pCommand, "IMAGE", request.image, "Image to write, - for standard output")
        ->required();
    pCommand->add_flag("--null", request.bNull,
                       "Names end with NUL instead of line ends, and may hold any other byte");
    pCommand->callback([&request] {
        request.run = [&request] {
            return tool::runImport(request.list, request.image, request.bNull);
        };
    });
}

void addExport(CLI::App &app, Request &request) {
    CLI::App *pCommand =
        addCommand(app, "export", "Write the names of an image, one per line",
                   "What a list of lines would give back changed is refused: a name with LF inside "
                   "or CR at its\n"
                   "end, and a byte order mark at the beginning of the first one.\n\n"
                   "Examples:\n"
                   "  names_tool export words.names words.txt\n"
                   "  names_tool export --null files.names | xargs -0 ls -ld");
    addOperand(pCommand, "IMAGE", request.image, "Image to read, - for standard input")->required();
    addOperand(pCommand, "LIST", request.list, "List to write; standard output if missing or -");
    pCommand->add_flag("--null", request.bNull,
                       "End names with NUL instead of LF; every name can be written then");
    pCommand->callback([&request] {
        request.run = [&request] {
            return tool::runExport(request.image, request.list, request.bNull);
        };
    });
}

void addFind(CLI::App &app, Request &request) {
    CLI::App *pCommand = addCommand(
        app, "find",
        "Print index, tab and name for each name; the index is -1 where it is not held",
        "Blanks at a name's end do not count. Of repeated names the lowest index is printed. The\n"
        "exit status is 1 when any name is missing.\n\n"
        "Examples:\n"
        "  names_tool find words.names zebra aardvark\n"
        "  names_tool find --one-based rows.names -- -x1\n"
        "  names_tool find words.names <wanted.txt | grep -c '^-1'");
    addOperand(pCommand, "IMAGE", request.image,
               "Image to search, - for standard input if names are given")
        ->required();
    pCommand
        ->add_option("NAME", request.names,
                     "Names (after -- if they begin with -); without any, a list on standard input")
        ->option_text("...");
    pCommand->add_flag(
        "--null", request.bNull,
        "Names end with NUL instead of line ends, in the list and in what is printed");
    pCommand->add_flag("--one-based", request.bOneBased, "Count indices from 1");
    pCommand->callback([&request] {
        request.run = [&request] {
            return tool::runFind(request.image, request.names, {request.bOneBased, request.bNull});
        };
    });
}

void addShow(CLI::App &app, Request &request) {
    CLI::App *pCommand =
        addCommand(app, "show", "Show what an image holds and how its blocks are filled",
                   "Full blocks of one size that follow each other share a line. The picture has a "
                   "row for each\n"
                   "block, or for each few of them where they are many: live text in the colour of "
                   "its names'\n"
                   "indices, dead and free bytes, and the totals.\n\n"
                   "Examples:\n"
                   "  names_tool show words.names\n"
                   "  names_tool show --json words.names | jq .text.dead\n"
                   "  names_tool show --svg words.svg words.names");
    addOperand(pCommand, "IMAGE", request.image, "Image to show, - for standard input")->required();
    CLI::Option *pJson =
        pCommand->add_flag("--json", request.bJson, "Print the same facts as JSON, block by block")
            ->option_text(" ");
    pCommand
        ->add_option("--svg", request.picture,
                     "Draw the storage into FILE instead, - for standard output")
        ->type_name("FILE")
        ->option_text("FILE")
        ->excludes(pJson);
    pCommand->callback([&request] {
        request.run = [&request] {
            return tool::runShow(request.image, request.bJson, request.picture);
        };
    });
}

void addChecks(CLI::App &app, Request &request) {
    CLI::App *pCheck = addCommand(
        app, "check", "Load an image, audit it, build its lookup index and look for repeated names",
        "The exit status is 0 only when the image is sound and no name is repeated, otherwise "
        "1.\n\n"
        "What an image cannot tell:\n"
        "Sound means that counts, tables and names agree with each other. Letters changed inside "
        "a\n"
        "name go unnoticed, as images have no checksum. Nor do they say which encoding their "
        "names\n"
        "are in, or who saved them and when. Where that matters, keep a checksum beside the "
        "image.\n\n"
        "Examples:\n"
        "  names_tool check words.names && echo sound\n"
        "  sha256sum words.names >words.names.sha256");
    addOperand(pCheck, "IMAGE", request.image, "Image to check, - for standard input")->required();
    pCheck->callback(
        [&request] { request.run = [&request] { return tool::runCheck(request.image); }; });

    CLI::App *pSelfCheck = addCommand(
        app, "self-check", "Run the names module's own scenarios on this machine",
        "Takes some seconds. The exit status is 0 when every expectation was met, otherwise 1.\n\n"
        "Examples:\n"
        "  names_tool self-check");
    pSelfCheck->callback([&request] { request.run = tool::runSelfCheck; });
}

void describe(CLI::App &app) {
    app.footer(
        "Files:\n"
        "A file called - is standard input or standard output, wherever a command reads or writes\n"
        "one; a file that really has that name is ./-. Files are replaced in one step: whatever "
        "goes\n"
        "wrong, and whoever interrupts the tool, an older one stays whole. Nothing is left beside "
        "it\n"
        "but where the tool is killed or the machine fails: a file .names-*. Pipes and "
        "devices\n"
        "are written as they come. An image that is read from a pipe is held in memory as a whole\n"
        "meanwhile. Images can be read on machines of the byte order of the one that wrote "
        "them.\n\n"
        "Exit status:\n"
        "  0  success\n"
        "  1  find: a name is missing; check: not sound, or a name is repeated;\n"
        "     self-check: failed\n"
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
    app.allow_windows_style_options(false);  // a path may begin with a slash there, too
}

// Help or version, as asked for.
std::string answer(const CLI::App &app, const CLI::ParseError &request) {
    std::ostringstream out;
    app.exit(request, out, out);
    std::string text = out.str();
    constexpr std::string_view kHelpFlags = "-h,--help ";
    if (const size_t at = text.find(kHelpFlags); at != std::string::npos) {
        text.replace(at, kHelpFlags.size(), "-h, --help");
    }
    return text;
}

// What is wrong with the command line: first of all what nobody knows, by its name.
[[noreturn]] void refuse(const CLI::App &app, const CLI::ParseError &error) {
    const std::vector<CLI::App *> commands = app.get_subcommands();
    const std::string hint = " (names_tool" +
                             (commands.empty() ? "" : " " + commands.front()->get_name()) +
                             " --help tells more)";
    std::vector<std::string> unknown = app.remaining(true);
    unknown.erase(std::remove(unknown.begin(), unknown.end(), "--"), unknown.end());
    if (unknown.empty()) {
        throw tool::Failure{(commands.empty() ? "a command is missing" : error.what()) + hint};
    }
    const std::string &word = unknown.front();
    const char *szKind = word.size() > 1 && word.front() == '-' ? "option"
                         : commands.empty()                     ? "command"
                                                                : "argument";
    throw tool::Failure{
        std::string(commands.empty() || *szKind == 'o' ? "unknown " : "unexpected ") + szKind +
        " '" + word + "'" + hint};
}

int run(int argc, char **argv) {
    CLI::App app{"Makes images of names from lists, and looks into images that a host has saved",
                 "names_tool"};
    Request request;
    describe(app);
    addImport(app, request);
    addExport(app, request);
    addFind(app, request);
    addShow(app, request);
    addChecks(app, request);
    const std::string_view first = argc == 2 ? argv[1] : "";
    try {
        if (first == "--man-page") {  // for the build, as is the next, so no part of --help
            tool::Output().write(tool::manPage(app, NAMES_VERSION, kManualDate));
        } else if (first == "--markdown-page") {
            tool::Output().write(tool::markdownPage(app));
        } else {
            app.parse(argc, argv);
            return request.run();
        }
    } catch (const CLI::Success &asked) {
        tool::Output().write(answer(app, asked));
    } catch (const CLI::ParseError &error) { refuse(app, error); } catch (const std::bad_alloc &) {
        throw tool::Failure{request.image.empty()
                                ? "out of memory"
                                : tool::inputName(request.image) + ": out of memory"};
    }
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    tool::prepareProcess();
    try {
        const int nExit = run(argc, argv);
        tool::Output().finish();
        return nExit;
    } catch (const tool::Failure &failure) {
        std::fprintf(stderr, "names_tool: %s\n", failure.text.c_str());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "names_tool: %s\n", error.what());
    }
    return kExitFailure;
}
