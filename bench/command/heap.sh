# SPDX-License-Identifier: BSD-3-Clause
# Sourced by script/bench.

# heap_table PROGRAM FOLDER: the peak of the heap, as heaptrack finds it, over the track files that
# cornerpin_whole_command left in the folder; the goal allows 40 bytes for each row of the file and
# 1 kB for each frame. With hand-over on a line of its own.
heap_table() {
  local rows frames peak options input
  echo '| shot | options | rows | frames | peak heap, MB | bytes a row, beside 1 kB a frame | goal |'
  echo '|---|---|---|---|---|---|---|'
  while read -r input options; do
    rows=$(($(wc -l <"$2/$input.csv") - 1))
    frames=$(awk -F, 'NR > 1 && $2 >= n { n = $2 + 1 } END { print n }' "$2/$input.csv")
    rm -f "$2"/heap*
    # shellcheck disable=SC2086  # several options
    heaptrack -o "$2/heap" "$1" solve "$2/$input.csv" -o "$2/out.json" $options >/dev/null 2>&1 ||
      [ $? -eq 4 ] || return 1
    peak=$(heaptrack_print "$2"/heap* 2>/dev/null | sed -n 's/^peak heap memory consumption: //p')
    awk -v s="$input" -v o="$options" -v r="$rows" -v f="$frames" -v p="$peak" 'BEGIN {
      factor["K"] = 1e3; factor["M"] = 1e6; factor["G"] = 1e9
      bytes = p * factor[substr(p, length(p))]
      goal = s == "relay" ? "" : "40"
      printf "| %s | %s | %d | %d | %.1f | %.0f | %s |\n", s, o, r, f, bytes / 1e6,
        (bytes - 1000 * f) / r, goal
    }'
  done <<'END'
highway --loss none
highway --base-only
large --base-only
relay --seed 1
END
}
