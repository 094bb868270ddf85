#!/bin/sh
# Draws the pictures of the pages again and compares them with those that are there.
#
# usage: pictures.sh PYTHON IMAGES FOLDER
set -eu
rm -rf "$3"
mkdir -p "$3"
"$1" "$2/draw.py" "$3"
for picture in "$2"/*.svg; do
    cmp "$picture" "$3/$(basename "$picture")" || { echo "pictures.sh: run docs/images/draw.py" >&2; exit 1; }
done
