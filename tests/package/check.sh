#!/bin/sh
# Uses the library as its users do. Arguments: a check (the last functions below), the source folder of the library, the
# folder to build in, the version of the library, the folder of libraries below an installation prefix, the compiler of
# this build, and another compiler.
set -eu
check=$1 source=$2 package=$3 version=$4 libdir=$5 cxx=$6 other_cxx=$7
prefix=$package/prefix
work=$package/$check
launcher=
[ -n "${CCACHE_DISABLE-}" ] || launcher=$(command -v ccache || true)
number=64999  # not the default
# Each consumer defines a macro with the name of the CMake variable, which must not change anything.
definitions=-DDHCPLIB_ENTERPRISE_NUMBER=1
warnings='-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror'

# consumer COMPILER ARGUMENTS...: builds the consumer project, configured with the arguments.
consumer() {
    compiler=$1
    shift
    cmake -S "$source/tests/package/consumer" -B "$work" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_CXX_FLAGS="$definitions $warnings" -DEXAMPLE_SOURCE="$work/example.cpp" -DEXPECTED_VERSION="$version" "$@"
    cmake --build "$work"
}

# Runs the example of README.md on a captured frame.
run_example() {
    # The third frame of the capture, a relayed DISCOVER: 342 bytes at offset 156.
    tail -c +157 "$source/tests/data/captures/v4-relay-dhclient-dhcpd-server.pcap" | head -c 342 |
        "$work/example" >"$work/printed"
    cat "$work/printed"
    grep -qxF 'DHCPDISCOVER for 02:c1:00:00:01:01, transaction 919687991, VLAN 10, via 10.20.0.1 at "Ethernet1"' \
        "$work/printed"
}

# Compiles the library again, without optimisation and with precompiled headers, which take a third of the time.
# Installs it to where it looks for its configuration.
add_subdirectory() {
    rm -rf "$prefix"
    consumer "$other_cxx" -DDHCPLIB_SOURCE="$source" -DDHCPLIB_ENTERPRISE_NUMBER=$number -DDHCPLIB_PRECOMPILE_HEADERS=ON \
        -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
    cmake --install "$work" >/dev/null
    "$work/installed" "$version" $number
    run_example
}

find_package() {
    consumer "$cxx" -DCMAKE_PREFIX_PATH="$prefix"
    "$work/installed" "$version" $number
    run_example
}

pkg_config() {
    export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
    test "$(pkg-config --modversion DhcpLib)" = "$version"
    flags=$(pkg-config --cflags --libs DhcpLib)
    eval "set -- $flags"  # the flags are quoted for a shell
    set -- "$@" "-Wl,-rpath,$prefix/$libdir"
    "$cxx" -std=c++20 "$work/example.cpp" -o "$work/example" "$@"
    "$cxx" -std=c++20 "$definitions" "$source/tests/package/consumer/Installed.cpp" -o "$work/installed" "$@"
    "$work/installed" "$version" $number
    run_example
}

# Links a program that names every declaration of the installed headers, and looks for exported symbols that no header
# declares. Inline code of headers leads to weak symbols. Constructors, destructors and type information have variants.
declarations() {
    for python in python3 /usr/bin/python3; do
        ! "$python" -c 'import clang.cindex' 2>/dev/null || break
    done
    "$python" "$source/script/declarations.py" "$prefix/include" "$work/declarations.cpp"
    "$cxx" "$work/declarations.cpp" -o "$work/declarations" -L"$prefix/$libdir" -lDhcpLib -lDhcpPlatform \
        -Wl,-rpath,"$prefix/$libdir"
    "$work/declarations"

    variants='s/([CD])[0-9]([EI])/\1x\2/; s/^_ZTS/_ZTI/'
    sed -nE "s/.*__asm__\(\"(.*)\"\).*/\1/; T; $variants; p" "$work/declarations.cpp" | sort -u >"$work/declared"
    nm -D --defined-only "$prefix/$libdir"/libDhcp*.so | awk '$2 ~ /^[TDBR]$/ { print $3 }' | sed -E "$variants" |
        sort -u >"$work/exported"
    comm -13 "$work/declared" "$work/exported" >"$work/undeclared"
    [ -s "$work/exported" ] && [ ! -s "$work/undeclared" ] || { cat "$work/undeclared" && return 1; }
}

# build_parts FOLDER...: builds folders of the sources with the other compiler. Building is the check: the tests expect
# the default enterprise number.
build_parts() {
    parts=$(printf '%s;' "$@")
    cmake -S "$source/tests/package/programs" -B "$work" -G Ninja -DCMAKE_CXX_COMPILER="$other_cxx" -DPARTS="$parts" \
        -DCMAKE_PREFIX_PATH="$prefix" -DDHCPLIB_SOURCE="$source" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
    cmake --build "$work"
}

# These two take minutes, so script/clang runs them, not CTest.
programs() {
    build_parts tools/cli tools/dhcptool agents/dhcprelay examples
}

programs_and_tests() {
    build_parts tools/cli tools/dhcptool agents/dhcprelay examples tests
}

rm -rf "$work"
mkdir -p "$work"
awk '/^```cpp/ { inside = 1; next } /^```/ { if (inside) exit } inside' "$source/README.md" >"$work/example.cpp"
"$check"
