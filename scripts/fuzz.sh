#!/usr/bin/env bash
# Runs every libFuzzer target of build-fuzz/ for FUZZ_SECONDS each (default 60), two at a
# time, and prints one table: target, executions per second, total executions, edges
# covered, faults. A target that faults is started again for the rest of its time; each
# fault's input is kept in build-fuzz/faults/TARGET/. Inputs that add coverage go to
# build-fuzz/corpus/TARGET/; the seeds in fuzz/corpus/TARGET/ are only read.
# Usage: scripts/fuzz.sh [TARGET...]   (FUZZ_SECONDS, FUZZ_JOBS, FUZZ_BUILD in the environment)
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${FUZZ_BUILD:-$root/build-fuzz}
seconds=${FUZZ_SECONDS:-60}
jobs=${FUZZ_JOBS:-2}
logs=$build/fuzz-logs
mkdir -p "$logs"

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for exe in "$build"/fuzz/fuzz_*; do
    [ -x "$exe" ] && [ -f "$exe" ] && targets+=("${exe##*/fuzz_}")
  done
fi
if [ ${#targets[@]} -eq 0 ]; then
  echo "no fuzz targets in $build/fuzz (build them with: make fuzz)" >&2
  exit 1
fi

# One target for its whole time; writes TARGET.result: execs seconds edges faults.
run_target() {
  local name=$1 exe=$build/fuzz/fuzz_$1
  local work=$build/corpus/$name faults=$build/faults/$name log=$logs/$name.log
  mkdir -p "$work" "$faults"
  : > "$log"
  local start=$SECONDS execs=0 edges=0 count=0 restarts=0
  while :; do
    local left=$((seconds - (SECONDS - start)))
    [ "$left" -ge 1 ] || break
    local before
    before=$(ls "$faults" | wc -l)
    set +e
    ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1} UBSAN_OPTIONS=print_stacktrace=1 \
    QT_QPA_PLATFORM=offscreen \
      "$exe" -max_total_time="$left" -timeout=10 -rss_limit_mb=2560 -print_final_stats=1 \
      -dict="$root/fuzz/torv.dict" -artifact_prefix="$faults/" \
      "$work" "$root/fuzz/corpus/$name" >> "$log" 2>&1
    set -e
    local run_execs run_edges
    run_execs=$(grep -Eo '^stat::number_of_executed_units: *[0-9]+' "$log" | tail -1 | grep -Eo '[0-9]+$' || echo 0)
    execs=$((execs + ${run_execs:-0}))
    # The run's own final stats line; a run stopped by a fault reports its last status line.
    sed -i 's/^stat::number_of_executed_units:/stat::counted_units:/' "$log"
    run_edges=$(grep -Eo 'cov: [0-9]+' "$log" | tail -1 | grep -Eo '[0-9]+' || echo 0)
    [ "${run_edges:-0}" -gt "$edges" ] && edges=$run_edges
    local after
    after=$(ls "$faults" | wc -l)
    count=$((count + after - before))
    [ "$after" -gt "$before" ] || break
    restarts=$((restarts + 1))
    [ "$restarts" -lt 20 ] || break
  done
  echo "$execs $((SECONDS - start)) $edges $count" > "$logs/$name.result"
}

export -f run_target
export build seconds logs root
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_target {}'

printf '%-18s %10s %14s %8s %7s\n' target exec/s executions edges faults
total_faults=0
for name in "${targets[@]}"; do
  read -r execs secs edges faults < "$logs/$name.result"
  [ "$secs" -gt 0 ] || secs=1
  printf '%-18s %10d %14d %8d %7d\n' "$name" $((execs / secs)) "$execs" "$edges" "$faults"
  total_faults=$((total_faults + faults))
done
if [ "$total_faults" -gt 0 ]; then
  echo "faults: inputs in $build/faults/, logs in $logs/"
  exit 1
fi
