#!/usr/bin/env bash
# Installs the build tools this tree needs when they are missing (Debian; needs root for apt-get).
set -euo pipefail
missing=()
command -v cmake >/dev/null || missing+=(cmake)
command -v g++ >/dev/null || missing+=(g++)
command -v lemon >/dev/null || missing+=(lemon)
[ -f /usr/share/lemon/lempar.c ] || missing+=(lemon)
[ -d /usr/lib/x86_64-linux-gnu/cmake/GTest ] || [ -d /usr/lib/cmake/GTest ] || missing+=(libgtest-dev libgmock-dev)
[ -d /usr/lib/x86_64-linux-gnu/cmake/benchmark ] || [ -d /usr/lib/cmake/benchmark ] || missing+=(libbenchmark-dev)
# The fuzz targets: clang with its libFuzzer runtime.
command -v clang++ >/dev/null || missing+=(clang)
compgen -G "/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a" >/dev/null || missing+=(libclang-rt-14-dev)
# The install tests read the package through pkg-config.
command -v pkg-config >/dev/null || missing+=(pkgconf)
# The scene reader of tarsel-fx compile.
[ -f /usr/include/nlohmann/json.hpp ] || missing+=(nlohmann-json3-dev)
# Not needed, but rebuilds on the same machine are much quicker with it.
command -v ccache >/dev/null || missing+=(ccache)
if [ ${#missing[@]} -gt 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "Missing: ${missing[*]}. Install them with: sudo apt-get install -y ${missing[*]}" >&2
    exit 1
  fi
  echo "Installing: ${missing[*]}"
  apt-get update -qq && apt-get install -y -qq "${missing[@]}"
fi
