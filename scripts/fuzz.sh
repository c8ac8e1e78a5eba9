#!/usr/bin/env bash
# Mutation fuzzing, for when there is time to spend: builds the fuzz preset and
# runs every libFuzzer target for its share of SECONDS, starting from the
# checked-in seeds. What the targets learn stays in build/fuzz/fuzz-corpus and
# grows from one run to the next; the test command only replays the seeds.
# An input that crashes a target is copied into the target's seed folder as
# found-TARGET-HASH: rename it for what it shows, add a unit test that fails
# on it, fix the parser, and commit the seed.
#   scripts/fuzz.sh SECONDS
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:?usage: scripts/fuzz.sh SECONDS}
bash scripts/setup.sh --test
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

build=build/fuzz
seedLists=("$build"/fuzz-seeds/*.seeds)
share=$((seconds / ${#seedLists[@]}))
((share > 0)) || share=1
found=0
for list in "${seedLists[@]}"; do
  name=$(basename "$list" .seeds)
  mapfile -t seeds < <(grep -v '^$' "$list")
  corpus=$build/fuzz-corpus/$name
  findings=$build/fuzz-findings/$name
  mkdir -p "$corpus" "$findings"
  echo "==> $name: ${share}s"
  "$build/bin/$name" -max_total_time="$share" -rss_limit_mb=1024 -timeout=10 \
    -artifact_prefix="$findings/" "$corpus" "${seeds[@]}" || true
  for crash in "$findings"/*; do
    [ -f "$crash" ] || continue
    seed="${seeds[0]}/found-$name-$(sha1sum "$crash" | cut -c1-12)"
    cp "$crash" "$seed"
    rm "$crash"
    echo "$name: a crashing input is now $seed"
    found=1
  done
done
exit $found
