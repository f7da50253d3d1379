# amalgamate.awk: copies its input and puts files of this project, which it finds from the
# repository's root, in place of their includes. A file that was copied before or is in the list
# known is left out; what is not found stays included. Where a macro names a header, its default is
# taken. With hidden=1 what a namespace holds goes to an unnamed one within, so that the linker does
# not see it.
function visit(line,    words) {
    split(line, words, /[ "]+/)
    if (line ~ /^#define [A-Z_]+_HEADER "/) defaults[words[2]] = words[3]
    if (line ~ /^#include ["A-Z]/) {
        copy(words[2] in defaults ? defaults[words[2]] : words[2], line)
    } else {
        if (hidden && line ~ /^}  \/\/ namespace [a-z]/) print "}"
        print line
        if (hidden && line ~ /^namespace [a-z].*\{$/) print "namespace {"
    }
}
function copy(file, include,    line, result) {
    if (copied[file]++) return
    result = (getline line < file)
    print result < 0 ? include : "/* ---- " file " ---- */"
    for (; result > 0; result = (getline line < file)) visit(line)
    close(file)
}
BEGIN { for (i = split(known, files, " "); i > 0; --i) copied[files[i]] = 1 }
{ visit($0) }
