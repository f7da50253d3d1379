# bash completion for names_tool. Commands and options are those that the tool's own --help lists.
_names_tool() {
    local word=${COMP_WORDS[COMP_CWORD]} tool=${COMP_WORDS[0]} command=${COMP_WORDS[1]} candidates
    COMPREPLY=()
    if [[ $word == -* ]]; then
        [[ $command == -* ]] && command=
        candidates=$("$tool" ${command:+"$command"} --help 2>/dev/null | grep -oE -- '^ +(-h, )?--[a-z-]+' | grep -oE -- '--[a-z-]+')
    elif ((COMP_CWORD == 1)); then
        candidates=$("$tool" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
    else
        compopt -o filenames 2>/dev/null || true  # not while it is tested
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$word")
}
complete -F _names_tool names_tool
