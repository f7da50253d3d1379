#include "tools/manual.hpp"

#include <algorithm>
#include <sstream>
#include <vector>

#include <CLI/CLI.hpp>

namespace tool {
namespace {

// ---- What the manual consists of ----

enum class Kind { section, subsection, label, paragraph, example, option };

// A paragraph's text is one line, an example's as many as it has; what: the option that the text
// describes.
struct Item {
    Kind kind;
    std::string text;
    std::string what = {};
};

using Items = std::vector<Item>;

void addOptions(Items &items, const CLI::App &app, bool bWithHelp) {
    for (const CLI::Option *pOption :
         app.get_options([](const CLI::Option *p) { return !p->get_group().empty(); })) {
        if (pOption == app.get_help_ptr() && !bWithHelp) { continue; }
        const bool bOperand = pOption->get_positional();
        std::string name = pOption->get_name(bOperand, !bOperand);
        if (const size_t iComma = name.find(','); iComma != std::string::npos) {
            name.insert(iComma + 1, " ");
        }
        const std::string &argument = pOption->get_option_text();
        if (!bOperand && argument.find_first_not_of(' ') != std::string::npos) {
            name.append(" ").append(argument);
        }
        items.push_back({Kind::option, pOption->get_description() + ".", name});
    }
}

std::vector<std::string> linesOf(const std::string &text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) { lines.push_back(line); }
    return lines;
}

// A line that ends with ':' is a heading, lines that begin with two blanks are an example, other
// lines fill paragraphs.
void addFooter(Items &items, const CLI::App &app, Kind heading) {
    constexpr size_t kIndent = 2;
    bool bGoesOn = false;  // the line before may be of the same item
    for (const std::string &line : linesOf(app.get_footer())) {
        const bool bText = !line.empty() && line.back() != ':';
        const bool bExample = bText && line.front() == ' ';
        const Kind kind = bExample ? Kind::example : Kind::paragraph;
        if (bText && bGoesOn && items.back().kind == kind) {
            items.back().text += (bExample ? "\n" : " ") + line.substr(bExample ? kIndent : 0);
        } else if (bText) {
            items.push_back({kind, line.substr(bExample ? kIndent : 0)});
        } else if (!line.empty()) {
            items.push_back({heading, line.substr(0, line.size() - 1)});
        }
        bGoesOn = bText;
    }
}

// "names_tool import [OPTIONS] LIST IMAGE"
std::string synopsis(const CLI::App &app, const std::string &name) {
    const std::string usage = CLI::Formatter().make_usage(&app, name);
    const size_t nLabel = std::string("Usage: ").size();
    return usage.substr(nLabel, usage.find('\n') - nLabel);
}

Items makeManual(const CLI::App &app) {
    const auto commands = app.get_subcommands([](const CLI::App *) { return true; });
    std::string usage;
    for (const CLI::App *pCommand : commands) {
        usage += (usage.empty() ? "" : "\n") +
                 synopsis(*pCommand, app.get_name() + " " + pCommand->get_name());
    }
    Items items = {{Kind::section, "Synopsis"},
                   {Kind::example, usage},
                   {Kind::section, "Description"},
                   {Kind::paragraph, app.get_description() + "."}};
    addOptions(items, app, true);
    items.push_back({Kind::section, "Commands"});
    for (const CLI::App *pCommand : commands) {
        items.push_back({Kind::subsection, pCommand->get_name()});
        items.push_back({Kind::paragraph, pCommand->get_description() + "."});
        addOptions(items, *pCommand, false);
        addFooter(items, *pCommand, Kind::label);
    }
    addFooter(items, app, Kind::section);
    return items;
}

// The text in lines of at most nWidth bytes, where its blanks allow.
std::vector<std::string> wrapped(const std::string &text, size_t nWidth) {
    std::istringstream words(text);
    std::vector<std::string> lines(1);
    for (std::string word; words >> word;) {
        if (!lines.back().empty() && lines.back().size() + 1 + word.size() > nWidth) {
            lines.emplace_back();
        }
        lines.back() += (lines.back().empty() ? "" : " ") + word;
    }
    return lines;
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

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

// bFirst: the item stands right behind a heading.
std::string roffItem(const Item &item, bool bFirst) {
    constexpr size_t kWidth = 78;
    const std::string begin = bFirst ? "" : ".PP\n";
    switch (item.kind) {
    case Kind::section: return ".SH " + upperCase(item.text) + "\n";
    case Kind::subsection: return ".SS " + item.text + "\n";
    case Kind::label: return begin + ".B " + roff(item.text) + ":\n";
    case Kind::paragraph: return begin + roffLines(wrapped(roff(item.text), kWidth));
    case Kind::example: return ".RS 4\n.nf\n" + roffLines(linesOf(roff(item.text))) + ".fi\n.RE\n";
    case Kind::option:
        return ".TP\n.B " + roff(item.what) + "\n" + roffLines(wrapped(roff(item.text), kWidth));
    }
    return "";
}

// ---- As Markdown ----

// A word that begins with '-' up to its punctuation is code: as text, several become a dash.
std::string markdownText(const std::string &text) {
    constexpr size_t kWidth = 140;
    std::string result;
    for (std::string line : wrapped(text, kWidth)) {
        for (size_t at = 0; (at = line.find(" -", at)) != std::string::npos;) {
            line.insert(at + 1, 1, '`');
            at = std::min(line.find_first_of(" ,;.)", at + 2), line.size());
            line.insert(at, 1, '`');
        }
        result += line + "\n";
    }
    return result;
}

std::string markdownItem(const Item &item) {
    switch (item.kind) {
    case Kind::section: return "## " + item.text + "\n";
    case Kind::subsection: return "### " + item.text + "\n";
    case Kind::label: return "**" + item.text + "**\n";
    case Kind::paragraph: return markdownText(item.text);
    case Kind::example: return "```\n" + item.text + "\n```\n";
    case Kind::option: return "- `" + item.what + "` " + markdownText(item.text);
    }
    return "";
}

}  // namespace

std::string manPage(const CLI::App &app, const std::string &version, const std::string &date) {
    const std::string &name = app.get_name();
    std::string page = ".TH " + upperCase(name) + " 1 " + date + " \"" + name + " " + version +
                       "\" \"User Commands\"\n";
    page += ".SH NAME\n" + name + " \\- keeps lists of names in images\n";
    Kind before = Kind::paragraph;
    for (const Item &item : makeManual(app)) {
        page += roffItem(item, before == Kind::section || before == Kind::subsection);
        before = item.kind;
    }
    return page;
}

std::string markdownPage(const CLI::App &app) {
    std::string page = "# The command-line tool " + app.get_name() + "\n";
    Kind before = Kind::paragraph;
    for (const Item &item : makeManual(app)) {
        if (item.kind != Kind::option || before != Kind::option) { page += "\n"; }
        page += markdownItem(item);
        before = item.kind;
    }
    return page + "\n<!-- Made by names_tool --markdown-page; what it says stands in "
                  "tools/names_tool.cpp. -->\n";
}

}  // namespace tool
