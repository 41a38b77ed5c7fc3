#!/bin/sh
# Fails if headers or modules of the library include each other in a cycle, if the platform includes the library, or if
# a header in an internal/ folder is included outside of the library's sources. Argument: the source folder.
set -eu
cd "$1"

# Prints "FILE INCLUDED" for each include of our own headers, as paths relative to the source folder.
edges() {
    grep -rHo --include='*.h' "$@" '^#include "[^"]*"' platform DhcpLib |
        sed -e 's/:#include "/ /' -e 's/"$//' |
        while read -r file included; do
            case $included in
                DhcpLib/*) echo "$file $included" ;;
                *) echo "$file platform/$included" ;;
            esac
        done
}
# A module is a header with the folder of its name: DhcpLib/DhcpHdr.h and DhcpLib/DhcpHdr/.
modules() {
    sed -E -e 's#(platform|DhcpLib)/([^/. ]*)[^ ]*#\1/\2#g' | awk '$1 != $2' | sort -u
}

edges | tsort >/dev/null
edges | modules | tsort >/dev/null
# Fails if there is input, and prints it.
forbidden() {
    if grep .; then echo "$1" >&2 && exit 1; fi
}
edges --include='*.cpp' | sed -n '/^platform\/.* DhcpLib\//p' | forbidden 'the platform must not include the library'
edges | sed -e '/ .*\/internal\//!d' -e '/^[^ ]*\/internal\//d' | forbidden 'an installed header must not include an internal one'
for folder in agents examples tools; do
    [ ! -d $folder ] || grep -rn --include='*.h' --include='*.cpp' '^#include.*/internal/' $folder
done | forbidden 'a program must not include an internal header'
