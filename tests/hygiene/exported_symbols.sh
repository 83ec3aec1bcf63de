#!/bin/sh
# Fails if a shared library exports anything else than the list says. To accept a change of the interface:
#   sh tests/hygiene/exported_symbols.sh LIBRARY --print >tests/hygiene/exported_symbols.txt
# and for the C interface, whose library is named libqorn_c, into exported_c_symbols.txt.
library=$1
list=$2
case "${library##*/}" in
  libqorn_c.*) ours='^(qorn_|QORN_C_)' ;;
  *) ours='^((vtable|typeinfo|typeinfo name) for )?QORN::' ;;
esac
symbols=$(nm -D -C --defined-only "$library" | sed -E 's/^[0-9a-f]+ //')
# Weak symbols of the standard library's templates come with every C++ library; all else has to be in the namespace.
others=$(echo "$symbols" | grep -v '^[WVu] ' | cut -c3- | grep -vE "$ours")
if [ -n "$others" ]; then
  echo "exported from outside the library's namespace:"
  echo "$others"
  exit 1
fi
now=$(echo "$symbols" | cut -c3- | grep -E "$ours" | LC_ALL=C sort -u)
if [ "$list" = --print ]; then
  echo "$now"
elif [ "$now" != "$(cat "$list")" ]; then
  echo "$now" | diff "$list" - | sed -n 's/^</gone:/p; s/^>/new: /p'
  exit 1
fi
