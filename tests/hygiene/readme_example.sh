#!/bin/sh
# Fails if the first C++ block of the README is not examples/spectrum.cpp, less its leading comment.
cd "$1" || exit 2
[ -s examples/spectrum.cpp ] || { echo "there is no example"; exit 2; }
awk '/^```cpp$/ { inside = 1; next } /^```$/ && inside { exit } inside' README.md >"${TMPDIR:-/tmp}/qorn-readme.$$"
sed '/^\/\//d' examples/spectrum.cpp | sed '/./,$!d' | diff - "${TMPDIR:-/tmp}/qorn-readme.$$"
status=$?
rm -f "${TMPDIR:-/tmp}/qorn-readme.$$"
exit $status
