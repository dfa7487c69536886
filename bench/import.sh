#!/usr/bin/env bash
# Times the whole application installing a 1 KB setting into its existing settings folder,
# headless (text dialogs, no answers needed), against cp of the same file into the same folder;
# then a pack of 1,000 such settings opened at once, against cp of the same files followed by
# `sync -f`, which makes them durable as Kestrail does. Each pair runs alternately, so that both
# see the same machine; prints the medians and the ratios.
set -euo pipefail
kestrail=$(realpath "${1:-build-bench/bin/kestrail}")
runs=${RUNS:-101}
pack_runs=${PACK_RUNS:-11}
pack_size=1000

home=$(mktemp -d "${TMPDIR:-/tmp}/kestrail-import-XXXXXX")
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_DATA_HOME=$home/data XDG_CONFIG_HOME=$home/config KESTRAIL_UI=text LC_ALL=C

setting="$home/Soft Edges.xml"
{
  echo '<?xml version="1.0" encoding="UTF-8"?>'
  echo '<setting set="Daubery" filter="BristleDrag" name="Soft Edges">'
  for i in $(seq 1 18); do echo "  <param keyid=\"key_$i\" value=\"0.$i$i$i\" type=\"float\"/>"; done
  echo '</setting>'
} >"$setting"
"$kestrail" "$setting" </dev/null >/dev/null  # the first import makes the folder
installed="$XDG_DATA_HOME/Orvelle/Daubery/BristleDrag/Soft Edges.xml"
[[ -f "$installed" ]] || { echo "import.sh: kestrail did not install the setting" >&2; exit 1; }

microseconds() { local t=${EPOCHREALTIME/./}; echo $((10#$t)); }
kestrail_times=() cp_times=()
for ((i = 0; i < runs; i++)); do
  rm -f "$installed"
  start=$(microseconds)
  "$kestrail" "$setting" </dev/null >/dev/null
  kestrail_times+=($(($(microseconds) - start)))
  rm -f "$installed"
  start=$(microseconds)
  cp "$setting" "$installed"
  cp_times+=($(($(microseconds) - start)))
done

median() { printf '%s\n' "$@" | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
k=$(median "${kestrail_times[@]}")
c=$(median "${cp_times[@]}")
echo
echo "import of a $(stat -c %s "$setting")-byte setting, median of $runs runs each:"
echo "  kestrail ${k} us, cp ${c} us, ratio $(awk -v k="$k" -v c="$c" 'BEGIN { printf "%.2f", k / c }')x (target <= 2x)"

# A pack: settings of distinct names, each of the same size as the one above.
pack=$home/pack
mkdir -p "$pack"
for ((i = 1; i <= pack_size; i++)); do
  sed "s/name=\"Soft Edges\"/name=\"Pack $i\"/" "$setting" >"$pack/Pack $i.xml"
done
folder=$(dirname "$installed")
kestrail_times=() cp_times=()
for ((i = 0; i < pack_runs; i++)); do
  find "$folder" -mindepth 1 -delete
  start=$(microseconds)
  "$kestrail" "$pack"/*.xml </dev/null >/dev/null
  kestrail_times+=($(($(microseconds) - start)))
  [[ $(find "$folder" -name 'Pack *.xml' | wc -l) -eq $pack_size ]] ||
    { echo "import.sh: kestrail did not install the whole pack" >&2; exit 1; }
  find "$folder" -mindepth 1 -delete
  start=$(microseconds)
  cp "$pack"/*.xml "$folder"/
  sync -f "$folder"
  cp_times+=($(($(microseconds) - start)))
done
k=$(median "${kestrail_times[@]}")
c=$(median "${cp_times[@]}")
echo
echo "import of a pack of $pack_size such settings at once, median of $pack_runs runs each:"
echo "  kestrail ${k} us, cp and sync -f ${c} us, ratio $(awk -v k="$k" -v c="$c" 'BEGIN { printf "%.2f", k / c }')x (target <= 2x)"
