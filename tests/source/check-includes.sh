#!/bin/sh
# Fails if includes between headers, or between the library's modules, run in a circle, or if the platform includes
# the library. Argument: the source folder.
set -eu
cd "$1"

# "FILE INCLUDED" for each include of our own headers, both as paths from the root.
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
! edges --include='*.cpp' | grep '^platform/.* DhcpLib/'
