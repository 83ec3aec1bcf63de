#!/bin/sh
# Compiles each public header alone, as C++17, with every warning an error.
compiler=$1
include=$2
found=0
cd "$include" || exit 2
for header in $(find qorn -name '*.h'); do
  if ! printf '#include "%s"\n#include "%s"\n' "$header" "$header" |
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I. -x c++ -; then
    echo "$header does not compile alone with $compiler"
    found=1
  fi
done
exit $found
