#!/bin/sh
# Compiles every public header alone, twice included, as a caller would under strict warnings.
#
# usage: headers.sh INCLUDE COMPILER OPTION...
set -eu
cd "$1"
shift
failures=0
for header in $(find . -name '*.h' | LC_ALL=C sort); do
    printf '#include "%s"\n#include "%s"\n' "$header" "$header" |
        "$@" -x c++ -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I . - || {
        echo "headers.sh: $header does not compile alone: $*" >&2
        failures=$((failures + 1))
    }
done
[ "$failures" -eq 0 ]
