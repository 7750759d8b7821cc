#!/usr/bin/env bash
# Builds the benchmarks in build-bench/ and runs them (docs/measuring.md).
#   scripts/bench.sh [--quick] [--no-big-process] [--rounds N] [ROW...]
#   scripts/bench.sh --growth [--quick] [--rounds N]   writes the tables and plots of docs/performance.md
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
scripts/build.sh bench
[[ ${1-} == --growth ]] || exec build-bench/bin/dvu_bench "$@"

shift
tables=build-bench/growth
plots=docs/performance
rm -rf "$tables"
build-bench/bin/dvu_bench --growth "$tables" "$@"

# Plots a table: a line for each column, both axes logarithmic.
plot() {
  local columns
  columns=$(head -1 "$tables/$1.tsv" | awk -F '\t' '{ print NF }')
  gnuplot <<GNUPLOT
set terminal svg size 760,420 font 'sans-serif,13' background 'white'
set output '$plots/$1.svg'
set datafile separator "\t"
set key outside right top noenhanced
set logscale xy
set grid
set xlabel '$2' noenhanced
set ylabel '$3' noenhanced
plot for [i = 2:$columns] '$tables/$1.tsv' using 1:i with linespoints linewidth 2 title columnhead(i)
GNUPLOT
}

# A section of the document: heading, plot, table.
section() {
  plot "$1" "$3" "$4"
  printf '\n### %s\n\n![%s](performance/%s.svg)\n\n' "$2" "$2" "$1"
  awk -F '\t' '
    { line = "|"; for (i = 1; i <= NF; i++) line = line " " $i " |"; print line }
    NR == 1 { line = "|"; for (i = 1; i <= NF; i++) line = line "---:|"; print line }' "$tables/$1.tsv"
}

mkdir -p "$plots"
page=docs/performance.md
kept=$(sed '/^## Figures/,$d' "$page")  # everything before the figures is written by hand
{
  printf '%s\n\n## Figures\n\n' "$kept"
  printf 'Written by `scripts/bench.sh --growth` on %s with %s processors. Best times of several rounds.\n' "$(date +%Y-%m-%d)" "$(nproc)"
  section rows "Rows of a value list" "rows" "ms"
  section output "Output of a script" "bytes of output" "ms, MB"
  section package "Size of a package" "bytes of the package" "ms, MB"
  section concurrency "Runs at once" "runs at once" "runs/s"
  section journal-time "Lists of the journal: time" "rows of the journal" "s"
  section journal-memory "Lists of the journal: memory of tscript" "rows of the journal" "MB"
} >"$page.new"
mv "$page.new" "$page"
