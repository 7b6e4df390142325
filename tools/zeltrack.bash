# SPDX-License-Identifier: MIT
#
# Completion for bash. Commands and options are read from the command's own help, so that nothing is told twice.
_zeltrack()
{
    local word=${COMP_WORDS[COMP_CWORD]} words
    if [ "$COMP_CWORD" -eq 1 ]; then
        words="$("$1" --help 2>/dev/null | sed -n 's/^  \([a-z][a-z]*\)  .*/\1/p') --help --version"
    elif [[ $word == -* ]]; then
        words=$("$1" "${COMP_WORDS[1]}" --help 2>/dev/null | sed -n 's/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n')
    else
        return  # files, by the default below
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _zeltrack zeltrack
