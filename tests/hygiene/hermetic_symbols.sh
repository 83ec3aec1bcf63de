#!/bin/sh
# Fails if a level's objects define a weak symbol, or one outside the level's namespace, or need a function that is
# not a plain memory operation: the linker could then run one level's code on a processor without it.
objects=$1
level=$2
found=0
while read -r object; do
  [ -n "$object" ] || continue
  # Undefined symbols are fine if they are the level's own or the compiler's memory operations.
  bad=$(nm -C "$object" | awk -v level="QORN::kernels::$level::" '
    { symbol = $0; sub(/^[0-9a-f ]* [A-Za-z] /, "", symbol) }
    / [WVuwv] / { print "weak: " symbol; next }
    / [TDBR] / && index(symbol, level) == 0 { print "outside the namespace: " symbol; next }
    / U / && index(symbol, level) == 0 && symbol !~ /^(mem(cpy|move|set|cmp)|_GLOBAL_OFFSET_TABLE_|__stack_chk_fail)$/ {
      print "needs: " symbol
    }')
  if [ -n "$bad" ]; then
    echo "$(basename "$object"):"
    echo "$bad"
    found=1
  fi
done <"$objects"
exit $found
