# shellcheck shell=bash
# What every tool shares: the project's folder, messages, and the setup of a fresh machine.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
if [ -z "${HOME:-}" ]; then
    export HOME="$root/build/home" # compilers' caches and Wine need one
    mkdir -p "$HOME"
fi
# Programs of the system first: a version manager's own Python or CMake must not decide what is built.
export PATH="/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin:$PATH"
export LC_ALL="${LC_ALL:-C.UTF-8}"

say() { printf '%s\n' "$*"; }
warn() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; }
fail() {
    warn "$*"
    exit 1
}
# fail_with_log LOG TEXT...
fail_with_log() {
    tail -n 25 "$1" >&2
    fail "${*:2} (whole log: $1)"
}

# The comment at the top of a tool is its help text.
show_help() { sed -n '2,/^[^#]/{s/^# \{0,1\}//p;}' "$0"; }

ensure_setup() { "$root/tools/setup" packages >&2 </dev/null || fail "setup failed, see above"; }
