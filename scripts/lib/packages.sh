# shellcheck shell=sh
# SPDX-License-Identifier: MIT
#
# Sourced by the scripts beside it. Needs nothing but a shell and Debian's own tools: it runs before all else.

# For the tracker in the pages of the view command, which are written without it where one of these is missing.
# shellcheck disable=SC2034  # used by those who source this
page_packages='clang libc++-dev-wasm32 libclang-rt-dev-wasm32 lld wasi-libc'

# need_packages NAME...: install the Debian packages that are missing, or say which they are and stop.
need_packages() {
    if ! command -v apt-get >/dev/null; then
        echo "This is not a Debian system; going on with what there is in place of: $*" >&2
        return
    fi
    missing=
    for package in "$@"; do
        state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null) || state=
        [ "$state" = installed ] || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0

    if [ "$(id -u)" -eq 0 ]; then
        as_root=
    elif may_sudo; then
        as_root='sudo -n'
    else
        echo "These packages are missing, and only root may install them:" >&2
        echo "    apt-get update && apt-get install --no-install-recommends$missing" >&2
        exit 1
    fi
    echo "Installing:$missing" >&2
    # shellcheck disable=SC2086  # both are lists of words
    {
        quietly $as_root apt-get -q update
        quietly $as_root env DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=120 \
            -o Dpkg::Progress-Fancy=1 install --no-install-recommends $missing
    }
}

# Somebody at a terminal sees what goes on; a log has the line above.
quietly() {
    if [ -t 2 ]; then
        "$@" >&2
    else
        "$@" >/dev/null
    fi
}

# has_package NAME: true if it is installed or can be
has_package() {
    apt-cache show "$1" >/dev/null 2>&1
}

# True when sudo works without a question, or after one that somebody at a terminal can answer.
may_sudo() {
    command -v sudo >/dev/null || return 1
    sudo -n true 2>/dev/null || { [ -t 0 ] && sudo -v; }
}
