# amalgamate.awk: copies its input and, in place of each include of this project, the file, which is found from the repository's root; a file
# that was copied before, or that the list known has, is left out, and what is not found stays included. Where a macro names a header, the
# header is the macro's default. With hidden=1 what a namespace holds goes to an unnamed one within, so that the linker does not see it.
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
    result = getline line < file
    print result < 0 ? include : "/* ---- " file " ---- */"
    for (; result > 0; result = getline line < file) visit(line)
    close(file)
}
BEGIN {
    split(known, files, " ")
    for (i in files) copied[files[i]] = 1
}
{ visit($0) }
