#!/bin/sh
# Runs every fuzz target of BIN_DIR on its corpus CORPUS_DIR/<target> for
# SECONDS each, one after another on one core, and prints per target the
# inputs executed and whether it found something. A finding leaves its
# input and log in FINDINGS_DIR/<target>/; the status is 1 if any target
# found something.
#   fuzz/run.sh BIN_DIR CORPUS_DIR FINDINGS_DIR SECONDS
set -u
bin=$1 corpus=$2 findings=$3 seconds=$4
status=0
printf '%-10s %12s  %s\n' target executions result
for exe in "$bin"/fuzz_*; do
    t=${exe##*/fuzz_}
    out=$findings/$t
    rm -rf "$out" && mkdir -p "$out"
    "$exe" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$out/" "$corpus/$t" > "$out/log" 2>&1
    rc=$?
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$out/log" | tail -n 1)
    found=$(ls "$out" | grep -v '^log$' | tr '\n' ' ')
    if [ $rc -ne 0 ] || [ -n "$found" ]; then
        status=1
        result="FINDING (exit $rc): $found- see $out/log"
    else
        result=clean
        rm -rf "$out"
    fi
    printf '%-10s %12s  %s\n' "$t" "${execs:-?}" "$result"
done
exit $status
