#!/usr/bin/env bash
# Makes the pictures of the README from real runs in a sample installation: a recording of a terminal and a screenshot of
# the report. Needs the programs in build/bin (scripts/build.sh run), python3 and chromium (scripts/setup.sh).
#   scripts/pictures.sh [FOLDER]   default: docs/pictures
set -euo pipefail

root=$(realpath "$(dirname "$0")/..")
target=$(realpath -m "${1:-$root/docs/pictures}")
work=$(mktemp -d)
export PATH=$root/build/bin:$PATH HOME=$work TERM=xterm-256color
trap 'tscript sandbox down --dir "$work/demo" 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir -p "$target"
cd "$work"

"$root/scripts/terminal_svg.py" "$target/first-run.svg" \
  "A sample installation is created; a package runs, another one fails and says why; the journal lists both" <<'END'
eval "$(tscript sandbox up --dir demo 2>/dev/null)"
tscript run PurgeEvents -p 30 -p 2
tscript run PurgeEvents -p thirty -p 2 --output purge.txt
tscript journal --last 5
END

# Runs for the report. They happen within seconds; their rows are then spread over nine days, and take some seconds longer.
export ZEPHRA_REGISTRY=$work/demo/registry.toml
for day in 40 35 30 25 20 15 10; do
  tscript run PurgeEvents -p "$day" -p 2 >/dev/null
  tscript run EventReport -p "$day" >/dev/null
  tscript run SiteInventory >/dev/null
done
tscript run PurgeEvents -p thirty -p 2 >/dev/null 2>&1 || true
SQLCMDPASSWORD=$(<demo/password) sqlcmd -b -S "$(tscript config get Database.sINSTANCE)" -U sa -d dorvas -Q "
  UPDATE ZpTscriptExec SET timeStart = DATEADD(hour, 9 * (id - 24), timeStart),
                           timeEnd = DATEADD(second, id % 7, DATEADD(hour, 9 * (id - 24), timeEnd))" >/dev/null
tscript report --stale 1000 -o report.html
chromium --headless=new --no-sandbox --disable-gpu --disable-dev-shm-usage --hide-scrollbars --window-size=1000,1080 \
  --blink-settings=preferredColorScheme=1 --user-data-dir="$work/browser" --screenshot="$target/report.png" \
  "file://$work/report.html" 2>/dev/null
ls -l "$target"
