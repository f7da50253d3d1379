// names_tool: makes images of names from lists, and looks into images that a host has saved.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <string_view>

#include <CLI/CLI.hpp>

#include "tools/commands.hpp"
#include "tools/files.hpp"
#include "tools/manual.hpp"
#include "tools/platform.hpp"
#include "tools/tool.hpp"

namespace tool {
namespace {

constexpr char kVersion[] = "names_tool " NAMES_VERSION;
constexpr char kManualDate[] = "2026-11-23";  // of the latest change to what the manual says

void addArgument(CLI::App *pCommand, const Argument &argument, Request *pRequest) {
    if (argument.pFlag) {
        pCommand->add_flag(argument.szName, pRequest->*argument.pFlag);
        return;
    }
    CLI::Option *pOption = argument.pValues
                               ? pCommand->add_option(argument.szName, pRequest->*argument.pValues)
                               : pCommand->add_option(argument.szName, pRequest->*argument.pValue);
    pOption->required(argument.bRequired);
    if (*argument.szValue) { pOption->type_name(argument.szValue); }
    if (*argument.szExcludes) { pOption->excludes(pCommand->get_option(argument.szExcludes)); }
}

// Sets the parser up for all commands; what they ask for goes to *pRequest.
void describe(const Program &program, CLI::App *pApp, Request *pRequest) {
    pApp->set_help_flag(program.help.szName);
    pApp->set_version_flag(program.version.szName, kVersion);
    pApp->require_subcommand(1);
    pApp->allow_windows_style_options(false);  // a path may begin with a slash there, too
    for (const Command &command : program.commands) {
        CLI::App *pCommand = pApp->add_subcommand(command.szName);
        for (const Argument &operand : command.operands) {
            addArgument(pCommand, operand, pRequest);
        }
        for (const Argument &option : command.options) { addArgument(pCommand, option, pRequest); }
    }
}

// The command that the parser found, or NULL.
const Command *chosenCommand(const Program &program, const CLI::App &app) {
    const std::vector<CLI::App *> chosen = app.get_subcommands();
    const auto found =
        std::find_if(program.commands.begin(), program.commands.end(), [&](const Command &command) {
            return !chosen.empty() && chosen.front()->get_name() == command.szName;
        });
    return found == program.commands.end() ? nullptr : &*found;
}

// Says what is wrong with the command line: an unknown word is named before anything else.
[[noreturn]] void refuse(const CLI::App &app, const CLI::ParseError &error) {
    const std::vector<CLI::App *> commands = app.get_subcommands();
    const std::string hint = " (names_tool" +
                             (commands.empty() ? "" : " " + commands.front()->get_name()) +
                             " --help tells more)";
    std::vector<std::string> unknown = app.remaining(true);
    unknown.erase(std::remove(unknown.begin(), unknown.end(), "--"), unknown.end());
    if (unknown.empty()) {
        throw Failure{(commands.empty() ? "a command is missing" : error.what()) + hint};
    }
    const std::string &word = unknown.front();
    const char *szKind = word.size() > 1 && word.front() == '-' ? "option"
                         : commands.empty()                     ? "command"
                                                                : "argument";
    throw Failure{std::string(commands.empty() || *szKind == 'o' ? "unknown " : "unexpected ") +
                  szKind + " '" + word + "'" + hint};
}

int parseAndRun(int argc, char **argv, Request *pRequest) {
    const Program &program = namesTool();
    CLI::App app("", program.szName);
    describe(program, &app, pRequest);
    try {
        app.parse(argc, argv);
        return chosenCommand(program, app)->pfnRun(*pRequest);
    } catch (const CLI::CallForHelp &) {
        const Command *pCommand = chosenCommand(program, app);
        Output().write(pCommand ? helpText(program, *pCommand) : helpText(program));
    } catch (const CLI::CallForVersion &) {
        Output().write(std::string(kVersion) + "\n");
    } catch (const CLI::ParseError &error) { refuse(app, error); }
    return kExitSuccess;
}

int run(int argc, char **argv) {
    const std::string_view first = argc == 2 ? argv[1] : "";
    if (first == "--man-page") {  // for the build, as is the next: not in --help
        Output().write(manPage(namesTool(), NAMES_VERSION, kManualDate));
        return kExitSuccess;
    }
    if (first == "--markdown-page") {
        Output().write(markdownPage(namesTool()));
        return kExitSuccess;
    }
    Request request;
    try {
        return parseAndRun(argc, argv, &request);
    } catch (const std::bad_alloc &) {
        const bool bOneFile = !request.image.empty() && request.other.empty();
        throw Failure{(bOneFile ? inputName(request.image) + ": " : "") + "out of memory"};
    }
}

}  // namespace

}  // namespace tool

int main(int argc, char **argv) {
    tool::prepareProcess();
    try {
        const int nExit = tool::run(argc, argv);
        tool::Output().finish();
        return nExit;
    } catch (const tool::Failure &failure) {
        std::fprintf(stderr, "names_tool: %s\n", failure.text.c_str());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "names_tool: %s\n", error.what());
    }
    return tool::kExitFailure;
}
