# amalgamate.awk: prints the given files one after the other, each header that one of them includes in front of it, none twice, and none that
# known lists. For sources (mode=source) so that they can share a translation unit:
#   - Their unnamed namespaces must not meet. That of names/storing.cpp becomes part of a namespace names_storing_cpp. Of what the source has
#     outside, bodies of functions begin with a using directive for it, as for what the source's own using directives name; elsewhere, in
#     records mostly, names from it are qualified.
#   - namespace names and namespace host are of this translation unit alone, which their sources cannot be.
#   - A macro of a source ends with it.
# This relies on nothing but the formatting: what lies in a namespace is not indented. What it took for something else would not compile.

function isKnown(file,    bKnown) {
    bKnown = file in printed
    printed[file] = 1
    return bKnown
}

# For the functions that follow in this source.
function direct(name) {
    if (!index(directives, name ";")) directives = directives "    using namespace " name ";\n"
}

function beginPart(file) {
    print "\n/* ---- " file " ---- */"
}

# The namespace that a line opens or closes, "" for an unnamed one.
function nameOf(line) {
    gsub(/^(}  \/\/ )?namespace ?| ?\{$/, "", line)
    return line
}

function openNamespace(line,    name) {
    name = nameOf(line)
    if (name == "") {
        bUnnamed = 1
        direct("::" (outer == "" ? "" : outer "::") part)
        return "namespace " part " {\nnamespace {"
    }
    outer = outer (outer == "" ? "" : "::") name
    return line "\nnamespace {"
}

function closeNamespace(line) {
    if (nameOf(line) == "") {
        bUnnamed = 0
    } else if (!sub(/::[a-z_]+$/, "", outer)) {
        outer = ""
    }
    return "}\n" line
}

# Keeps the name that a line declares in the unnamed namespace.
function noteName(line,    words) {
    if (line !~ /^[A-Za-z[]/ || line ~ /^(template|static_assert)/) return
    sub(/^\[\[.*\]\] /, "", line)
    sub(/ ?[=({[;].*| : .*/, "", line)
    qualified[part, words[split(line, words, /[ *&]+/)]] = "::" (outer == "" ? "" : outer "::") part "::"
}

# Qualifies the names of the unnamed namespace that stand in a line outside, but for its comment.
function qualify(line,    result, word, comment) {
    if (match(line, /  ?\/[\/*].*/)) {
        comment = substr(line, RSTART)
        line = substr(line, 1, RSTART - 1)
    }
    while (match(line, /[A-Za-z_][A-Za-z_0-9]*/)) {
        word = substr(line, RSTART, RLENGTH)
        result = result substr(line, 1, RSTART - 1)
        if (result !~ /[.:>"]$/) result = result qualified[part, word]
        result = result word
        line = substr(line, RSTART + RLENGTH)
    }
    return result line comment
}

# A line outside the unnamed namespace. declaration: what has been read of one that has not ended; bBody: inside a function.
function visitOutside(line,    bFunction) {
    if (line ~ /^ *(\/[\/*]|\* )/) return line
    if (line ~ /^[}A-Za-z[]/) {
        bBody = 0
        declaration = ""
    }
    if (bBody || line ~ /^(}.*)?$/) return line
    line = qualify(line)
    declaration = declaration line
    bFunction = line ~ /\{$/ && declaration ~ /\(/ && declaration !~ /^(struct|class|union|enum) / && declaration !~ / = /
    if (!bFunction) return line
    bBody = 1
    return line "\n" directives
}

function visitSourceLine(line,    words) {
    if (line ~ /^namespace .*\{$/) return openNamespace(line)
    if (line ~ /^\}  \/\/ namespace/) return closeNamespace(line)
    if (line ~ /^using namespace [a-z_:]+;$/) {
        split(line, words, /[ ;]/)
        direct("::" words[3])
        return ""
    }
    if (line ~ /^#define /) {
        split(line, words, /[ (]/)
        macros = macros "#undef " words[2] "\n"
    }
    if (!bUnnamed) return visitOutside(line)
    noteName(line)
    return line
}

# A header that is read inside a source has no directives, macros or unnamed namespaces of its own.
function printFile(file,    line, quoted, bSource) {
    bSource = file ~ /\.cpp$/
    if (bSource) {
        part = file
        gsub(/[^a-z_0-9]/, "_", part)
        directives = macros = ""
    }
    beginPart(file)
    while ((getline line < file) > 0) {
        if (line ~ /^#include "/) {
            split(line, quoted, "\"")
            if (!isKnown(quoted[2])) {
                printFile(quoted[2])
                beginPart(file)
            }
        } else if (bSource) {
            print visitSourceLine(line)
        } else if (mode == "source" && line ~ /^(}  \/\/ )?namespace/) {
            print line ~ /^n/ ? openNamespace(line) : closeNamespace(line)
        } else {
            print line
        }
    }
    close(file)
    if (bSource) printf "%s", macros
}

BEGIN {
    split(known, names, " ")
    for (i in names) isKnown(names[i])
    for (i = 1; i < ARGC; ++i) {
        if (!isKnown(ARGV[i])) printFile(ARGV[i])
    }
}
