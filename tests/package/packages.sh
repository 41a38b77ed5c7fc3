#!/bin/sh
# Installs the Debian packages in a scratch root, runs the programs there, builds a program with the library, and removes
# the packages: packages.sh SOURCE PACKAGES WORK   (three folders)
set -eu
source=$1 packages=$2 work=$3
root=$work/root
export PATH="$PATH:/usr/sbin:/sbin" LC_ALL=C
fail() { echo "packages.sh: $*" >&2; exit 1; }
[ "$(id -u)" = 0 ] && as_root= || as_root=fakeroot
# The scripts in the packages run on this machine, with DPKG_ROOT set.
in_root() { $as_root dpkg --root="$root" --force-script-chrootless "$@" >>"$work/dpkg.log" 2>&1 || fail "see $work/dpkg.log"; }
package() { echo "$packages/$1"_*.deb; }

# The database of packages is that of this machine, so that dpkg checks the dependencies.
rm -rf "$work"
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
cp /var/lib/dpkg/status "$root/var/lib/dpkg"
cp /var/lib/dpkg/info/*.list "$root/var/lib/dpkg/info"
in_root --install "$packages"/*.deb

libdir=$(echo "$root"/usr/lib/*/libDhcpLib.so)
libdir=${libdir%/*}
documents='etc/dhcplib/DhcpLib.json usr/share/man/man1/dhcptool.1.gz usr/share/man/man8/dhcprelay.8.gz'
for program in dhcptool dhcprelay; do
    documents="$documents usr/share/bash-completion/completions/$program usr/share/zsh/vendor-completions/_$program
               usr/share/fish/vendor_completions.d/$program.fish"
done
for file in $documents; do [ -f "$root/$file" ] || fail "no package contains $file"; done
# systemd finds the programs of the unit and knows all its settings. It reports an unknown one, but succeeds.
sed "s#/usr/bin/#$root&#" "$root/usr/lib/systemd/system/dhcprelay.service" >"$work/dhcprelay.service"
systemd-analyze verify --man=no "$work/dhcprelay.service" >"$work/unit" 2>&1 && [ ! -s "$work/unit" ] || fail "see $work/unit"
version=$(dpkg-deb -f "$(package libdhcplib1)" Version)
for program in dhcptool dhcprelay; do
    dpkg-deb -f "$(package $program)" Depends | grep -qF "libdhcplib1 (>= $version)" || fail "$program lacks the library"
done
dpkg-deb -f "$(package dhcptool)" Depends | grep -qF libpcap0.8 || fail 'dhcptool lacks libpcap'
for library in DhcpLib DhcpPlatform; do
    dpkg-deb -I "$(package libdhcplib1)" shlibs | grep -qx "lib$library 1 libdhcplib1 (>= $version)" ||
        fail "no dependency for users of lib$library"
done
dpkg-deb -I "$(package libdhcplib-common)" conffiles | grep -qx /etc/dhcplib/DhcpLib.json || fail 'no configuration file'
grep -qF /etc/dhcplib "$libdir/libDhcpPlatform.so" || fail 'the library looks for its configuration in another folder'

# Shipped files are stripped and without a run path; the symbols are where a debugger finds them by the build-id.
for file in "$root/usr/bin/dhcptool" "$root/usr/bin/dhcprelay" "$libdir"/libDhcp*.so.1; do
    ! readelf -S "$file" | grep -q ' \.symtab' || fail "$file is not stripped"
    ! readelf -d "$file" | grep -qE 'RPATH|RUNPATH' || fail "$file has a run path"
    id=$(readelf -n "$file" | sed -n 's/.*Build ID: //p')
    [ -s "$root/usr/lib/debug/.build-id/$(echo "$id" | cut -c1-2)/$(echo "$id" | cut -c3-).debug" ] ||
        fail "no debug symbols for $file"
done
for folder in "$root/usr/bin" "$libdir"; do "$source/script/check-binaries" "$folder"; done

export LD_LIBRARY_PATH="$libdir" DHCPLIB_TOGGLE_DIR="$root/etc/dhcplib"
"$root/usr/bin/dhcptool" "$source/tests/data/captures/v4-relay-dhclient-dhcpd-server.pcap" >"$work/printed"
grep -q DHCPDISCOVER "$work/printed" || fail 'dhcptool prints no DISCOVER'
"$root/usr/bin/dhcprelay" --config "$root/usr/share/doc/dhcprelay/examples/dhcprelay.json" --check

number=$(sed -n 's/.*enterpriseNumber{\([0-9]*\)}.*/\1/p' "$root/usr/include/DhcpLib/Config.h")
cmake -S "$source/tests/package/consumer" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
    -DEXAMPLE_SOURCE="$source/examples/relay.cpp" -DEXPECTED_VERSION="$version" >"$work/consumer.log"
cmake --build "$work/consumer" >>"$work/consumer.log" || fail "see $work/consumer.log"
"$work/consumer/installed" "$version" "$number"

mkdir -p "$root/etc/systemd/system/multi-user.target.wants"  # as after "systemctl enable"
ln -s /usr/lib/systemd/system/dhcprelay.service "$root/etc/systemd/system/multi-user.target.wants"
in_root --purge libdhcplib1 libdhcplib-common libdhcplib-dev dhcptool dhcprelay libdhcplib1-dbgsym dhcptool-dbgsym dhcprelay-dbgsym
left=$(find "$root" -path "$root/var" -prune -o ! -type d -print)
[ -z "$left" ] || fail "files are left behind: $left"
echo "packages of version $version: installed, used and removed"
