#!/usr/bin/env bash
# Runs the tool tests and the tools on the shipped libraries and fixtures under valgrind's memcheck;
# any error or definite leak fails. Slow, so not part of CI.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v valgrind >/dev/null || { echo "valgrind is not installed (apt-get install valgrind)" >&2; exit 1; }
cmake --preset default >/dev/null
cmake --build --preset default --target test_tools tarsel-fx qlsl-check
memcheck=(valgrind --error-exitcode=1 --leak-check=full --errors-for-leak-kinds=definite --show-leak-kinds=definite --quiet)
data=tests/data
run() {
  echo "== $*"
  "${memcheck[@]}" "$@" >/dev/null
}
run build/tests/test_tools
fx=build/tools/tarsel-fx/tarsel-fx
run "$fx" check -I shaders shaders/*.tsl
run "$fx" preprocess -I $data/tools $data/tools/macros.tsl
run "$fx" print -I shaders shaders/Sampling.tsl
# Failing runs must be clean too: their exit status is the tool's, not valgrind's (which is 1 on errors
# only through --error-exitcode, so a tool exit of 1 is told apart by the log).
for args in "check -I $data/tools $data/tools/syntax_error.tsl" "check no_such_file.tsl" "print -I shaders shaders/Surfaces.tsl"; do
  echo "== $fx $args"
  log=$(mktemp)
  "${memcheck[@]}" --log-file="$log" $fx $args >/dev/null 2>&1 || true
  if [ -s "$log" ]; then cat "$log"; rm -f "$log"; exit 1; fi
  rm -f "$log"
done
ql=build/tools/qlsl-check/qlsl-check
run $ql $data/qlsl/surface_root.qlray $data/qlsl/surface_graph.qlray $data/qlsl/surface.qlvert
echo "valgrind: no errors"
