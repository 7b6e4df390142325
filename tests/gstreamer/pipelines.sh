#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Pipelines of gst-launch: pipelines.sh ZELTRACK. Exit status 77: GStreamer's own plugins are not installed.
# shellcheck disable=SC2046,SC2086,SC2317  # pipelines are lists of words; functions are called by name
set -u
zeltrack=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0

# check WHAT COMMAND...
check() {
    what=$1
    shift
    "$@" >log 2>&1 && return
    failed=1
    echo "$what"
    tail -n 20 log
}

gst-inspect-1.0 videotestsrc >/dev/null 2>&1 || exit 77

source='videotestsrc pattern=black num-buffers=300 ! video/x-raw,width=64,height=48,framerate=30/1'
for seed in 1 2; do
    "$zeltrack" synth --objects 15 --frames 300 --seed $seed >det$seed.txt
    "$zeltrack" track -q --fps 30 det$seed.txt >expected$seed.txt
done

# chain N: the tracks of det<N>.txt into out<N>.txt
chain() {
    echo "motdetections location=det$1.txt ! zeltracker ! motwrite location=out$1.txt ! fakesink"
}

# same N: the same as the command's, to the last digit
same() {
    [ -s expected$1.txt ] && diff expected$1.txt out$1.txt
}

as_the_command() {
    gst-launch-1.0 -q $source ! $(chain 1) && same 1
}

two_at_once() {
    gst-launch-1.0 -q $source ! $(chain 1) $source ! $(chain 2) && same 1 && same 2
}

# A tee gives the same buffers to all branches, each of which attaches what it found to copies of its own.
two_branches() {
    gst-launch-1.0 -q $source ! tee name=t t. ! queue ! $(chain 1) t. ! queue ! $(chain 2) && same 1 && same 2
}

no_leaks() {
    GST_TRACERS=leaks GST_DEBUG=GST_TRACER:7 gst-launch-1.0 -q $source ! motdetections location=det1.txt \
        ! zeltracker coasted=true drop-unmatched=true ! motwrite location=out.txt ! fakesink 2>trace &&
        ! grep 'object-alive, type-name=(string)[A-Z]' trace
}

# refused MESSAGE PIPELINE: it ends with an error that says this
refused() {
    ! gst-launch-1.0 -q $source ! $2 ! fakesink 2>errors && grep -F "$1" errors
}

with_parameters() {
    "$zeltrack" track -q --scale 0.1 --stable 4 --removal 3 --min-conf 0.6 --steady on --coasted det1.txt >expected1.txt
    gst-launch-1.0 -q $source ! motdetections location=det1.txt ! zeltracker scale=0.1 stable=4 removal=3 \
        min-confidence=0.6 steady=on coasted=true ! motwrite location=out1.txt ! fakesink && same 1
}

frames_from_0() {
    awk -F, -v OFS=, '{ --$1; print }' det1.txt >base0.txt
    "$zeltrack" track -q --fps 30 --frame-base 0 base0.txt >expected1.txt
    gst-launch-1.0 -q $source ! motdetections location=base0.txt frame-base=0 ! zeltracker ! \
        motwrite location=out1.txt frame-base=0 ! fakesink && same 1
}

check "tracks as the command does" as_the_command
check "two pipelines in one process" two_at_once
check "two branches of a tee" two_branches
check "the same parameters" with_parameters
check "frames from 0" frames_from_0
check "no object outlives the pipeline" no_leaks
printf '1,-1,1,1,1,1,1\n1,-1,x,1,1,1,1\n' >wrong.txt
check "a wrong line is named" refused "wrong.txt:2: expected a left edge" "motdetections location=wrong.txt"
check "no input" refused "none.txt: No such file" "motdetections location=none.txt"
check "no location to read" refused 'The property "location" is not set.' "motdetections"
check "no location to write" refused 'The property "location" is not set.' "motwrite"
check "a place that cannot be written" refused "none/out.txt: No such file" "motwrite location=none/out.txt"
check "a full disk" refused "/dev/full: No space left" \
    "motdetections location=det1.txt ! zeltracker ! motwrite location=/dev/full"
exit $failed
