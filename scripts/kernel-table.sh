#!/usr/bin/env bash
# Prints what the compiler has made of each kernel of the CUDA build: instances of its template and, as the most of them,
# registers, bytes of stack and local memory of a thread, bytes of static shared memory of a block. Thrust's own are left
# out. Fails when a kernel has more stack than scripts/kernel-stacks.txt allows.
# Arguments: the architecture, such as 90, then object files.
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
architecture=$1
shift

linked=$(mktemp)
trap 'rm -f "$linked"' EXIT
# The linker of device code knows them all, and is quick.
nvcc -dlink -arch="sm_$architecture" -Xnvlink -v -o "$linked" "$@" 2>&1 | c++filt | awk '
    function number(before, after) {
        return match($0, before "[0-9]+" after) ? substr($0, RSTART + length(before)) + 0 : 0
    }
    function most(array, value) { if (value > array[name]) array[name] = value }

    FNR == NR { if ($1 != "#") allowed[$1] = $2; next }
    /Function properties for/ {
        name = $0
        sub(/.* for .(void )?/, "", name)
        gsub(/\(anonymous namespace\)::/, "", name)
        sub(/[<(].*/, "", name)
        next
    }
    /used [0-9]+ registers/ && name !~ /^(cub::|thrust::|__nv_)/ {
        ++instances[name]
        most(registers, number("used ", " registers"))
        most(stack, number(", ", " stack") + number(", ", " bytes lmem"))
        most(shared, number(", ", " bytes smem"))
    }
    END {
        printf "%9s %9s %6s %7s  %s\n", "instances", "registers", "stack", "shared", "kernel"
        fflush()
        sort = "sort -k 5"
        for (kernel in instances) {
            ++kernels
            row = sprintf("%9d %9d %6d %7d", instances[kernel], registers[kernel], stack[kernel], shared[kernel])
            print row "  " kernel | sort
        }
        close(sort)
        for (kernel in instances) {
            if (stack[kernel] <= allowed[kernel]) continue
            printf "%s keeps %d bytes of a thread in local memory; allowed are %d\n", kernel, stack[kernel], \
                allowed[kernel] > "/dev/stderr"
            failed = 1
        }
        if (!kernels) {
            print "the linker of device code told of no kernels" > "/dev/stderr"
            failed = 1
        }
        exit failed
    }' "$here/kernel-stacks.txt" -
