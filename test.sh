#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the test suite; the exit code tells whether all passed.
#   ./test.sh                     the release's code
#   ./test.sh asan | tsan | debug the same suite under sanitizers, or unoptimized
#   ./test.sh clang               the same suite under the sanitizers of the other compiler
#   ./test.sh [preset] ARGUMENT.. further arguments go to ctest: ./test.sh tsan -L threads
set -eu

root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
cd "$root"

preset=test
case ${1-} in
    test | asan | clang | tsan | debug) preset=$1 && shift ;;
esac

. scripts/packages.sh
needPackages cmake:cmake g++:c++ ninja-build:ninja python3:python3 libgtest-dev:/usr/include/gtest/gtest.h \
    libgmock-dev:/usr/include/gmock/gmock.h libbenchmark-dev:/usr/include/benchmark/benchmark.h \
    python3-numpy:/usr/lib/python3/dist-packages/numpy
if [ "$preset" = clang ]; then
    needPackages clang-14:clang++-14 libclang-rt-14-dev:/usr/lib/llvm-14/lib/clang/14.0.6/lib/linux
fi

cmake --preset "$preset"
cmake --build --preset "$preset"

# The thread sanitizer lays out the address space by hand and fails to start where the kernel scatters addresses
# more widely than it knows of. Without scattering it always starts.
launcher=()
if [ "$preset" = tsan ] && setarch "$(uname -m)" -R true 2>/dev/null; then
    launcher=(setarch "$(uname -m)" -R)
fi
"${launcher[@]}" ctest --preset "$preset" -j "$(nproc)" --no-tests=error "$@"
