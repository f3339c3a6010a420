#!/usr/bin/env bash
# The main job: builds the command-line host and checks every shipped shader library with it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-tools.sh
cmake --preset default >/dev/null
cmake --build --preset default --target tarsel-fx
shopt -s nullglob
files=(shaders/*.tsl)
if [ ${#files[@]} -eq 0 ]; then
  echo "No shader libraries under shaders/." >&2
  exit 1
fi
./build/tools/tarsel-fx/tarsel-fx check -I shaders "${files[@]}"
