#!/bin/bash
# Completes command lines as bash does.
#
# usage: completion.sh PROGRAM SCRIPT
set -eu
# shellcheck disable=SC1090 # as it was written by the program
. "$2"
complete_line() {
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    _quorlan "$1" || true  # as bash, which ignores it
    echo "$* -> ${COMPREPLY[*]}"
}
complete_line "$1" rend
[ "${COMPREPLY[*]}" = render ]
complete_line "$1" render --siz
[ "${COMPREPLY[*]}" = --size ]
complete_line "$1" render model.qln --color ent
[ "${COMPREPLY[*]}" = entity ]
complete_line "$1" pick model.qln --format ''
[ "${COMPREPLY[*]}" = "text json" ]
complete_line "$1" render model
[ "${COMPREPLY[*]}" = "" ]
