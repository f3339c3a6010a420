#!/usr/bin/env bash
# Builds the fuzz targets, replays each checked-in corpus input by input, then runs each target for a fixed
# number of inputs from a fixed seed, so that a run is repeatable. A crash, leak, timeout or sanitizer report
# fails. Findings are kept under build-fuzz/artifacts/.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

# About a minute each on one core of the CI machine.
declare -A runs=([loader]=50000 [print]=45000 [device]=120000 [scene]=450000)
declare -A dict=([loader]=tsl [print]=tsl [device]=qlsl [scene]=json)
artifacts=build-fuzz/artifacts
mkdir -p "$artifacts"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
options=(-max_len=16384 -timeout=30 -rss_limit_mb=2560 -print_final_stats=1)

for target in loader print device scene; do
  bin=build-fuzz/fuzz/fuzz_$target
  corpus=fuzz/corpus/$target
  echo "== fuzz_$target: replaying $corpus"
  find "$corpus" -type f -print0 | xargs -0 "$bin" "${options[@]}" -artifact_prefix="$artifacts/$target-" \
    >"$scratch/replay.log" 2>&1 || { cat "$scratch/replay.log"; exit 1; }
  echo "== fuzz_$target: ${runs[$target]} inputs from seed 1"
  mkdir -p "$scratch/$target"
  # New inputs go to the scratch folder: the checked-in corpus only grows by a deliberate merge.
  "$bin" "${options[@]}" -seed=1 -runs="${runs[$target]}" -dict="fuzz/dict/${dict[$target]}.dict" \
    -artifact_prefix="$artifacts/$target-" "$scratch/$target" "$corpus" >"$scratch/run.log" 2>&1 ||
    { tail -n 60 "$scratch/run.log"; exit 1; }
  grep -E "^#[0-9]+ +DONE|stat::" "$scratch/run.log" || true
done
