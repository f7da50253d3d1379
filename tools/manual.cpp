#include "tools/manual.hpp"

#include <algorithm>
#include <sstream>
#include <vector>

namespace tool {
namespace {

// ---- Texts ----

// The text without its marks for code.
std::string plain(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '`'), text.end());
    return text;
}

// The text in lines of at most nWidth bytes, where its blanks allow; marks for code take no room.
std::vector<std::string> wrapped(const std::string &text, size_t nWidth) {
    std::istringstream words(text);
    std::vector<std::string> lines(1);
    for (std::string word; words >> word;) {
        std::string &line = lines.back();
        if (!line.empty() && plain(line).size() + 1 + plain(word).size() > nWidth) {
            lines.push_back(word);
        } else {
            line += (line.empty() ? "" : " ") + word;
        }
    }
    return lines;
}

// The lines of an example, which begins on a line of its own.
std::vector<std::string> linesOf(const std::string &text) {
    std::istringstream stream(text.substr(text.find_first_not_of('\n')));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) { lines.push_back(line); }
    return lines;
}

std::string joined(const std::vector<std::string> &lines, const std::string &indent = "") {
    std::string text;
    for (const std::string &line : lines) { text += indent + line + "\n"; }
    return text;
}

// "names_tool import [OPTIONS] LIST IMAGE"
std::string synopsis(const Program &program, const Command &command) {
    std::string text = std::string(program.szName) + " " + command.szName + " [OPTIONS]";
    for (const Argument &operand : command.operands) {
        const std::string name = std::string(operand.szName) + (operand.pValues ? "..." : "");
        text += operand.bRequired ? " " + name : " [" + name + "]";
    }
    return text;
}

// "--svg FILE"
std::string optionName(const Argument &option) {
    return option.szName + std::string(*option.szValue ? " " : "") + option.szValue;
}

// ---- Help ----

std::string helpEntry(const std::string &name, const char *szText) {
    constexpr size_t kNameWidth = 22;
    const std::string blanks(kNameWidth - std::min(name.size(), kNameWidth - 1), ' ');
    return "  " + name + blanks + plain(szText) + "\n";
}

std::string helpOptions(const std::vector<Argument> &options) {
    std::string text = "\nOptions:\n";
    for (const Argument &option : options) { text += helpEntry(optionName(option), option.szText); }
    return text;
}

std::string helpSections(const std::vector<Section> &sections) {
    constexpr size_t kWidth = 91;
    std::string text;
    for (const Section &section : sections) {
        text += "\n";
        if (*section.szHeading) { text += std::string(section.szHeading) + ":\n"; }
        text += *section.szText ? joined(wrapped(plain(section.szText), kWidth))
                                : joined(linesOf(section.szLines), "  ");
    }
    return text;
}

// ---- The manual as a sequence of items, for man and Markdown ----

enum class Kind { section, subsection, label, paragraph, example, option };

struct Item {
    Kind kind;
    std::string text;
    std::string name = {};  // of an option or operand
};

using Items = std::vector<Item>;

void addArguments(const std::vector<Argument> &arguments, Items *pItems) {
    for (const Argument &argument : arguments) {
        pItems->push_back({Kind::option, std::string(argument.szText) + ".", optionName(argument)});
    }
}

void addSections(const std::vector<Section> &sections, Kind heading, Items *pItems) {
    for (const Section &section : sections) {
        if (*section.szHeading) { pItems->push_back({heading, section.szHeading}); }
        if (*section.szText) {
            pItems->push_back({Kind::paragraph, section.szText});
        } else {
            pItems->push_back({Kind::example, joined(linesOf(section.szLines))});
        }
    }
}

Items makeManual(const Program &program) {
    std::string usage;
    for (const Command &command : program.commands) { usage += synopsis(program, command) + "\n"; }
    Items items = {{Kind::section, "Synopsis"},
                   {Kind::example, usage},
                   {Kind::section, "Description"},
                   {Kind::paragraph, std::string(program.szSummary) + "."}};
    addArguments({program.help, program.version}, &items);
    items.push_back({Kind::section, "Commands"});
    for (const Command &command : program.commands) {
        items.push_back({Kind::subsection, command.szName});
        items.push_back({Kind::paragraph, std::string(command.szSummary) + "."});
        addArguments(command.operands, &items);
        addArguments(command.options, &items);
        addSections(command.sections, Kind::label, &items);
    }
    addSections(program.sections, Kind::section, &items);
    return items;
}

