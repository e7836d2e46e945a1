#!/usr/bin/env bash
# Builds the kernels with the words of a GPU, each thread of a block as a fiber, and runs the tests of kernels and
# filters with them. Arguments go to ctest.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_packages libboost-context-dev
build threads tests-kernels tests-cuda tests-filters
say "running the threads of each block"
ctest --preset threads --parallel "$(nproc)" "$@"
