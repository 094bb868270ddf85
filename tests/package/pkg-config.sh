#!/bin/sh
# Compiles a program with a plain compiler line and what pkg-config says, and runs it.
#
# usage: pkg-config.sh COMPILER PREFIX LIBDIR SOURCE PROGRAM
set -eu
PKG_CONFIG_PATH=$2/$3/pkgconfig
export PKG_CONFIG_PATH
# shellcheck disable=SC2046 # a list of words
"$1" -std=c++17 "$4" $(pkg-config --cflags --libs quorlan-tools) -o "$5"
LD_LIBRARY_PATH=$2/$3 "$5"
