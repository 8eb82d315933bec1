#!/usr/bin/env bash
# Folder size speed, warm cache, median of 5 runs (with min and max):
#   - one folder size walk (size_walk) of the nested tree against the reference total
#     `find -H DIR -xdev ! -type d -printf '%s\n'` summed, and against `du -sbl DIR`;
#     the totals must be equal; target: at most 0.8x the find pipeline's time;
#   - `brondel list` of the subtrees tree against `du -sbl SUBTREES/*`; every folder size
#     must equal the reference sum of its subtree; target: at most 0.6x du's time.
# usage: bench/sizes.sh BUILD_DIR WORK_DIR
# The trees are built in WORK_DIR with ../shared/bench/make-tree when missing.
set -euo pipefail

if [ $# -ne 2 ]; then
  echo "usage: bench/sizes.sh BUILD_DIR WORK_DIR"
  exit 2
fi
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$1" && pwd)
mkdir -p "$2"
work=$(cd "$2" && pwd)
make_tree="$here/../shared/bench/make-tree"
for preset in nested subtrees; do
  [ -d "$work/$preset" ] || "$make_tree" "$work" "$preset" >/dev/null
done
nested=$work/nested
subtrees=$work/subtrees
walk=$build/bench/size_walk
brondel=$build/brondel

# brondel reads its settings from the home folder: a home of its own keeps the defaults.
export HOME=$work/home
mkdir -p "$HOME"
unset BRONDEL_SETTINGS XDG_CONFIG_HOME

oracle() { find -H "$1" -xdev ! -type d -printf '%s\n' | awk '{s+=$1} END{printf "%.0f\n", s}'; }
du_one() { du -sbl "$1"; }
du_subtrees() { du -sbl "$subtrees"/*; }
list_subtrees() { "$brondel" list "$subtrees"; }

# measure CMD...: one warm-up run, then 5 timed runs. Sets MED, MIN, MAX (seconds) and
# OUT (standard output of the last run).
measure() {
  local times=() t0 t1
  OUT=$("$@")
  for _ in 1 2 3 4 5; do
    t0=$EPOCHREALTIME
    OUT=$("$@")
    t1=$EPOCHREALTIME
    times+=("$(awk -v a="$t0" -v b="$t1" 'BEGIN{printf "%.6f", b - a}')")
  done
  read -r MIN _ MED _ MAX < <(printf '%s\n' "${times[@]}" | sort -g | paste -sd ' ')
}

# ratio NAME A_MED A_MIN A_MAX B_NAME B_MED B_MIN B_MAX [TARGET]
ratio() {
  awk -v n="$1" -v am="$2" -v al="$3" -v ah="$4" -v bn="$5" -v bm="$6" -v bl="$7" -v bh="$8" -v t="${9:-}" 'BEGIN{
    r = am / bm
    line = sprintf("%-26s %.2fx   (%.3f s [%.3f-%.3f] vs %s %.3f s [%.3f-%.3f])", n " / " bn ":", r, am, al, ah, bn, bm, bl, bh)
    if (t != "") line = line sprintf("  target <= %.2fx: %s", t, r <= t ? "met" : "MISSED")
    print line }'
}

status=0

echo "== one walk of $nested"
measure oracle "$nested"; want=$OUT; o=("$MED" "$MIN" "$MAX")
measure "$walk" "$nested"; got=$OUT; w=("$MED" "$MIN" "$MAX")
measure du_one "$nested"; d=("$MED" "$MIN" "$MAX")
echo "total: walk $got, reference $want"
if [ "$got" != "$want" ]; then
  echo "MISMATCH: the walk's total differs from the reference"
  status=1
fi
ratio "walk" "${w[@]}" "find" "${o[@]}" 0.8
ratio "walk" "${w[@]}" "du -sbl" "${d[@]}"

echo "== brondel list $subtrees"
measure list_subtrees; listing=$OUT; l=("$MED" "$MIN" "$MAX")
measure du_subtrees; d=("$MED" "$MIN" "$MAX")
human='function human(b,  v, u, units) {
  if (b < 1024) return sprintf("%d B", b)
  split("KB MB GB TB", units, " "); v = b / 1024; u = 1
  while (v >= 1024 && u < 4) { v /= 1024; u++ }
  return sprintf("%.1f %s", v, units[u]) }'
for sub in "$subtrees"/*/; do
  sub=${sub%/}
  name=${sub##*/}
  want=$(oracle "$sub")
  exact=$("$walk" "$sub")
  want_text=$(awk "$human"' BEGIN { print human(ARGV[1]) }' "$want")
  got_text=$(printf '%s\n' "$listing" | awk -F '  +' -v n="$name" '$1 == "dir" && $3 == n { print $2 }')
  if [ "$exact" != "$want" ] || [ "$got_text" != "$want_text" ]; then
    echo "MISMATCH $name: reference $want ($want_text), walk $exact, list '$got_text'"
    status=1
  fi
done
[ $status -eq 0 ] && echo "every subtree: list size = walk total = reference sum"
ratio "list" "${l[@]}" "du -sbl" "${d[@]}" 0.6
exit $status
