#!/usr/bin/env bash
# Download throughput of the engine against curl: nginx on loopback (in a private network
# namespace) serves one large file, which is fetched through the engine's downloader
# and file writer (bench_download_driver) and with `curl -o`, alternately. Prints for each the
# throughput, CPU seconds (user + system) and peak memory (maximum resident set), and the
# ratio of the throughputs. Everything lives in a temporary folder that is removed at the
# end; the served file is sparse, so it costs no disk space.
#
#   bench/download.sh [--size BYTES] [--runs N] [--build DIR]
#
# Defaults: 1 GiB (1073741824 bytes), 3 runs of each (alternating; the medians are
# reported), build folder build-bench/ beside this folder.
# The size must stay below 4 GiB: the engine counts bytes in 32 bits.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)

size=1073741824
runs=3
build="$top/build-bench"
while [ $# -gt 0 ]; do
  case "$1" in
    --size) size="$2"; shift 2 ;;
    --runs) runs="$2"; shift 2 ;;
    --build) build="$2"; shift 2 ;;
    --inside) inside=1; shift ;;
    *) echo "usage: $0 [--size BYTES] [--runs N] [--build DIR]" >&2; exit 2 ;;
  esac
done

if [ -z "${inside:-}" ]; then
  "$top/scripts/bootstrap"
  cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLUMETTA_BENCH=ON \
    >/dev/null
  cmake --build "$build" --parallel "$(nproc)" --target bench_download_driver >/dev/null
  exec "$top/tests/e2e/harness/netns-run" "$0" --inside --size "$size" --runs "$runs" --build "$build"
fi

driver="$build/bench/bench_download_driver"
work=$(mktemp -d "${TMPDIR:-/tmp}/lumetta-bench-download-XXXXXX")
nginx_pid=""
cleanup() {
  if [ -n "$nginx_pid" ]; then
    kill "$nginx_pid" 2>/dev/null || true
    wait "$nginx_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

mkdir -p "$work/out"
# shellcheck source=payload-server.sh
. "$top/bench/payload-server.sh"
start_payload_server "$work" "$size"

calc() { awk "BEGIN { printf \"%.6f\", $1 }"; }

# Runs one download under /usr/bin/time; sets wall, cpu, rss_kb.
measure() {
  local label="$1" target="$2"
  shift 2
  local begin end
  rm -f "$target"
  sync
  begin=$(date +%s.%N)
  /usr/bin/time -f "%U %S %M" -o "$work/time.$label" "$@" >"$work/log.$label" 2>&1 ||
    { echo "$label failed:" >&2; cat "$work/log.$label" >&2; exit 1; }
  end=$(date +%s.%N)
  local got
  got=$(stat -c %s "$target")
  [ "$got" -eq "$size" ] || { echo "$label wrote $got of $size bytes" >&2; exit 1; }
  rm -f "$target"
  read -r user sys rss_kb <"$work/time.$label"
  wall=$(calc "$end - $begin")
  cpu=$(calc "$user + $sys")
}

url=http://127.0.0.1/payload.bin
# The first read of the sparse file fills the page cache; whoever came first would pay
# for it, so one unmeasured download goes before.
curl -s -o /dev/null "$url"

median() { printf "%s\n" "$@" | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
maximum() { printf "%s\n" "$@" | sort -g | tail -n 1; }

echo "downloading $size bytes from nginx on loopback, $runs times each, into $work/out"
engine_walls=() engine_cpus=() engine_rsss=() curl_walls=() curl_cpus=() curl_rsss=()
for round in $(seq "$runs"); do
  # Alternating, so that neither tool always follows the other.
  for tool in $( [ $((round % 2)) -eq 1 ] && echo "engine curl" || echo "curl engine"); do
    if [ "$tool" = engine ]; then
      measure engine "$work/out/engine.bin" "$driver" "$url" "$work/out/engine.bin"
      engine_walls+=("$wall") engine_cpus+=("$cpu") engine_rsss+=("$rss_kb")
    else
      measure curl "$work/out/curl.bin" curl -s -o "$work/out/curl.bin" "$url"
      curl_walls+=("$wall") curl_cpus+=("$cpu") curl_rsss+=("$rss_kb")
    fi
    printf "  round %d %-6s %6.2f s wall\n" "$round" "$tool" "$wall"
  done
done
engine_wall=$(median "${engine_walls[@]}") engine_cpu=$(median "${engine_cpus[@]}")
engine_rss=$(maximum "${engine_rsss[@]}")
curl_wall=$(median "${curl_walls[@]}") curl_cpu=$(median "${curl_cpus[@]}")
curl_rss=$(maximum "${curl_rsss[@]}")

report() {
  local label="$1" wall="$2" cpu="$3" rss="$4"
  printf "%-7s %9.1f MB/s  %6.2f s wall  %6.2f s CPU  %7.1f MiB peak RSS\n" "$label" \
    "$(calc "$size / $wall / 1000000")" "$wall" "$cpu" "$(calc "$rss / 1024")"
}
echo "medians of throughput and CPU time (user + system), largest peak RSS:"
report engine "$engine_wall" "$engine_cpu" "$engine_rss"
report curl "$curl_wall" "$curl_cpu" "$curl_rss"
printf "ratio   %.3f (engine throughput / curl throughput; aim >= 0.9)\n" \
  "$(calc "$curl_wall / $engine_wall")"
printf "engine peak RSS %s (aim < 40 MiB)\n" \
  "$([ "$engine_rss" -lt $((40 * 1024)) ] && echo "within the aim" || echo "ABOVE the aim")"
