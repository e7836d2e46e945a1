# Set-up that ./run, ./test and the checks share; sourced, not run. Installs what is missing and builds, and is quick
# when there is nothing to do.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

packages=(
    g++ cmake ninja-build pkg-config
    libtbb-dev libthrust-dev libfftw3-dev
    libpng-dev libtiff-dev libcli11-dev nlohmann-json3-dev
    libgtest-dev libgmock-dev
)

say() { printf '%s\n' "== $*" >&2; }
die() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# missing_packages PACKAGE...
missing_packages() {
    local package
    for package; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || printf '%s\n' "$package"
    done
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# install_packages [PACKAGE...]: what every build needs, and the packages named.
install_packages() {
    local wanted=("${packages[@]}" "$@") missing
    command -v dpkg-query >/dev/null || die "this is no Debian system; install by hand: ${wanted[*]}"
    mapfile -t missing < <(missing_packages "${wanted[@]}")
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" = 0 ] || command -v sudo >/dev/null ||
        die "neither root nor sudo, so these Debian packages cannot be installed: ${missing[*]}"
    say "installing Debian packages: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { as_root apt-get update -q &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1; then
        local reason
        reason=$(grep -m 1 '^E: ' "$log" || tail -n 1 "$log")
        rm -f "$log"
        die "apt-get could not install ${missing[*]} (is there a network?): $reason"
    fi
    rm -f "$log"
}

# build PRESET TARGET...
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    cd "$root" || die "cannot enter $root"
    if ! cmake --preset "$preset" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        die "cmake --preset $preset failed; see above"
    fi
    rm -f "$log"
    say "building (preset $preset)"
    # To standard error, so that a program's own output stays clean.
    cmake --build --preset "$preset" --target "$@" >&2 || die "the build failed; see above"
}
