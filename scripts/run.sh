#!/usr/bin/env bash
# The main job: builds the command-line host and compiles every example scene with the shipped shader
# libraries on the reference device, one summary line per scene. The events of each scene are kept under
# build/examples/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-tools.sh
cmake --preset default >/dev/null
cmake --build --preset default --target tarsel-fx >/dev/null
shopt -s nullglob
scenes=(examples/*.json)
if [ ${#scenes[@]} -eq 0 ]; then
  echo "No scenes under examples/." >&2
  exit 1
fi
mkdir -p build/examples
failed=0
for scene in "${scenes[@]}"; do
  name=$(basename "$scene" .json)
  events=build/examples/$name.events
  status=0
  ./build/tools/tarsel-fx/tarsel-fx compile -I shaders "$scene" >"$events" 2>"$events.err" || status=$?
  # The errors, without the library's progress lines.
  grep -v '^Acquired shader source' "$events.err" >&2 || true
  echo "$scene: $(tail -n 1 "$events")"
  [ "$status" -eq 0 ] || failed=1
done
exit $failed
