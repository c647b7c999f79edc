#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A fuzz campaign: every libFuzzer target of the fuzz preset in turn, each for the same time, on a
# copy of its seed corpus. Prints per target the executions, the coverage (cov: of libFuzzer's final
# line) and the findings (crash, leak, oom and timeout files), and exits 1 when there are findings.
#
#   code/lib/ordwel/fuzz/campaign.sh [TIME] [TARGET...]
#
# TIME is minutes per target (default 10), or seconds with an "s" ("20s"). TARGETs are names such
# as "coding" (default: every target built). Builds the fuzz preset first when needed. The logs,
# the grown corpora and the findings stay under build/fuzz/campaign/<date-time>/; a grown corpus is
# worth copying back to fuzz/corpus/<name>/ when it adds coverage (libFuzzer's -merge=1 keeps only
# the inputs that do). libFuzzer stops a target at its first finding: fix it, then run again.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../../.." && pwd)
cd "$root"

time_arg=${1:-10}
shift || true
case "$time_arg" in
*s) seconds=${time_arg%s} ;;
*) seconds=$((time_arg * 60)) ;;
esac
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [ "$seconds" -eq 0 ]; then
  echo "campaign.sh: TIME is minutes (10) or seconds (20s), not '$time_arg'" >&2
  exit 2
fi

if [ ! -f build/fuzz/build.ninja ] && [ ! -f build/fuzz/Makefile ]; then
  cmake --preset fuzz >/dev/null
fi
cmake --build --preset fuzz -j "$(nproc 2>/dev/null || echo 2)" >/dev/null

targets=()
if [ $# -gt 0 ]; then
  for name in "$@"; do
    targets+=("build/fuzz/bin/ordwel_${name}_fuzz")
  done
else
  shopt -s nullglob
  targets=(build/fuzz/bin/ordwel_*_fuzz)
fi
if [ ${#targets[@]} -eq 0 ]; then
  echo "campaign.sh: no fuzz targets in build/fuzz/bin" >&2
  exit 2
fi

out="build/fuzz/campaign/$(date +%Y%m%d-%H%M%S)"
mkdir -p "$out"
echo "fuzz campaign: ${#targets[@]} targets, ${seconds} s each; logs, corpora and findings in $out"
printf '%-12s %12s %10s %8s %8s\n' target executions exec/s cov findings
total_findings=0
for target in "${targets[@]}"; do
  if [ ! -x "$target" ]; then
    echo "campaign.sh: no target $target" >&2
    exit 2
  fi
  name=$(basename "$target" | sed -e 's/^ordwel_//' -e 's/_fuzz$//')
  corpus="$out/$name/corpus"
  findings="$out/$name/findings"
  mkdir -p "$corpus" "$findings"
  seeds="code/lib/ordwel/fuzz/corpus/$name"
  [ -d "$seeds" ] && cp -r "$seeds/." "$corpus/"
  # A finding ends the run with a non-zero status; the table reports it.
  "$target" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" \
    >"$out/$name/log" 2>&1 || true
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$out/$name/log" | tail -n 1)
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$out/$name/log" | tail -n 1)
  cov=$(grep -o 'cov: [0-9]*' "$out/$name/log" | tail -n 1 | sed 's/cov: //')
  count=$(find "$findings" -type f \( -name 'crash-*' -o -name 'leak-*' -o -name 'oom-*' -o -name 'timeout-*' \) |
    wc -l)
  total_findings=$((total_findings + count))
  printf '%-12s %12s %10s %8s %8s\n' "$name" "${executions:-?}" "${rate:-?}" "${cov:-?}" "$count"
done
if [ "$total_findings" -ne 0 ]; then
  echo "findings: $total_findings (files under $out/*/findings; reproduce with build/fuzz/bin/ordwel_<name>_fuzz <file>)"
  exit 1
fi
echo "findings: none"
