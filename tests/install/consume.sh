#!/bin/sh
# Installs the package to a folder of its own, moves it, and builds and runs small programs against it: by
# find_package, and by pkg-config.
# Arguments: the build folder, the folder of this script, a scratch folder, the compiler, the generator.
set -eu
build=$1
source=$2
scratch=$3
compiler=$4
generator=$5
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/first" >"$scratch/install.log"
mv "$scratch/first" "$scratch/moved"

cmake -G "$generator" -S "$source/consumer" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/moved" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_BUILD_TYPE=Release >"$scratch/configure.log"
cmake --build "$scratch/build" >"$scratch/build.log"
"$scratch/build/consumer"
"$scratch/build/c_consumer"

tool="$scratch/moved/bin/qorn"
[ ! -e "$tool" ] || "$tool" --version

pc=$(find "$scratch/moved" -name qorn.pc)
PKG_CONFIG_PATH=$(dirname "$pc")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
"$compiler" -std=c++17 "$source/consumer/main.cpp" -o "$scratch/consumer" $(pkg-config --cflags --libs qorn)
cc -std=c11 "$source/../binding/c_program.c" -o "$scratch/c_consumer" $(pkg-config --cflags --libs qorn_c) -lm
LD_LIBRARY_PATH=$(pkg-config --variable=libdir qorn)
export LD_LIBRARY_PATH
"$scratch/consumer"
"$scratch/c_consumer"
