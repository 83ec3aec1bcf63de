#!/bin/sh
# Fails on a fused multiply-add in a function that does not want one. The list names those that do, a pattern per
# line for "object: count in function": transforms, products and elementary functions.
objects=$1
allowed=$2
found=0
while read -r object; do
  [ -n "$object" ] || continue
  bad=$(objdump -d -C --no-show-raw-insn "$object" | awk '
    /^[0-9a-f]+ <.*>:$/ { name = $0; sub(/^[0-9a-f]+ </, "", name); sub(/>:$/, "", name) }
    /\tv?f(n?m)(add|sub)/ { count[name]++ }
    END { for (n in count) print count[n] " in " n }' | sed "s|^|$(basename "$object"): |" | grep -vEf "$allowed")
  if [ -n "$bad" ]; then
    echo "$bad"
    found=1
  fi
done <"$objects"
exit $found
