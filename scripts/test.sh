#!/usr/bin/env bash
# Builds everything and runs every test suite. Pass "asan" to use the sanitizer build.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-tools.sh
preset="${1:-default}"
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
