# shellcheck shell=sh
# SPDX-License-Identifier: MIT
#
# Sourced by what runs other scripts one after another. A step that fails stops none of the others; finish_steps says
# how each of them went and how long it took: by the clock, and of all processors together.

steps_wanted=  # names; all if there are none
steps_known=
steps_passed=0
steps_failed=0
steps_report=$(mktemp)
steps_times=$(mktemp)
trap 'rm -f "$steps_report" "$steps_times"' EXIT

# step NAME COMMAND...
step() {
    step_name=$1
    shift
    steps_known="$steps_known $step_name"
    case " $steps_wanted " in
    "  " | *" $step_name "*) ;;
    *) return 0 ;;
    esac
    printf '\n=== %s\n' "$step_name"
    step_begin=$(date +%s)
    read_processor_time
    step_processor=$processor_time
    if "$@"; then
        step_result=passed
        steps_passed=$((steps_passed + 1))
    else
        step_result=FAILED
        steps_failed=$((steps_failed + 1))
    fi
    read_processor_time
    printf '%-16s %s  %5d s  %5d s of processor time\n' "$step_name" $step_result $(($(date +%s) - step_begin)) \
        $((processor_time - step_processor)) >>"$steps_report"
}

# Sets $processor_time to the seconds that all finished children took. Not in a subshell, which has no such children.
read_processor_time() {
    times >"$steps_times"
    processor_time=$(awk 'NR == 2 { gsub(/[ms]/, " "); printf "%d", 60 * ($1 + $3) + $2 + $4 }' "$steps_times")
}

finish_steps() {
    for step_name in $steps_wanted; do
        case "$steps_known " in
        *" $step_name "*) continue ;;
        esac
        echo "no step $step_name here, only$steps_known" >&2
        steps_failed=$((steps_failed + 1))
    done
    echo
    cat "$steps_report"
    printf '\n%d passed, %d failed\n' $steps_passed $steps_failed
    [ $steps_failed -eq 0 ]
}
