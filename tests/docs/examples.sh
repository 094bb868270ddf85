#!/bin/sh
# Every example is under 80 lines, and a page shows a part of it.
#
# usage: examples.sh PROJECT
set -eu
cd "$1"
failures=0
for example in examples/*.cpp; do
    [ "$(wc -l <"$example")" -lt 80 ] || { echo "$example has 80 lines or more"; failures=1; }
    grep -q "^<!-- from $example -->" README.md docs/*.md || { echo "no page shows $example"; failures=1; }
done
exit $failures
