#!/bin/sh
# Makes the Debian packages and uses them. As root, where the kernel has overlays, dpkg installs them into a view of this
# machine that is thrown away, uses them as any program there would, and removes them. Else they are unpacked into an
# empty folder and used from there. Either way nothing of the machine changes.
#
# usage: debian.sh BUILD FOLDER COMPILER SOURCE
set -eu

# What the packages must do once they are there. $1: before /usr, $2: a folder with main.cpp, $3: the compiler.
use() {
    "$1/usr/bin/quorlan" --version
    "$1/usr/bin/quorlan" sample -o "$2/sample.qln" --storeys 1
    "$1/usr/bin/quorlan" validate "$2/sample.qln"
    # shellcheck disable=SC2046 # a list of words
    "$3" -std=c++17 "$2/main.cpp" $(pkg-config --cflags --libs quorlan-tools) -o "$2/consumer"
    "$2/consumer"
}

if [ "$1" = --inside ]; then  # the view, as its root. $2: the folder with packages and main.cpp, $3: the compiler
    # shellcheck disable=SC2046 # a list of words
    packages=$(for package in "$2"/*.deb; do dpkg-deb --field "$package" Package; done)
    dpkg --install "$2"/*.deb
    use "" "$2" "$3"
    # shellcheck disable=SC2086 # a list of words
    dpkg --purge $packages
    [ ! -e /usr/bin/quorlan ] || { echo "debian.sh: the program is still there" >&2; exit 1; }
    echo "installed, used and removed"
    exit
fi

build=$1 folder=$2 compiler=$3
rm -rf "$folder" "$build/packages"
mkdir -p "$folder"
(cd "$build" && cpack -G DEB >/dev/null)
cp "$4" "$folder/main.cpp"
for package in "$build"/packages/*.deb; do
    dpkg-deb --info "$package" | sed -n 's/^ \(Package\|Version\|Depends\):/\1:/p'
    dpkg-deb --contents "$package"
done >"$folder/contents.txt"
grep -E '^(Package|Version|Depends):' "$folder/contents.txt"
for file in lib.*/libQuorlanTools.so.[0-9]* lib.*/cmake/QuorlanTools/QuorlanToolsConfig.cmake lib.*/quorlan-tools.pc \
    bin/quorlan share/man/man1/quorlan.1 share/bash-completion/completions/quorlan; do
    grep -q "/usr/$file" "$folder/contents.txt" || { echo "debian.sh: no package has /usr/$file" >&2; exit 1; }
done

view=$folder/view
mkdir "$view"
export build folder view compiler script="$0"
# shellcheck disable=SC2016 # expanded by the shell inside
open_view='
    mount -t tmpfs none "$view" && mkdir -p "$view/upper/packages" "$view/work" "$view/root" &&
    mount -t overlay overlay -o "lowerdir=/,upperdir=$view/upper,workdir=$view/work" "$view/root" &&
    mount --rbind /dev "$view/root/dev" && mount --rbind /proc "$view/root/proc"'
if [ "$(id -u)" -eq 0 ] && unshare --mount sh -c "$open_view" 2>/dev/null; then
    # shellcheck disable=SC2016
    unshare --mount sh -c "$open_view"' &&
        cp "$build"/packages/*.deb "$folder/main.cpp" "$script" "$view/root/packages" &&
        exec chroot "$view/root" sh /packages/debian.sh --inside /packages "$compiler"'
else
    for package in "$build"/packages/*.deb; do dpkg-deb --extract "$package" "$folder"; done
    pkgconfig=$(dirname "$(find "$folder" -name quorlan-tools.pc)")
    PKG_CONFIG_PATH=$pkgconfig LD_LIBRARY_PATH=$pkgconfig/..
    export PKG_CONFIG_PATH LD_LIBRARY_PATH
    use "$folder" "$folder" "$compiler"
    echo "unpacked and used: dpkg installs them where this runs as root and overlays can be mounted"
fi
