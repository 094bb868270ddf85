#!/bin/sh
# Makes the Debian packages, unpacks them into an empty folder, and uses what is there: the program, and the headers and
# the library through pkg-config. Nothing of the machine changes.
#
# usage: debian.sh BUILD ROOT COMPILER SOURCE
set -eu
rm -rf "$2" "$1/packages"
(cd "$1" && cpack -G DEB >/dev/null)
mkdir -p "$2"
for package in "$1"/packages/*.deb; do
    dpkg-deb --info "$package" | sed -n 's/^ \(Package\|Version\|Depends\):/\1:/p'
    dpkg-deb --extract "$package" "$2"
done

"$2/usr/bin/quorlan" --version
pkgconfig=$(dirname "$(find "$2" -name quorlan-tools.pc)")
PKG_CONFIG_PATH=$pkgconfig
export PKG_CONFIG_PATH
# shellcheck disable=SC2046 # a list of words
"$3" -std=c++17 "$4" $(pkg-config --cflags --libs quorlan-tools) -o "$2/consumer"
LD_LIBRARY_PATH=$pkgconfig/.. "$2/consumer"
