#!/usr/bin/env bash
# Builds the Debian package, installs it into a bare Debian 12 (debootstrap, as root), runs it there, removes it, and
# looks whether anything is left. Ends with one line, "Package check passed: " and the package.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

[ "$(id -u)" = 0 ] || die "needs root, for chroot"
install_packages debootstrap dpkg-dev file
cd "$root"
cmake --workflow --preset package >&2
package=$(ls -t build-package/zel_*.deb | head -n 1)
bare=$root/build-package/debian
[ -e "$bare/etc/debian_version" ] || debootstrap --variant=minbase bookworm "$bare" >&2
in_bare() { chroot "$bare" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
files() { in_bare find / -xdev \( -path /var -o -path /tmp -o -path /proc -o -path /root -o -path /etc/ld.so.cache \) -prune -o -print | sort; }

cp /etc/resolv.conf "$bare/etc/"
cp "$package" "$bare/tmp/zel.deb"
in_bare apt-get update -q >&2
in_bare apt-get purge -y -q --auto-remove 'zel*' >&2  # of a run that failed
files >build-package/before
in_bare apt-get install -y -q --no-install-recommends /tmp/zel.deb >&2
in_bare zel demo /tmp/demo
in_bare ldd -r /usr/bin/zel | grep -i 'not found\|undefined' && die "libraries are missing"
in_bare apt-get purge -y -q --auto-remove zel >&2
diff build-package/before <(files) || die "the package leaves files behind"
echo "Package check passed: $package"
