# Makes the headers' plain comments those that Doxygen reads; the headers stay as they are. A comment in front of a declaration describes it,
# one behind a field that field; "---- Title ----" begins a group; indented lines are a table.

# The text as Doxygen prints it unchanged, but for names of functions, which become links. Quoted text it prints as it is.
function escaped(text,    parts, n, i, result) {
    n = split(text, parts, "\"")
    for (i = 1; i <= n; ++i) {
        if (i % 2) {
            gsub(/[%#<>&@\\]/, "\\\\&", parts[i])
            gsub(/(NamesManager|Host[A-Za-z]*)_[A-Z][A-Za-z]+/, "#&", parts[i])
        }
        result = result (i > 1 ? "\"" : "") parts[i]
    }
    return result
}
function closeGroup() {
    if (inGroup) print (style == "//" ? "    /// @}" : "/** @} */")
    inGroup = 0
}
function title(line) {
    sub(/^ *(\/\*|\/\/) ---- /, "", line)
    sub(/ -+( \*\/)?$/, "", line)
    return escaped(line)
}
FNR == 1 { style = FILENAME ~ /\.hpp$/ ? "//" : "/*" }

# ---- Inside a comment of several lines ----
inComment {
    isEnd = /\*\/$/
    isTable = /^ \*     /
    if (isTable != inTable) print (isTable ? "@verbatim" : "@endverbatim")
    inTable = isTable
    text = $0
    sub(/ *\*\/$/, "", text)
    sub(/^ \*( \*\/$)?/, "", text)
    if (text == "/") text = ""
    if (isParagraph && match(text, /^ [A-Z][a-z]+( [a-z]+)?\. /)) text = " **" substr(text, 2, RLENGTH - 2) "**" substr(text, RLENGTH)
    isParagraph = text == ""
    print (isTable ? text : " *" escaped(text))
    if (isEnd) {
        print (opensGroup ? " * @{ */" : " */")
        inComment = inTable = opensGroup = 0
    }
    next
}

# ---- Headers in C style ----
style == "/*" && /^\/\* ---- / {
    closeGroup()
    inGroup = 1
    print "/** @name " title($0)
    if (/\*\/$/) { print " * @{ */" } else { inComment = opensGroup = 1 }
    next
}
style == "/*" && /^ *\/\* / {
    text = $0
    sub(/^ *\/\* /, "", text)
    print (FNR == 1 ? "/** @file\n * " : "/** ") escaped(text_without_end(text)) (/\*\/$/ ? " */" : "")
    inComment = !/\*\/$/
    next
}
function text_without_end(text) {
    sub(/ *\*\/$/, "", text)
    return text
}
style == "/*" && /[;,] *\/\* .* \*\/$/ {
    at = index($0, "/* ")
    print substr($0, 1, at - 1) "/**< " escaped(text_without_end(substr($0, at + 3))) " */"
    next
}
style == "/*" && /^#ifdef __cplusplus/ && inGroup { closeGroup() }

# ---- Headers in C++ style ----
style == "//" && FNR == 1 { print "/// @file" }
style == "//" && /^ *\/\/ ---- / {
    closeGroup()
    inGroup = 1
    print "    /// @name " title($0)
    print "    /// @{\n"
    next
}
style == "//" && /^private:|^};/ { closeGroup() }
style == "//" && /^ *\/\/ / {
    at = index($0, "//")
    print substr($0, 1, at - 1) "/// " escaped(substr($0, at + 3))
    next
}
style == "//" && /  \/\/ / {
    at = index($0, "  // ")
    print substr($0, 1, at - 1) "  ///< " escaped(substr($0, at + 5))
    next
}
{ print }
