#!/usr/bin/env bash
# Compiles and links the CUDA build for one architecture, without running it, and prints what its kernels take
# (kernel-table.sh). Ends with one line, "CUDA check passed: " and what was linked, or "CUDA check skipped: " and why. A
# build that fails is a failure, and so is a kernel that spills registers and is not listed.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

architecture=${ZEL_CUDA_CHECK_ARCHITECTURE:-90}
folder=$root/build-cuda

skip() { echo "CUDA check skipped: $*"; exit 0; }

nvcc=$(command -v nvcc) || skip "there is no nvcc on the PATH"
major=$("$nvcc" --version | sed -n 's/.*release \([0-9]*\)\..*/\1/p')
[ -n "$major" ] || skip "$nvcc does not tell its version"

# NPP comes with most toolkits; the vendor's wheel stands in for it.
toolkit=$(dirname "$(dirname "$(readlink -f "$nvcc")")")
if ! find "$toolkit" -name nppi_filtering_functions.h -print -quit | grep -q .; then
    command -v python3 >/dev/null || skip "the toolkit has no NPP, and there is no python3 to take its wheel with"
    mkdir -p "$folder"
    log=$(mktemp)
    trap 'rm -f "$log"' EXIT
    cmake -DZEL_NPP_FOLDER="$folder/npp" -DZEL_CUDA_MAJOR="$major" -P "$root/cmake/FetchNpp.cmake" >"$log" 2>&1 ||
        skip "the toolkit has no NPP, and pip cannot take its wheel: $(grep -m 1 -i error "$log" || tail -n 1 "$log")"
fi

say "configuring and building for compute capability $architecture"
cd "$root"
cmake --preset cuda -DCMAKE_CUDA_ARCHITECTURES="$architecture"
cmake --build --preset cuda --target brontal_zel_cuda zel zel_kernels_test zel_filters_test zel_device_vector_test

linked=(lib/libbrontal_zel_cuda.so bin/zel tests/zel_kernels_test tests/zel_filters_test tests/zel_device_vector_test)
for product in "${linked[@]}"; do
    [ -f "$folder/$product" ] || die "the CUDA build made no $product"
done

say "what each kernel takes"
mapfile -d '' objects < <(find "$folder/Cuda/CMakeFiles/brontal_zel_cuda_objects.dir" -name '*.cu.o' -print0)
"$root/scripts/kernel-table.sh" "$architecture" "${objects[@]}" || die "see above, and scripts/kernel-stacks.txt"
echo "CUDA check passed: ${linked[*]}"
