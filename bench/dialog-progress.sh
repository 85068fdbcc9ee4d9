#!/usr/bin/env bash
# How much of a core the updater's user-interface thread spends while its dialog follows a
# large download: the real lumetta-updater (offscreen) fetches one sparse file from nginx
# on loopback (in a private network namespace), and the CPU time of its main thread is read
# from /proc once the file has arrived whole. Prints the download's wall time, the main
# thread's CPU time and that as a share of one core; the aim is under 5 %.
#
#   bench/dialog-progress.sh [--size BYTES] [--runs N] [--build DIR | --updater FILE]
#
# Defaults: 1 GiB, 3 runs (the median is reported), build folder build-bench/ beside this
# folder; --updater measures an executable built elsewhere instead. The served file is no program, so each run is stopped once the download is
# complete, before the installation would fail.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)

size=1073741824
runs=3
build="$top/build-bench"
updater=""
while [ $# -gt 0 ]; do
  case "$1" in
    --size) size="$2"; shift 2 ;;
    --runs) runs="$2"; shift 2 ;;
    --build) build="$2"; shift 2 ;;
    --updater) updater="$2"; shift 2 ;;
    --inside) inside=1; shift ;;
    *) echo "usage: $0 [--size BYTES] [--runs N] [--build DIR | --updater FILE]" >&2; exit 2 ;;
  esac
done

if [ -z "${inside:-}" ]; then
  "$top/scripts/bootstrap"
  if [ -z "$updater" ]; then
    cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build "$build" --parallel "$(nproc)" --target lumetta-updater >/dev/null
    updater="$build/src/app/lumetta-updater"
  fi
  updater=$(realpath "$updater")
  exec "$top/tests/e2e/harness/netns-run" "$0" --inside --size "$size" --runs "$runs" \
    --updater "$updater"
fi
work=$(mktemp -d "${TMPDIR:-/tmp}/lumetta-bench-dialog-XXXXXX")
nginx_pid=""
updater_pid=""
cleanup() {
  for pid in "$updater_pid" "$nginx_pid"; do
    if [ -n "$pid" ]; then
      kill "$pid" 2>/dev/null || true
      wait "$pid" 2>/dev/null || true
    fi
  done
  rm -rf "$work"
}
trap cleanup EXIT

mkdir -p "$work/registry"
# shellcheck source=payload-server.sh
. "$top/bench/payload-server.sh"
start_payload_server "$work" "$size"

calc() { awk "BEGIN { printf \"%.6f\", $1 }"; }
ticks=$(getconf CLK_TCK)
# CPU seconds (user + system) of the main thread of process $1.
main_thread_cpu() {
  local stat
  stat=$(cat "/proc/$1/task/$1/stat") || return 1
  # The fields after the command name, which may hold blanks: utime and stime are 14 and 15.
  set -- ${stat##*) }
  calc "(${12} + ${13}) / $ticks"
}

# Polls the command "$2..." until it succeeds; the run fails if the updater ends first.
wait_while_updater_runs() {
  local round="$1"
  shift
  until "$@"; do
    kill -0 "$updater_pid" 2>/dev/null ||
      { echo "the updater ended early:" >&2; cat "$work/updater.$round.log" >&2; exit 1; }
    sleep 0.01
  done
}
setup_is_complete() { [ "$(stat -c %s "$1" 2>/dev/null || echo 0)" -ge "$size" ]; }

median() { printf "%s\n" "$@" | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

echo "lumetta-updater downloading $size bytes from nginx on loopback, $runs times"
shares=() walls=() cpus=()
for round in $(seq "$runs"); do
  temp="$work/temp.$round"
  mkdir -p "$temp" "$work/run.$round"
  QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$work/run.$round" TMPDIR="$temp" \
    LUMETTA_REGISTRY_DIR="$work/registry" \
    "$updater" /productName "Bench Product" /productExecutable bench-product-absent \
    /downloadURL 127.0.0.1/payload.bin >"$work/updater.$round.log" 2>&1 &
  updater_pid=$!
  setup="$temp/Update1.exe"
  # The download starts once the setup file exists; it is complete at its full size.
  wait_while_updater_runs "$round" test -e "$setup"
  begin=$(date +%s.%N)
  cpu_begin=$(main_thread_cpu "$updater_pid")
  wait_while_updater_runs "$round" setup_is_complete "$setup"
  end=$(date +%s.%N)
  cpu_end=$(main_thread_cpu "$updater_pid")
  kill "$updater_pid"
  wait "$updater_pid" 2>/dev/null || true
  updater_pid=""
  wall=$(calc "$end - $begin")
  cpu=$(calc "$cpu_end - $cpu_begin")
  share=$(calc "100 * $cpu / $wall")
  walls+=("$wall") cpus+=("$cpu") shares+=("$share")
  printf "  run %d: %6.2f s download, %6.3f s CPU on the UI thread, %5.1f %% of a core\n" \
    "$round" "$wall" "$cpu" "$share"
done
printf "median: %.2f s download, %.3f s UI-thread CPU, %.1f %% of one core (aim < 5 %%)\n" \
  "$(median "${walls[@]}")" "$(median "${cpus[@]}")" "$(median "${shares[@]}")"
