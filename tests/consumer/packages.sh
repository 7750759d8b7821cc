#!/usr/bin/env bash
# Builds the Debian packages, unpacks them side by side and starts the tools from there. No file is in two
# packages, and the packer's umask does not change the folders' modes.
# Argument: the build folder.
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$build" && umask 000 && cpack -G DEB -B "$work/packages" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
for name in libdvutilities1 libdvutilities-dev dvutilities-tools; do
  package=$(find "$work/packages" -maxdepth 1 -name "${name}_*.deb")
  [[ -n "$package" ]] || { echo "no package $name"; exit 1; }
  dpkg-deb -c "$package" | awk '$1 !~ /^d/ { print $6 }' >>"$work/files"
  open=$(dpkg-deb -c "$package" | grep '^d' | grep -v '^drwxr-xr-x ') || true
  [[ -z "$open" ]] || { echo "folders of another mode in $name: $open"; exit 1; }
  dpkg-deb -x "$package" "$work/root"
done
twice=$(sort "$work/files" | uniq -d)
[[ -z "$twice" ]] || { echo "in more than one package: $twice"; exit 1; }

# The lists of linked libraries name all of them, with a version.
docs=$(dirname "$(find "$work/root" -name linked-libraries-tools.txt)")
while read -r library; do
  grep -hF "${library%%.so*}" "$docs"/linked-libraries-*.txt | grep -q '[0-9]' || { echo "$library is in no list"; exit 1; }
done < <(find "$work/root/usr/bin" "$work/root/usr/lib" "$work/root/usr/libexec" -type f -exec readelf -dW {} + 2>/dev/null |
         sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' | sort -u | grep -vE '^(libV|libDV|libc\.|libm\.|ld-)')

for tool in bin/tscript libexec/dvutilities/sqlcmd bin/tsqlbox; do
  "$work/root/usr/$tool" --help >/dev/null || { echo "$tool does not start"; exit 1; }
done

# Beside a package that owns /usr/bin/sqlcmd, installed before or after: its file stays, also when ours goes.
mkdir -p "$work/other/DEBIAN" "$work/other/usr/bin"
printf 'Package: sqlcmd\nVersion: 1\nArchitecture: all\nMaintainer: x <x@localhost>\nDescription: x\n' \
  >"$work/other/DEBIAN/control"
echo 'of another package' >"$work/other/usr/bin/sqlcmd"
dpkg-deb -b "$work/other" "$work/other.deb" >/dev/null
tools=$(find "$work/packages" -maxdepth 1 -name 'dvutilities-tools_*.deb')
dpkg_in() { # FOLDER ARGUMENTS: dpkg with the system in FOLDER
  mkdir -p "$1"/var/lib/dpkg/{updates,info,alternatives} "$1"/etc/alternatives "$1"/var/log
  touch "$1/var/lib/dpkg/status"
  PATH=$PATH:/usr/sbin:/sbin dpkg --root="$1" --force-not-root --force-script-chrootless --force-depends "${@:2}" \
    >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
}
dpkg_in "$work/alone" -i "$tools"
[[ $(readlink "$work/alone/etc/alternatives/sqlcmd") == /usr/libexec/dvutilities/sqlcmd &&
   -L $work/alone/usr/bin/sqlcmd && -L $work/alone/usr/share/man/man1/sqlcmd.1 ]] ||
  { echo "the package does not offer sqlcmd"; exit 1; }
dpkg_in "$work/alone" -r dvutilities-tools
[[ ! -L $work/alone/usr/bin/sqlcmd ]] || { echo "a removed package leaves its link"; exit 1; }
for order in "$work/other.deb $tools" "$tools $work/other.deb"; do
  rm -rf "$work/both"
  for package in $order; do dpkg_in "$work/both" -i "$package"; done
  dpkg_in "$work/both" -r dvutilities-tools
  grep -q 'of another package' "$work/both/usr/bin/sqlcmd" || { echo "another package's sqlcmd is lost"; exit 1; }
done
