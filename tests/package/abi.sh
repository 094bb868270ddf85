#!/bin/sh
# Compares what a program compiles into itself of our classes (sizes, members, virtual functions, enumerators) with the
# list beside this script. Abigail reads it off the debug information of the public headers.
#
# usage: abi.sh ABIDW COMPILER INCLUDE [--update]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$3" && find . -name '*.h') | LC_ALL=C sort | sed 's/.*/#include "&"/' >"$work/all.cpp"
echo 'int AllHeaders() { return 0; }' >>"$work/all.cpp"
always=-femit-class-debug-always  # GCC leaves out classes whose virtual functions are compiled elsewhere
"$2" $always -fsyntax-only -x c++ /dev/null 2>/dev/null || always=
# shellcheck disable=SC2086 # none or one
"$2" -std=c++17 -g -fno-eliminate-unused-debug-types $always -shared -fPIC -I "$3" "$work/all.cpp" -o "$work/all.so"
"$1" --load-all-types --headers-dir "$3" "$work/all.so" --out-file "$work/all.xml"
awk -f "$here/layout.awk" "$work/all.xml" | LC_ALL=C sort -u >"$work/abi.txt"

if [ "${4:-}" = --update ]; then
    cp "$work/abi.txt" "$here/abi.txt"
elif ! diff -u "$here/abi.txt" "$work/abi.txt"; then
    echo "abi.sh: programs that were compiled before may break; if that is meant, run it again with --update" >&2
    exit 1
fi
