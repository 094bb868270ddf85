#!/bin/sh
# Compares the functions that the library exports with the list beside this script.
#
# Inline functions, vtables and type information are left out: which of them a compiler writes is its own affair. They
# must be ours, though.
#
# usage: exports.sh NM LIBRARY [--update]
set -eu
list=$(dirname "$0")/exports.txt
exports=$(mktemp)
trap 'rm -f "$exports"' EXIT

"$1" -D --defined-only -C "$2" >"$exports"
if grep -Ev 'Quorlan::|GeometryObjectLib::' "$exports"; then
    echo "exports.sh: these names are none of ours" >&2
    exit 1
fi

sed -n 's/^[0-9a-f]* T //p' "$exports" |
    sed -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' \
        -e 's/std::__cxx11::basic_string<wchar_t, std::char_traits<wchar_t>, std::allocator<wchar_t> >/std::wstring/g' |
    LC_ALL=C sort -u >"$exports.txt"
trap 'rm -f "$exports" "$exports.txt"' EXIT
if [ "${3:-}" = --update ]; then
    cp "$exports.txt" "$list"
elif ! diff -u "$list" "$exports.txt"; then
    echo "exports.sh: the exported functions changed; if that is meant, run it again with --update" >&2
    exit 1
fi
