#!/bin/sh
# Compiles each public header alone, as C++17, with every warning an error; that of the C interface as C11, too.
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
cd "$3" || exit 2
for language in "c -std=c11" "c++ -std=c++17"; do
  # shellcheck disable=SC2086
  if ! printf '#include "qorn_c.h"\n#include "qorn_c.h"\n' |
    "$compiler" -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I. -x $language -; then
    echo "qorn_c.h does not compile alone with $compiler as ${language%% *}"
    found=1
  fi
done
exit $found
