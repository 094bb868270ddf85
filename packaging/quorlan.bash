# Completion of quorlan in bash: its commands and options, as its own help lists them, and files for all else.
_quorlan() {
    local word=${COMP_WORDS[COMP_CWORD]} choices=
    if [ "$COMP_CWORD" -eq 1 ]; then
        choices="--help --version $("$1" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p')"
    elif [[ $word == -* ]]; then
        choices=$("$1" "${COMP_WORDS[1]}" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+')
    fi
    # shellcheck disable=SC2207 # a list of words
    COMPREPLY=($(compgen -W "$choices" -- "$word"))
}
complete -o default -F _quorlan quorlan
