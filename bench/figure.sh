#!/bin/bash
# Draws what bench/series.sh has measured, for docs/performance.md.
#
#   bench/figure.sh TABLE FILE.svg
set -euo pipefail
cd -- "$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")/.."
source bench/common.sh
(($# == 2)) || die "usage: bench/figure.sh TABLE FILE.svg"
tools/install_packages.sh bench

work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
for kind in megabytes files; do
    for tool in kalmo "${OTHERS[@]}"; do
        awk -v kind="$kind" -v tool="$tool" '$1 == kind && $3 == tool { print $2, $4 }' "$1" >"$work/$kind.$tool"
        [[ -s $work/$kind.$tool ]] || die "$1 has nothing about $kind of $tool"
    done
done
gnuplot <<END
set terminal svg size 900,380 font "sans-serif,12" background "white"
set output "$2"
set multiplot layout 1,2
set logscale xy
set grid
set key left top
set ylabel "seconds"
plots(kind) = sprintf("$work/%s.", kind)
do for [kind in "megabytes files"] {
    set xlabel kind
    plot for [tool in "kalmo ${OTHERS[*]}"] plots(kind).tool using 1:2 with linespoints linewidth 2 title tool
}
END
