#!/usr/bin/env bash
# Builds the benchmarks, runs them all and prints one table of figures and ratios.
#
# Installs the Debian packages the benchmarks need when they are missing (as root, with
# apt-get), configures the "default" preset (build/default, RelWithDebInfo), builds the
# "benchmarks" target (every bench/*Bench.cpp), runs each program with its JSON output in a
# temporary folder, and prints one Markdown table: what is measured, the figure now, the floor or
# peer measured in the same program run, their ratio, and the goal. Each figure is the best of
# ZELSYSTS_BENCH_REPETITIONS runs (default 3); the programs' own console output goes to
# build/default/bench-logs. Arguments name the programs to run (e.g. RefCountBench); none: all.
# Counters that no row reads are listed under the table. Parallelism: CMAKE_BUILD_PARALLEL_LEVEL.
#
# A figure is one row of ROWS below: add a row to add a figure.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

source "$root/tools/setup.sh"
zelsysts_require bench.sh build bench
zelsysts_parallelism

cmake --preset default >/dev/null
cmake --build --preset default --target benchmarks

build="$root/build/default"
logs="$build/bench-logs"
out="$(mktemp -d /tmp/zelsysts-bench.XXXXXX)"
trap 'rm -rf "$out"' EXIT
mkdir -p "$logs"

programs=("$@")
if ((${#programs[@]} == 0)); then
  for source in bench/*Bench.cpp; do programs+=("$(basename "$source" .cpp)"); done
fi
for program in "${programs[@]}"; do
  echo "bench.sh: running $program" >&2
  "$build/bin/$program" --benchmark_repetitions="${ZELSYSTS_BENCH_REPETITIONS:-3}" \
    --benchmark_out="$out/$program.json" --benchmark_out_format=json >"$logs/$program.log" 2>&1
done

python3 - "$out" <<'EOF'
import glob, json, os, sys

# One row per figure: (what, program, run, measure, floor run or None, goal, goal kind).
# run and floor are run names in the program's JSON output ("real_time" per iteration, or the
# name of one of its counters as measure). Goal kinds: "ratio" (now / floor at most the goal),
# "time" (now at most the goal, in seconds), "growth" (now / floor at most the goal), None.
ROWS = [
    ("load 100,000 `.dicts` lines in 200 files", "DicoLoaderBench",
     "DicoLoaderLoad/100000/iterations:10/manual_time", "real_time",
     "Floor/100000/iterations:10/manual_time", 5.0, "ratio"),
    ("load 1,000,000 lines", "DicoLoaderBench",
     "DicoLoaderLoad/1000000/iterations:3/manual_time", "real_time",
     "Floor/1000000/iterations:3/manual_time", 6.0, "ratio"),
    ("memory after loading 1,000,000 lines, bytes per line", "DicoLoaderBench",
     "DicoLoaderLoad/1000000/iterations:3/manual_time", "bytes_per_line", None, 100, "value"),
    ("register a new class (`RegistrationBench`, 50,000 classes)", "RegistrationBench",
     "BM_ZELSysTSFindOrCreateMetaObject/iterations:5", "per_registration",
     "BM_GTypeRegisterStatic/iterations:5", 0.5, "ratio"),
    ("cached QI, object with mutex, 1 thread (`QueryInterfaceBench`)", "QueryInterfaceBench",
     "BM_QI_Success_ObjectMutex/real_time/threads:1", "real_time",
     "BM_Floor_TwoLockPairs/real_time/threads:1", 1.1, "ratio"),
    ("cached QI, object without mutex", "QueryInterfaceBench",
     "BM_QI_Success_NoObjectMutex/real_time/threads:1", "real_time",
     "BM_Floor_OneLockPair/real_time/threads:1", 1.15, "ratio"),
    ("AddRef+Release, object with mutex (`RefCountBench`)", "RefCountBench",
     "BM_AddRefRelease_ObjectMutex", "real_time", "BM_Floor_TwoRecursiveLockPairs", 1.1, "ratio"),
    ("load growth, 10,000 -> 100,000 lines (x10)", "DicoLoaderBench",
     "DicoLoaderLoad/100000/iterations:10/manual_time", "real_time",
     "DicoLoaderLoad/10000/iterations:30/manual_time", 11.25, "growth"),
    ("load growth, 100,000 -> 1,000,000 lines (x10)", "DicoLoaderBench",
     "DicoLoaderLoad/1000000/iterations:3/manual_time", "real_time",
     "DicoLoaderLoad/100000/iterations:10/manual_time", 11.25, "growth"),
    ("fill one class's interface table to 65,000 entries", "QueryInterfaceBench",
     "BM_QI_FillInterfaceTable/iterations:2", "real_time", None, 1.0, "time"),
]

UNIT = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
STANDARD = {"name", "family_index", "per_family_instance_index", "run_name", "run_type",
            "repetitions", "repetition_index", "threads", "iterations", "real_time",
            "cpu_time", "time_unit", "aggregate_name", "aggregate_unit", "error_occurred",
            "error_message", "label", "items_per_second", "bytes_per_second"}

# best[program][run][measure]: the smallest value over the repetitions (seconds for times).
best = {}
for path in glob.glob(os.path.join(sys.argv[1], "*.json")):
    program = os.path.basename(path)[:-len(".json")]
    with open(path) as f:
        runs = json.load(f).get("benchmarks", [])
    for run in runs:
        if run.get("run_type") != "iteration" or run.get("error_occurred"):
            continue
        measures = best.setdefault(program, {}).setdefault(run["run_name"], {})
        for key, value in run.items():
            if key == "real_time":
                value *= UNIT[run["time_unit"]]
            elif key in STANDARD or not isinstance(value, (int, float)):
                continue
            measures[key] = min(value, measures.get(key, value))

def figure(program, run, measure):
    return best.get(program, {}).get(run, {}).get(measure)

def seconds(value):
    for unit, scale in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if value >= scale:
            return f"{value / scale:.3g} {unit}"
    return f"{value / 1e-9:.3g} ns"

def shown(value, measure):
    return seconds(value) if measure in ("real_time", "per_registration") else f"{value:.4g}"

used = set()
print("| what | now | floor / peer in the same run | ratio | goal |")
print("|---|---|---|---|---|")
for what, program, run, measure, floor, goal, kind in ROWS:
    now = figure(program, run, measure)
    ref = figure(program, floor, measure) if floor else None
    used.update({(program, run, measure), (program, floor, measure)})
    ratio = now / ref if now is not None and ref else None
    judged = {"ratio": ratio, "growth": ratio, "time": now, "value": now}.get(kind)
    goal_text = {"ratio": f"≤ {goal:g}×", "growth": f"≤ ×{goal:g}",
                 "time": f"≤ {seconds(goal)}", "value": f"≤ {goal:g}"}.get(kind, "—")
    if judged is not None:
        goal_text += " met" if judged <= goal else " not met"
    missing = "not run" if run not in best.get(program, {}) else f"no `{measure}`"
    print(f"| {what} | {shown(now, measure) if now is not None else missing} | "
          f"{shown(ref, measure) if ref is not None else '—'} | "
          f"{f'{ratio:.2f}×' if ratio is not None else '—'} | {goal_text} |")

extra = [(p, r, m, v) for p, runs in sorted(best.items()) for r, ms in sorted(runs.items())
         for m, v in sorted(ms.items())
         if m != "real_time" and (p, r, m) not in used]
if extra:
    print("\nOther counters:")
    for program, run, measure, value in extra:
        print(f"- {program} {run} {measure}: {value:.4g}")
EOF
