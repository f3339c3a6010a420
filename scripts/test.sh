#!/usr/bin/env bash
# Builds and runs every test suite in the default build and under AddressSanitizer and
# UndefinedBehaviorSanitizer, then replays and runs the fuzz targets. Name stages (default, asan, fuzz)
# to run only those.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-tools.sh
stages=("$@")
[ ${#stages[@]} -gt 0 ] || stages=(default asan fuzz)
for stage in "${stages[@]}"; do
  echo "=== $stage"
  case "$stage" in
    fuzz) bash fuzz/run.sh ;;
    default | asan)
      cmake --preset "$stage"
      cmake --build --preset "$stage"
      ctest --preset "$stage"
      ;;
    *) echo "unknown stage '$stage' (default, asan, fuzz)" >&2; exit 2 ;;
  esac
done
