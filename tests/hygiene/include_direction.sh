#!/bin/sh
# Fails on an include that points to a higher layer: infra <- math <- dsp <- utils <- binding, tool.
cd "$1" || exit 2
layers="infra math dsp utils binding tool"
found=0
rank() {
  n=0
  for layer in $layers; do
    [ "$layer" = "$1" ] && { echo "$n"; return; }
    n=$((n + 1))
  done
  echo -1
}
looked=0
folders=
for folder in include/qorn src binding tool; do
  [ ! -d "$folder" ] || folders="$folders $folder"
done
# shellcheck disable=SC2086
for file in $(find $folders -name '*.h' -o -name '*.cpp' -o -name '*.inc'); do
  from=$(printf '%s\n' "$file" | sed -E 's,^(include/qorn|src)/,,; s,/.*,,')
  own=$(rank "$from")
  [ "$own" -ge 0 ] || continue
  looked=$((looked + 1))
  for to in $(sed -nE 's,^ *# *include *[<"](qorn/)?(\.\./)*(infra|math|dsp|utils|binding)/.*,\3,p' "$file"); do
    if [ "$(rank "$to")" -gt "$own" ]; then
      echo "$file includes from $to"
      found=1
    fi
  done
done
[ "$looked" -gt 0 ] || { echo "no file was looked at"; exit 2; }
exit $found
