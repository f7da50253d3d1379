#include "tools/man_page.hpp"

#include <algorithm>
#include <sstream>

#include <CLI/CLI.hpp>

namespace tool {
namespace {

// The text as roff prints it unchanged: no escapes, hyphens that can be copied, no line taken for a request.
std::string roff(const std::string &text) {
    std::string result;
    for (const char c : text) {
        if (result.empty() && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    return result;
}

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

// Headings become sections of the page, or paragraphs in bold within a command's section.
std::string footer(const CLI::App &app, bool bSections) {
    std::istringstream lines(app.get_footer());
    std::string result;
    std::string begin = ".PP\n";  // of the next line of text
    bool bVerbatim = false;
    for (std::string line; std::getline(lines, line);) {
        const bool bIndented = !line.empty() && line.front() == ' ';
        if (bIndented != bVerbatim) result += bIndented ? ".RS 4\n.nf\n" : ".fi\n.RE\n";
        bVerbatim = bIndented;
        if (line.empty()) {
            begin = ".PP\n";
        } else if (line.back() == ':') {
            if (bSections) {
                result += ".SH " + upperCase(line.substr(0, line.size() - 1)) + "\n";
            } else {
                result += begin;
                result += ".B " + line + "\n";
            }
            begin.clear();
        } else {
            result += begin + roff(line.substr(line.find_first_not_of(' '))) + "\n";
            begin.clear();
        }
    }
    return result + (bVerbatim ? ".fi\n.RE\n" : "");
}

std::string options(const CLI::App &app) {
    std::string result;
    for (const CLI::Option *pOption : app.get_options([](const CLI::Option *p) { return !p->get_group().empty(); })) {
        const bool bOperand = pOption->get_positional();
        std::string name = pOption->get_name(bOperand, !bOperand);
        std::replace(name.begin(), name.end(), ',', ' ');
        result += ".TP\n.B " + roff(name) + "\n";
        if (!bOperand && !pOption->get_option_text().empty()) result.insert(result.size() - 1, " " + pOption->get_option_text());
        result += roff(pOption->get_description()) + ".\n";
    }
    return result;
}

// "names_tool import [OPTIONS] LIST IMAGE"
std::string synopsis(const CLI::App &app, const std::string &name) {
    const std::string usage = CLI::Formatter().make_usage(&app, name);
    const size_t nLabel = std::string("Usage: ").size();
    return usage.substr(nLabel, usage.find('\n') - nLabel);
}

}  // namespace

std::string manPage(const CLI::App &app, const std::string &version) {
    const std::string &name = app.get_name();
    const auto commands = app.get_subcommands([](const CLI::App *) { return true; });
    std::string page = ".TH " + upperCase(name) + " 1 \"\" \"" + name + " " + version + "\" \"User Commands\"\n";
    page += ".SH NAME\n" + name + " \\- keeps lists of names in images\n.SH SYNOPSIS\n.nf\n";
    for (const CLI::App *pCommand : commands)
        page += roff(synopsis(*pCommand, name + " " + pCommand->get_name())) + "\n";
    page += ".fi\n.SH DESCRIPTION\n" + roff(app.get_description()) + ".\n" + options(app) + ".SH COMMANDS\n";
    for (const CLI::App *pCommand : commands) {
        page += ".SS " + pCommand->get_name() + "\n" + roff(pCommand->get_description()) + ".\n";
        page += options(*pCommand) + footer(*pCommand, false);
    }
    return page + footer(app, true);
}

}  // namespace tool
