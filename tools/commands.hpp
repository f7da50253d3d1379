// The commands of names_tool, each described once: the command line is parsed with these tables,
// and the help, the man page and docs/tool.md are written from them.
#ifndef TOOLS_COMMANDS_HPP
#define TOOLS_COMMANDS_HPP

#include <string>
#include <vector>

namespace tool {

// What the command line asks for.
struct Request {
    std::string list = "-";
    std::string image;
    std::string other;
    std::string picture;
    std::vector<std::string> names;
    bool bNull = false;
    bool bOneBased = false;
    bool bJson = false;
    bool bSummary = false;
};

// Texts are written as paragraphs: where their lines end does not matter, and `backticks` mark what
// is typed or printed. Argument::szText and Command::szSummary have no full stop at their end.

// An operand or an option. One of the three pointers says which member of a Request its value goes
// to; the options for help and version have none.
struct Argument {
    const char *szName;  // "IMAGE", "--null", "-h, --help"
    const char *szText;
    bool Request::*pFlag = nullptr;
    std::string Request::*pValue = nullptr;
    std::vector<std::string> Request::*pValues = nullptr;
    const char *szValue = "";     // of an option with a value: what the texts call it
    const char *szExcludes = "";  // the option that cannot be given together with this one
    bool bRequired = false;       // of an operand
};

// A part of the manual, with a heading or without: a paragraph, or lines that are printed as they
// stand.
struct Section {
    const char *szHeading = "";
    const char *szText = "";
    const char *szLines = "";
};

struct Command {
    const char *szName;
    const char *szSummary;
    std::vector<Argument> operands;
    std::vector<Argument> options;
    std::vector<Section> sections;
    int (*pfnRun)(const Request &request);  // returns the exit status
};

struct Program {
    const char *szName;
    const char *szTopic;  // continues "names_tool - " in the man page
    const char *szSummary;
    Argument help;  // an option of every command, too
    Argument version;
    std::vector<Command> commands;
    std::vector<Section> sections;
};

const Program &namesTool();

// The exit statuses.
constexpr int kExitSuccess = 0;
constexpr int kExitNo = 1;       // the command did its work, and its answer is no
constexpr int kExitFailure = 2;  // the command ended in a Failure

// What the commands do; each returns the exit status.
int runImport(const Request &request);
int runExport(const Request &request);
int runFind(const Request &request);
int runDiff(const Request &request);
int runShow(const Request &request);
int runCheck(const Request &request);
int runSelfCheck(const Request &request);

}  // namespace tool

#endif
