#!/bin/sh
# Writes the manual page of the program from its own help.
#
# usage: man.sh PROGRAM VERSION >quorlan.1
set -eu
program=$1

escape() {
    sed -e 's/\\/\\e/g' -e 's/-/\\-/g' -e "s/^[.']/\\\\\\&&/"
}

cat <<HEAD
.TH QUORLAN 1 "" "QuorlanTools $2" "User Commands"
.SH NAME
quorlan \- geometry and model tools for building models
.SH SYNOPSIS
.B quorlan
.I COMMAND
[\fIOPTIONS\fR] ...
.br
.B quorlan
[\fICOMMAND\fR] \fB\-\-help\fR
.SH DESCRIPTION
HEAD
"$program" --help | head -n 1 | escape
cat <<TEXT
.PP
Results go to the standard output, messages to the standard error. Outputs are written whole or not at all.
.SH EXIT STATUS
0 when done; 1 for bad input, or a question answered with "no"; 2 for wrong usage.
.SH COMMANDS
TEXT
for command in $("$program" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p'); do
    printf '.SS quorlan %s\n.nf\n' "$command"
    "$program" "$command" --help | escape
    echo .fi
done
