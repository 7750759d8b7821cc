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

for tool in tscript sqlcmd tsqlbox; do
  "$work/root/usr/bin/$tool" --help >/dev/null || { echo "$tool does not start"; exit 1; }
done
