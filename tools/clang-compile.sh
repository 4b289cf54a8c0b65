#!/usr/bin/env bash
# Compiles every source of the Windows build (the tests included) with clang,
# in parallel and without linking: the proof that the code builds with a
# second compiler, with the project's own warnings as errors.
#   tools/clang-compile.sh [--jobs N]
# It configures the clang preset (build/clang) and runs each command of its
# compile_commands.json as it stands, writing no object (a second run of the
# tests is not needed to show that the code builds).
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${KEL_JOBS:-$(nproc)}
[ "${1:-}" = "--jobs" ] && jobs=$2

cmake --preset clang >/dev/null
python3 - "$jobs" <<'EOF'
import concurrent.futures, json, shlex, subprocess, sys

commands = json.load(open("build/clang/compile_commands.json"))

def compile(entry):
    args = shlex.split(entry["command"])
    args[args.index("-o") + 1] = "/dev/null"
    done = subprocess.run(args, cwd=entry["directory"], capture_output=True, text=True)
    return entry["file"], done.returncode, done.stdout + done.stderr

failed = 0
with concurrent.futures.ThreadPoolExecutor(int(sys.argv[1])) as pool:
    for source, status, output in pool.map(compile, commands):
        if status != 0 or output.strip():
            print(output, end="")
        failed += status != 0
print(f"clang: {len(commands)} sources compiled, {failed} failed")
sys.exit(1 if failed else 0)
EOF