// ---- As input for man ----

// The text as roff prints it unchanged: no escapes, hyphens that can be copied.
std::string roff(const std::string &text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    return result;
}

// Lines of text, of which none is taken for a request.
std::string roffLines(const std::vector<std::string> &lines) {
    std::string result;
    for (const std::string &line : lines) {
        result += (line.front() == '.' || line.front() == '\'' ? "\\&" : "") + line + "\n";
    }
    return result;
}

std::string roffText(const std::string &text) {
    constexpr size_t kWidth = 78;
    return roffLines(wrapped(roff(plain(text)), kWidth));
}

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

// bFirst: the item follows a heading, which begins a paragraph by itself.
std::string roffItem(const Item &item, bool bFirst) {
    const std::string begin = bFirst ? "" : ".PP\n";
    switch (item.kind) {
    case Kind::section: return ".SH " + upperCase(item.text) + "\n";
    case Kind::subsection: return ".SS " + item.text + "\n";
    case Kind::label: return begin + ".B " + roff(item.text) + ":\n";
    case Kind::paragraph: return begin + roffText(item.text);
    case Kind::example: return ".RS 4\n.nf\n" + roffLines(linesOf(roff(item.text))) + ".fi\n.RE\n";
    case Kind::option: return ".TP\n.B " + roff(item.name) + "\n" + roffText(item.text);
    }
    return "";
}

// ---- As Markdown ----

std::string markdownText(const std::string &text) {
    constexpr size_t kWidth = 140;
    return joined(wrapped(text, kWidth));
}

std::string markdownItem(const Item &item) {
    switch (item.kind) {
    case Kind::section: return "## " + item.text + "\n";
    case Kind::subsection: return "### " + item.text + "\n";
    case Kind::label: return "**" + item.text + "**\n";
    case Kind::paragraph: return markdownText(item.text);
    case Kind::example: return "```\n" + item.text + "```\n";
    case Kind::option: return "- `" + item.name + "` " + markdownText(item.text);
    }
    return "";
}

}  // namespace

std::string helpText(const Program &program) {
    std::string text = std::string(program.szSummary) + "\nUsage: " + program.szName +
                       " [OPTIONS] COMMAND\n" + helpOptions({program.help, program.version}) +
                       "\nCommands:\n";
    for (const Command &command : program.commands) {
        text += helpEntry(command.szName, command.szSummary);
    }
    return text + helpSections(program.sections);
}

std::string helpText(const Program &program, const Command &command) {
    std::string text = plain(command.szSummary) + "\nUsage: " + synopsis(program, command) + "\n";
    if (!command.operands.empty()) { text += "\nOperands:\n"; }
    for (const Argument &operand : command.operands) {
        text += helpEntry(std::string(operand.szName) + (operand.pValues ? " ..." : ""),
                          operand.szText);
    }
    std::vector<Argument> options = {program.help};
    options.insert(options.end(), command.options.begin(), command.options.end());
    return text + helpOptions(options) + helpSections(command.sections);
}

std::string manPage(const Program &program, const char *szVersion, const char *szDate) {
    const std::string name = program.szName;
    std::string page = ".TH " + upperCase(name) + " 1 " + szDate + " \"" + name + " " + szVersion +
                       "\" \"User Commands\"\n.SH NAME\n" + name + " \\- " + program.szTopic + "\n";
    Kind before = Kind::paragraph;
    for (const Item &item : makeManual(program)) {
        page += roffItem(item, before == Kind::section || before == Kind::subsection);
        before = item.kind;
    }
    return page;
}

std::string markdownPage(const Program &program) {
    std::string page = "# The command-line tool " + std::string(program.szName) + "\n";
    Kind before = Kind::paragraph;
    for (const Item &item : makeManual(program)) {
        if (item.kind != Kind::option || before != Kind::option) { page += "\n"; }
        page += markdownItem(item);
        before = item.kind;
    }
    return page + "\n<!-- Made by names_tool --markdown-page; what it says stands in "
                  "tools/commands.cpp. -->\n";
}

}  // namespace tool
