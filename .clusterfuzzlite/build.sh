#!/bin/bash -eu
# Builds the fuzz targets for a fuzzing service, which sets CXX, CXXFLAGS, LIB_FUZZING_ENGINE, SRC, WORK and OUT. Each
# target goes to OUT with its corpus beside it, the libraries to OUT/lib. These targets are left out: FuzzDhcpRelay and
# FuzzText need packages that the service's image lacks; the others whose name ends in Text read a toggle file of the
# sources, which the service does not have when it runs them.

cd "$SRC/dhcplib"
cmake -S . -B "$WORK/dhcplib" -G Ninja -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_BUILD_RPATH='$ORIGIN/lib' -DDHCPLIB_LIBFUZZER=ON \
    -DDHCPLIB_FUZZING_ENGINE="$LIB_FUZZING_ENGINE" -DDHCPLIB_BUILD_TESTS=OFF -DDHCPLIB_BUILD_TOOLS=OFF \
    -DDHCPLIB_BUILD_AGENTS=OFF -DDHCPLIB_BUILD_EXAMPLES=OFF
cmake --build "$WORK/dhcplib"

mkdir -p "$OUT/lib"
cp "$WORK"/dhcplib/platform/libDhcpPlatform.so.[0-9] "$WORK"/dhcplib/DhcpLib/libDhcpLib.so.[0-9] "$OUT/lib"
for target in "$WORK"/dhcplib/fuzz/targets/*; do
    name=${target##*/}
    [[ $name != *Text ]] || continue
    cp "$target" "$OUT"
    (cd "fuzz/corpus/$name" && zip -q -r -X "$OUT/${name}_seed_corpus.zip" .)
done
