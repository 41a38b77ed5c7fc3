#!/bin/sh
# Builds the example of README.md the way a user of the library does, and runs it on a captured frame.
# Arguments: a way (the functions below), the library's source and build folders, its version, the folder of installed
# libraries below the prefix, the compiler, and the flags that the library's own compilation imposes.
set -eu
way=$1 source=$2 build=$3 version=$4 libdir=$5 cxx=$6 flags=$7
package=$build/tests/package
prefix=$package/prefix
work=$package/$way

install_library() {
    rm -rf "$prefix"
    cmake --install "$build" --prefix "$prefix" >/dev/null
    # Every header that an installed one includes is installed.
    cd "$prefix/include"
    grep -rhoE '^#include "[^"]+"' . | sed -E 's/#include "(.*)"/\1/' | sort -u | while read -r header; do
        test -e "$header" || test -e "DhcpPlatform/$header" || { echo "not installed: $header" && exit 1; }
    done
}

# consumer ARGUMENTS...: the consumer project, configured with them.
consumer() {
    cmake -S "$source/tests/package/consumer" -B "$work" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" \
        -DEXAMPLE_SOURCE="$work/example.cpp" -DEXPECTED_VERSION="$version" "$@"
    cmake --build "$work"
}

find_package() {
    consumer -DCMAKE_PREFIX_PATH="$prefix"
}

pkg_config() {
    export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
    test "$(pkg-config --modversion DhcpLib)" = "$version"
    # shellcheck disable=SC2046,SC2086  # lists of flags
    "$cxx" -std=c++20 $flags "$work/example.cpp" -o "$work/example" $(pkg-config --cflags --libs DhcpLib) \
        -Wl,-rpath,"$prefix/$libdir"
}

# The library is compiled once more here, so without optimisation, and installed to where it expects its configuration.
add_subdirectory() {
    launcher=$(command -v ccache || true)
    consumer -DDHCPLIB_SOURCE="$source" -DCMAKE_INSTALL_PREFIX="$work/prefix" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
    cmake --install "$work" >/dev/null
    "$work/installed"
}

if [ "$way" = install_library ]; then
    install_library
    exit
fi
rm -rf "$work"
mkdir -p "$work"
awk '/^```cpp/ { inside = 1; next } /^```/ { if (inside) exit } inside' "$source/README.md" >"$work/example.cpp"
"$way"
# The third frame of the capture, a relayed DISCOVER: 342 bytes behind 156.
tail -c +157 "$source/tests/data/captures/v4-relay-dhclient-dhcpd-server.pcap" | head -c 342 | "$work/example" >"$work/printed"
cat "$work/printed"
grep -qxF 'DHCPDISCOVER for 02:c1:00:00:01:01, transaction 919687991, VLAN 10, via 10.20.0.1 at Ethernet1' "$work/printed"
