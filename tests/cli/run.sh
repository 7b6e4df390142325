#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Tests of the zeltrack command: run.sh GROUP PROGRAM [ARGUMENT...]. Tables stand in here-documents, one case a line,
# its fields divided by "|"; \n and the like in them are escapes of printf %b. Every row begins with what it guards.
# shellcheck disable=SC2086,SC2094,SC2317  # options are split and input named as output on purpose; groups go by name
set -u
group=$1
shift
program=$(for word; do printf "'%s' " "$word"; done)
for last; do :; done
binary=$last
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0

zeltrack() { eval "$program \"\$@\""; }

# check WHAT EXPECTED FOUND
check() {
    [ "$2" = "$3" ] && return
    failed=1
    printf '%s: %s\n--- expected\n%s\n--- found\n%s\n' "$group" "$1" "$2" "$3" >&2
}

# run ARGUMENT...: leaves standard output, standard error and the exit status in $out, $err and $status
run() {
    zeltrack "$@" >stdout 2>stderr
    status=$?
    out=$(cat stdout)
    err=$(cat stderr)
}

one_line() { paste -s -d ' ' "$@"; }

# --- lines of a detection file ---------------------------------------------------------------------------------------

refused_lines() {
    while IFS='|' read -r name line options message; do
        printf '1,-1,10,20,30,40,0.5,1,1\n%b' "$line" >in.txt
        run track $options in.txt
        check "$name" "1||zeltrack: in.txt:2: $message" "$status|$out|$err"
    done <<'END'
too few fields|2,-1,1,1,1,1||expected 7 fields or more, found 6
other separators|2 -1 1 1 1 1 1||expected 7 fields or more, found 1
too few fields for the class|2,-1,1,1,1,1,1|--class-column 8|expected 8 fields or more, found 7
frame 0|0,-1,1,1,1,1,1||expected a frame number from 1 to 10000000 (if frames count from 0: --frame-base 0), found "0"
frame beyond the last one from 0|10000000,-1,1,1,1,1,1|--frame-base 0|expected a frame number from 0 to 9999999, found "10000000"
frame below 0|-1,-1,1,1,1,1,1||expected a frame number from 1 to 10000000, found "-1"
half a frame|1.5,-1,1,1,1,1,1||expected a frame number from 1 to 10000000, found "1.5"
too many frames|10000001,-1,1,1,1,1,1||expected a frame number from 1 to 10000000, found "10000001"
frame beyond int|4294967297,-1,1,1,1,1,1||expected a frame number from 1 to 10000000, found "4294967297"
column titles|frame,id,left,top,width,height,conf||expected a frame number from 1 to 10000000, found "frame"
empty field|2,-1,,1,1,1,1||expected a left edge from -1e+09 to 1e+09, found ""
not a number|2,-1,nan,1,1,1,1||expected a left edge from -1e+09 to 1e+09, found "nan"
infinite|2,-1,1,-inf,1,1,1||expected a top edge from -1e+09 to 1e+09, found "-inf"
beyond float|2,-1,1,1,1e39,1,1||expected a width from -1e+09 to 1e+09, found "1e39"
beyond double|2,-1,1,1,1,1e999,1||expected a height from -1e+09 to 1e+09, found "1e999"
text behind a number|2,-1,1,1,1,1px,1||expected a height from -1e+09 to 1e+09, found "1px"
two signs|2,-1,1,1,1,+-1,1||expected a height from -1e+09 to 1e+09, found "+-1"
hexadecimal|2,-1,0x10,1,1,1,1||expected a left edge from -1e+09 to 1e+09, found "0x10"
infinite confidence|2,-1,1,1,1,1,inf||expected a finite number as confidence, found "inf"
class that ends the list|2,-1,1,1,1,1,1,0|--class-column 8|expected a class other than 0 (if classes count from 0: --class-base 0), found "0"
class shifted to 0|2,-1,1,1,1,1,1,-1|--class-column 8 --class-base 0|expected a class other than -1 (if classes count from 1: --class-base 1), found "-1"
half a class|2,-1,1,1,1,1,1,1,0.5|--class-column 9|expected a class as a whole number, found "0.5"
class beyond exact floats|2,-1,1,1,1,1,1,16777215|--class-column 8 --class-base 0|expected a class as a whole number, found "16777215"
control characters|\0033[2J\0200,-1,1,1,1,1,1||expected a frame number from 1 to 10000000, found "\x1b[2J\x80"
long text|2,-1,aaaaaaaaaabbbbbbbbbbccccccccccddddddddddeeeeeeeeee,1,1,1,1||expected a left edge from -1e+09 to 1e+09, found "aaaaaaaaaabbbbbbbbbbccccccccccdddddddddd..."
END
}

accepted_lines() {
    while IFS='|' read -r name lines options rows; do
        printf '%b' "$lines" >in.txt
        run track -q --stable 1 --scale 1 $options in.txt
        check "$name" "0||$(printf '%b' "$rows" | sed '/./s/$/,-1,-1,-1/')" "$status|$err|$out"
    done <<'END'
nothing|||
only blank lines|\n \n\r\n||
no last newline|1,-1,10,20,30,40,0.5||1,1,10,20,30,40,0.5
carriage returns|1,-1,10,20,30,40,0.5\r\n2,-1,10,20,30,40,0.5\r\n||1,1,10,20,30,40,0.5\n2,1,10,20,30,40,0.5
blanks around numbers| 1 ,\t-1, 10,20 ,30\t, 40 , 0.5 ||1,1,10,20,30,40,0.5
too small for a float|1,-1,1e-50,-1e-400,3,4,0.5||1,1,0,0,3,4,0.5
other spellings of numbers|1e+00,-1,+10,2e1,30.,040,5e-1||1,1,10,20,30,40,0.5
columns beyond those read|1,x,10,20,30,40,0.5,nan,,?\n||1,1,10,20,30,40,0.5
too small for a float|1,-1,10,20,30,40,1e-60\n||1,1,10,20,30,40,0
unsorted, file order within a frame|2,-1,10,20,30,40,0.5\n1,-1,500,20,30,40,0.25\n1,-1,10,20,30,40,0.75||1,1,500,20,30,40,0.25\n1,2,10,20,30,40,0.75\n2,2,10,20,30,40,0.5
an empty box|1,-1,10,20,0,0,0.5||1,1,10,20,0,0,0.5
a negative width is ignored|1,-1,10,20,-4,40,0.5\n1,-1,90,20,30,40,0.5||1,1,90,20,30,40,0.5
largest coordinates|1,-1,-1e9,1e9,1e9,1e9,3e38||1,1,-1e+09,1e+09,1e+09,1e+09,3e+38
below the least confidence|1,-1,10,20,30,40,0.5\n1,-1,90,20,30,40,0.25|--min-conf 0.5|1,1,10,20,30,40,0.5
negative least confidence|1,-1,10,20,30,40,-0.5|--min-conf -1|1,1,10,20,30,40,-0.5
frames from 0|0,-1,10,20,30,40,0.5\n1,-1,10,20,30,40,0.5|--frame-base 0|0,1,10,20,30,40,0.5\n1,1,10,20,30,40,0.5
classes from 0|1,-1,10,20,30,40,0.5,0|--class-column 8 --class-base 0|1,1,10,20,30,40,0.5
END
}

hostile_files() {
    head -c 100000000 /dev/zero | tr '\0' 'x' >garbage.txt
    run track garbage.txt
    check "100 MB without a newline" \
        "1|zeltrack: garbage.txt:1: expected a line of at most 4095 characters, found \"$(printf '%040d' 0 | tr 0 x)...\"" \
        "$status|$err"
    rm garbage.txt
    run track "$binary"
    check "an executable" "1|1" "$status|$(wc -l <stderr | tr -d ' ')"
    run track .
    check "a directory" "1|zeltrack: .: Is a directory" "$status|$err"
    for reading in "- <." "- <&-"; do
        eval "run track $reading"
        check "track $reading" "1|zeltrack: standard input: |" "$status|${err%%[IB]*}|$out"
    done
    run track none.txt
    check "no such file" "1|zeltrack: none.txt: No such file or directory" "$status|$err"
    run track "$(printf 'two\nlines')"
    check "a name of two lines" "1|zeltrack: two\\x0alines: No such file or directory" "$status|$err"
    run track "$(printf 'a\302\233b\342\200\256c\377\303\244')"
    check "a name that steers the terminal" \
        "1|zeltrack: a\\xc2\\x9bb\\xe2\\x80\\xaec\\xff$(printf '\303\244'): No such file or directory" "$status|$err"
    run track "$(printf '%05000d' 0)"
    check "a name too long" "1|zeltrack: $(printf '%05000d' 0): File name too long" "$status|$err"
    printf '1,-1,10,20,30,40,0.5\n' >in.txt
    printf '1,1,10,20,30,40,1\n1,1.5,10,20,30,40,1\n' >truth.txt
    run view in.txt --gt truth.txt -o page.html
    check "an identifier of the truth" '1|zeltrack: truth.txt:2: expected an identifier as a whole number, found "1.5"|' \
        "$status|$err|$(find . -name page.html)"
    printf 'x' | zeltrack track - 2>stderr
    check "standard input named" "zeltrack: standard input:1: expected 7 fields or more, found 1" "$(cat stderr)"
}

lines() {
    refused_lines
    accepted_lines
    hostile_files
}

# --- wrong usage -----------------------------------------------------------------------------------------------------

usage() {
    printf '1,-1,10,20,30,40,0.5\n' | tee in.txt >truth.txt
    printf 'iou = 7\n' >range.toml
    printf 'coastd = true\n' >unknown.toml
    printf '[a.b]\n' >section.toml
    printf 'coasted = perhaps\n' >flag.toml
    printf 'config = other.toml\n' >nested.toml
    while IFS='|' read -r name arguments; do
        run $arguments
        check "$name" "2||1" "$status|$out|$(grep -c '^zeltrack: .* (see zeltrack .*--help)$' stderr)"
    done <<'END'
no command|
unknown command|trak in.txt
no file|track
two files|track in.txt in.txt
unknown option|track --fast in.txt
beyond a range|track --iou 1.5 in.txt
not a number|track --euc nan in.txt
fraction of a frame|track --stable 2.5 in.txt
text behind a number|track --removal 10x in.txt
beyond int|track --stable 99999999999 in.txt
no scale|track --scale 0 in.txt
neither a scale nor auto|track --scale automatic in.txt
no capacity|track --max-objects 0 in.txt
no page|view in.txt
range in a configuration|track --config range.toml in.txt
a section in a configuration|track --config section.toml in.txt
an endless configuration|track --config /dev/zero in.txt
half a size|synth --size 640x
no size|synth --size 0x480
negative seed|synth --seed -1
END
    while IFS='|' read -r arguments message; do
        run $arguments
        check "misspelled: $arguments" "2|zeltrack: $message" "$status|${err% (see *}"
    done <<'END'
trak in.txt|expected a command, found "trak"; did you mean track?
track --iuo 0.5 in.txt|expected an option, found "--iuo"; did you mean --iou?
track --scal=2 in.txt|expected an option, found "--scal"; did you mean --scale?
track --min-conf -1 --frobnicate in.txt|expected an option, found "--frobnicate"
track --config unknown.toml in.txt|unknown.toml:1: expected the name of an option, found "coastd"; did you mean coasted?
track --config nested.toml in.txt|nested.toml:1: expected the name of an option, found "config"
track --config flag.toml in.txt|flag.toml:1: --coasted: expected true or false, found "perhaps"
track --iou 0.1 --iou 0.2 in.txt|--iou: given more than once
track in.txt --iou|--iou: expected a value
END
    run track in.txt -o in.txt
    check "input as output" "2|zeltrack: in.txt: expected an output other than the input" "$status|$err"
    printf 'stable = 010\n\niou = 7 # too much\n' >line.toml
    run track --config line.toml in.txt
    check "the line of a configuration" "zeltrack: line.toml:3: --iou: expected a number from 0 to 1, found \"7\" (see zeltrack track --help)" "$err"
    run track --config none.toml in.txt
    check "no configuration" "1|zeltrack: none.toml: No such file or directory" "$status|$err"
    run track --config . in.txt
    check "a folder as configuration" "1|zeltrack: .: expected a file" "$status|$err"
    run track --help --stable 010
    check "decimal, whatever the zeros" 0 "$status"
    run track - -o in.txt <in.txt
    check "standard input as output" "2|zeltrack: in.txt: expected an output other than the input" "$status|$err"
    run synth -o /dev/stdout --gt -
    check "two results in one stream" "2|zeltrack: -: expected a file for each output" "$status|$err"
    run view in.txt --gt truth.txt -o truth.txt
    check "truth as page" "2|zeltrack: truth.txt: expected an output other than the input" "$status|$err"
    run view - --gt - -o page.html
    check "standard input twice" "2|zeltrack: --gt: expected a file other than that of the detections" "$status|$err"
    check "input kept" "1,-1,10,20,30,40,0.5" "$(cat in.txt)"
    for command in "" track view synth eval tune; do
        run $command --help
        check "help of '$command'" "0||1" "$status|$err|$(grep -c '^Exit status: 0' stdout)"
    done
}

# --- results ---------------------------------------------------------------------------------------------------------

tracking() {
    # one object that steps 2 to the right a frame, missed in frames 4 to 7, and seen again where it was expected
    for step in 1,10,0.8 2,12,0.9 3,14,0.7 8,16,0.6; do
        echo "${step%,*},10,20,40,${step##*,}" | sed 's/,/,-1,/'
    done >one.txt
    sed 's/^\([0-9]*\),-1,\([0-9]*\),10,20,40/\1,-1,\20,100,200,400/' one.txt >tenfold.txt
    printf '%s\n' 1,-1,0,0,40,40,1 2,-1,16,0,40,40,1 >square.txt
    # two classes side by side, which then change places
    printf '%s\n' 1,-1,10,10,20,40,1,1 1,-1,11,10,20,40,1,2 2,-1,10,10,20,40,1,2 2,-1,11,10,20,40,1,1 >classes.txt
    while IFS='|' read -r name file options rows; do
        run track -q --euc 0.5 $options $file
        check "$name" "0||$(printf '%b' "$rows" | sed '/./s/$/,-1,-1,-1/')" "$status|$err|$out"
    done <<'END'
first row in the stable frame, its box unchanged|one.txt|--scale 1 --stable 2|2,1,12,10,20,40,0.9\n3,1,14,10,20,40,0.7\n8,1,16,10,20,40,0.6
two rows without a detection|one.txt|--scale 1 --stable 2 --coasted|2,1,12,10,20,40,0.9\n3,1,14,10,20,40,0.7\n4,1,14,10,20,40,0.7\n5,1,14,10,20,40,0.7\n8,1,16,10,20,40,0.6
missed for longer than allowed|one.txt|--scale 1 --stable 2 --removal 3|2,1,12,10,20,40,0.9\n3,1,14,10,20,40,0.7
the gate in pixels|tenfold.txt|--scale 1 --stable 2|
the gate in units|tenfold.txt|--scale 0.125 --stable 2|2,1,120,100,200,400,0.9\n3,1,140,100,200,400,0.7\n8,1,160,100,200,400,0.6
the gate by the boxes|square.txt|--stable 2|2,1,16,0,40,40,1
beyond the gate by the boxes|square.txt|--stable 2 --scale 1|
overlap never enough|one.txt|--scale 1 --stable 2 --iou 1|
frames with dropped detections only|one.txt|--scale 1 --stable 2 --min-conf 0.75 --coasted|2,1,12,10,20,40,0.9\n3,1,12,10,20,40,0.9\n4,1,12,10,20,40,0.9
a full tracker|classes.txt|--scale 1 --stable 1 --max-objects 1|1,1,10,10,20,40,1\n2,1,10,10,20,40,1
class kept apart|classes.txt|--scale 1 --stable 2 --class-column 8|2,1,11,10,20,40,1\n2,2,10,10,20,40,1
class ignored|classes.txt|--scale 1 --stable 2 --class-column 8 --ignore-class|2,1,10,10,20,40,1\n2,2,11,10,20,40,1
END
    printf 'scale = 1\nstable = 2\neuc = 0.5\nremoval = 3\n' >options.toml
    run track -q --config options.toml --removal 10 one.txt
    check "the command line before a configuration" "2,1,12 3,1,14 8,1,16" "$(cut -d, -f1-3 stdout | one_line)"
    # each seen once, so that the oldest of twelve lives just long enough to be beside the youngest
    for n in 1 2 3 4 5 6 7 8 9 10 11 12; do echo "$n,-1,${n}00,0,10,10,1"; done >once.txt
    run track -q -s 1 --scale 1 once.txt
    check "the capacity of the file holds what is not seen, too" 12 "$(wc -l <stdout | tr -d ' ')"
    for n in 10 20 30 40 50 60 70 80 90; do printf '%s\n' "2,-1,${n}1,0,1,1,1" "1,-1,${n}2,0,1,1,1"; done >mixed.txt
    run track -q -s 1 --scale 1 mixed.txt
    check "file order within a frame" "102 202 302 402 502 602 702 802 902" \
        "$(grep '^1,' stdout | cut -d, -f3 | one_line)"
    echo 10000000,-1,10,20,30,40,0.5 >last.txt
    run track -q -s 1 last.txt --scale 1
    check "the last frame there may be" "10000000,1,10,20,30,40,0.5,-1,-1,-1" "$out"
}

summary() {
    printf '%s\n' 1,-1,0,0,40,40,1 2,-1,30,0,40,40,1 3,-1,60,0,40,40,1 3,-1,60,0,40,40,0.1 >steps.txt
    while IFS='|' read -r name options line; do
        run track --iou 0 $options steps.txt
        check "$name" "0|1" "$status|$(grep -cxF -- "$line" stderr)"
    done <<'END'
empty frames and all||frames       3
dropped detections|--min-conf 0.5|detections   3 (1 more below --min-conf)
rows|--scale 0.1 --stable 1|rows         4
identifiers|--scale 0.1 --stable 1|identifiers  2
share of detections|--scale 0.1 --stable 3|in a track   25 % of the detections, reported under an identifier
gate of the median box||gate         40 pixels (scale 0.25, auto: the median box of the first frame)
gate of a given scale|--scale 0.25|gate         40 pixels (scale 0.25, given)
too few for a choice||min-conf     none (auto: too little was seen yet)
a given confidence|--min-conf 0.5|min-conf     0.5 (given)
no frame rate||removal      10 frames (auto: the frame rate is not known)
a given frame rate|--fps 25|removal      13 frames (auto: half a second at the frame rate)
a steadied camera|--steady on|steady       on (given)
capacity reached|--stable 1 --max-objects 1|capacity     1 (reached in 3 frames or more; 4 is enough for certain)
capacity not reached|--max-objects 3|capacity     3 (4 is enough for certain)
objects outrun the gate|--scale 0.5|zeltrack: warning: 100 % of the detections had nothing of the frame before within the gate; try --scale 0.17
nearly nothing left|--min-conf 2|zeltrack: warning: 100 % of the detections were below the least confidence; try a lower --min-conf
END
    printf '%s\n' 1,-1,0,0,400,400,1 2,-1,30,0,40,40,1 3,-1,60,0,40,40,1 4,-1,60,0,-1,40,1 >odd.txt
    run track odd.txt
    check "an odd first frame" 1 "$(grep -c 'the boxes of the first frame, 400 pixels in size, are unlike.*try --scale 0.25' stderr)"
    check "a width below 0" 1 "$(grep -c 'warning: 1 detections without a size' stderr)"
    mkdir -p seq/det
    cp steps.txt seq/det/det.txt
    for place in seq/det seq; do
        printf '[Sequence]\nframeRate=7\nseqLength=9\n' >$place/seqinfo.ini
        run track seq/det/det.txt
        check "$place/seqinfo.ini" "1 1" "$(grep -c 'frames       9$' stderr) $(grep -c 'removal      4 frames' stderr)"
        rm $place/seqinfo.ini
    done
    printf 'frameRate=-1e99\n[Sequence]\nseqLength=1e30\n' >seq/seqinfo.ini
    run track seq/det/det.txt
    check "a hostile seqinfo.ini" "1 seq/seqinfo.ini" "$status $(grep -o 'seq/seqinfo.ini' stderr)"
    run track --iou 0 --scale 0.1 steps.txt
    check "no warning within the gate" "0" "$(grep -c warning stderr)"
    check "no word on a capacity that suffices" "0" "$(grep -c capacity stderr)"
}

# --- output files ----------------------------------------------------------------------------------------------------

output() {
    umask 022
    row=1,1,10,20,30,40,0.5,-1,-1,-1
    printf '1,-1,10,20,30,40,0.5\n' >in.txt
    printf '1,-1,10,20,30,40,0.5\n1,-1\n' >bad.txt
    track='track -q -s 1 --scale 1'
    run $track in.txt -o new.txt
    check "a new file" "0|$row|644" "$status|$(cat new.txt)|$(stat -c %a new.txt)"
    echo old >old.txt && chmod 600 old.txt
    run $track bad.txt -o old.txt
    check "bad input leaves the old file" "1|old" "$status|$(cat old.txt)"
    run $track in.txt -o old.txt
    check "an old file is replaced, its mode kept" "0|$row|600" "$status|$(cat old.txt)|$(stat -c %a old.txt)"
    mkdir there && echo old >there/target && ln -s there/target link
    run $track in.txt -o link
    check "a link stays a link" "0|there/target|$row" "$status|$(readlink link)|$(cat there/target)"
    run $track in.txt -o there
    check "a directory" "1|zeltrack: there: Is a directory" "$status|$err"
    run $track in.txt -o there/none/x
    check "no such directory" "1|zeltrack: there/none/x: No such file or directory" "$status|$err"
    mkfifo pipe && cat pipe >piped.txt &
    while [ ! -p pipe ]; do sleep 0.1; done
    run $track in.txt -o pipe
    wait
    check "a named pipe stays one" "0|$row" "$status|$(cat piped.txt)"
    [ -p pipe ] || return 1  # and devices were replaced, too
    echo before >log && zeltrack $track in.txt -o /dev/fd/3 3>>log && ln -s /dev/stderr to_log &&
        zeltrack $track in.txt -o to_log 2>>log
    check "an open descriptor is written to, not what it leads to" "before $row $row" "$(one_line log)"
    check "a descriptor of a pipe" "$row" "$(zeltrack $track in.txt -o /dev/fd/1 | cat)"
    run $track in.txt -o /dev/full
    check "a full device" "1|zeltrack: /dev/full: No space left on device" "$status|$err"
    (ulimit -f 1 && zeltrack synth -o large.txt 2>/dev/null)
    check "a limited size" "1|" "$?|$(find . -name large.txt)"
    check "standard input to standard output" "$row" "$(zeltrack $track - <in.txt)"
    zeltrack $track in.txt >/dev/full 2>stderr
    check "standard output full" "1|zeltrack: standard output: No space left on device" "$?|$(cat stderr)"
    zeltrack $track in.txt >&- 2>stderr
    check "standard output closed" "1|zeltrack: standard output: Bad file descriptor" "$?|$(cat stderr)"
    zeltrack track -s 1 --scale 1 in.txt -o closed.txt 2>&-
    check "standard error closed" "0|$row" "$?|$(cat closed.txt)"
    { zeltrack synth 2>stderr; echo $? >status; } | sed 1q >first
    check "a closed pipe" "1|zeltrack: standard output: Broken pipe" "$(cat status)|$(cat stderr)"
    interrupted
    check "no temporary file is left" "" "$(find . -name '.zeltrack*')"
}

# A long run that is ended while its output grows.
interrupted() {
    eval "exec $program synth --objects 100 --frames 10000000 -o long.txt" &
    while kill -0 $! && [ -z "$(find . -name '.zeltrack*' -size +0)" ]; do sleep 0.1; done
    kill -TERM $!
    wait $! 2>stderr
    check "ended by a signal" "143|" "$?|$(find . -name long.txt)"
}

# --- invented sequences ----------------------------------------------------------------------------------------------

synth() {
    run synth --objects 5 --frames 400 --size 640x480 --seed 7 --gt truth.txt
    cp stdout first.txt
    check "the same on every machine" "178677811 188462" "$(cat stdout truth.txt | cksum)"
    check "all objects in every frame" "400 frames of 5" \
        "$(cut -d, -f1 truth.txt | uniq -c | awk '{ n += $1 == 5 } END { print n " frames of 5" }')"
    check "objects leave and others enter" yes "$(cut -d, -f2 truth.txt | sort -n | tail -1 | awk '$1 > 5 { print "yes" }')"
    check "nearly a tenth is missed" yes "$(wc -l <stdout | awk '1750 < $1 && $1 < 1850 { print "yes" }')"
    run synth --objects 5 --frames 400 --size 640x480 --seed 8
    check "another seed" differs "$(cmp -s stdout first.txt || echo differs)"
    run synth --miss 0 --noise 0 --frames 20 --gt truth.txt
    check "a perfect detector" "" "$(cut -d, -f1,3-6 truth.txt | sort >a; cut -d, -f1,3-6 stdout | sort | diff a - | head -3)"
    run synth --miss 1 --gt truth.txt
    check "a blind detector" "0|6000" "$(wc -l <stdout | tr -d ' ')|$(wc -l <truth.txt | tr -d ' ')"
    for pan in 0 8 -8; do
        zeltrack synth --pan $pan --frames 200 -o pan.txt
        run track pan.txt
        check "steadied at a pan of $pan" "$([ $pan = 0 ] && echo off || echo on)" "$(sed -n 's/^steady  *\([a-z]*\) .*/\1/p' stderr)"
        check "hardly anything dropped at a pan of $pan" "" "$(grep '([0-9]\{3,\} more below' stderr)"
    done
    run synth --gt same.txt -o ./same.txt
    check "truth and detections in one file" 2 "$status"
    zeltrack synth --objects 3 --frames 60 --seed 3 --gt truth.txt | zeltrack track -q - | cut -d, -f2 | sort -u >found
    check "every object found, under one identifier" "$(cut -d, -f2 truth.txt | sort -u | wc -l)" "$(wc -l <found)"
}

# --- recordings ------------------------------------------------------------------------------------------------------

# One object that is hidden for 20 frames, and one that begins where the first would never be.
recording() {
    for f in 1 2 3 4 5 26 27 28; do echo "$f,-1,$((10 * f)),0,40,40,0.9"; done >hidden.txt
    for f in 26 27 28; do echo "$f,-1,$((10 * f)),300,40,40,0.9"; done >>hidden.txt
    while IFS='|' read -r name options rows; do
        run track -q $options hidden.txt
        check "$name" "0|$rows" "$status|$(cut -d, -f1,2,3 stdout | tr '\n' ' ')"
    done <<'END'
as a device tracks||2,1,20 3,1,30 4,1,40 5,1,50 27,2,270 27,3,270 28,2,280 28,3,280 
over a gap|--stitch 21|2,1,20 3,1,30 4,1,40 5,1,50 27,2,270 27,3,270 28,2,280 28,3,280 
over a gap that is long enough|--stitch 22|2,1,20 3,1,30 4,1,40 5,1,50 27,1,270 27,3,270 28,1,280 28,3,280 
from the first detection on|--backfill|1,1,10 2,1,20 3,1,30 4,1,40 5,1,50 26,2,260 26,3,260 27,2,270 27,3,270 28,2,280 28,3,280 
both|--backfill --stitch 21|1,1,10 2,1,20 3,1,30 4,1,40 5,1,50 26,1,260 26,3,260 27,1,270 27,3,270 28,1,280 28,3,280 
END
    zeltrack synth --frames 100 >det.txt
    zeltrack track -q det.txt | sort >live.txt
    zeltrack track -q --backfill det.txt | sort >filled.txt
    check "what is written live stays" "" "$(comm -23 live.txt filled.txt)"
}

# --- figures ---------------------------------------------------------------------------------------------------------

# Sequence A: one object for 4 frames, tracked as 1 and then 2. B: one object for 2 frames on a file of classes, whose
# distractor has a track of its own.
figures() {
    mkdir -p gt/A/gt gt/B one two
    for f in 1 2 3 4; do echo "$f,7,10,20,30,40,1,-1,-1,-1"; done >gt/A/gt/gt.txt
    printf '[Sequence]\nseqLength=8\n' >gt/A/seqinfo.ini
    printf '%s\n' 2,1,10,20,30,40,1,1,1 1,1,10,20,30,40,1,1,1 1,2,90,20,30,40,1,8,1 >gt/B/gt.txt
    for f in 1 2 3 4; do echo "$f,$((f / 3 + 1)),10,20,30,40,0.9,-1,-1,-1"; done >one/A.txt
    sed 's/,2,/,1,/' one/A.txt >two/A.txt
    printf '%s\n' 1,3,10,20,30,40,1 1,4,90,20,30,40,1 2,3,10,20,30,40,1 | tee two/B.txt >one/B.txt
}

scoring() {
    figures
    run eval gt one --columns MOTA,IDF1,IDSW,FP,ids,Frames
    check "folders, by class where there are classes" "0||sequence    MOTA    IDF1  IDSW  FP  ids  Frames
A          75.00   50.00     1   0    2       8
B         100.00  100.00     0   0    1       2
COMBINED   83.33   66.67     1   0    3      10" "$status|$err|$out"
    run eval gt one two --columns IDF1,IDSW,ids
    check "sets side by side" "0||sequence  tracks    IDF1  IDSW  ids
A         one      50.00     1    2
A         two     100.00*    0*   1

B         one     100.00     0    1
B         two     100.00     0    1

COMBINED  one      66.67     1    3
COMBINED  two     100.00*    0*   2" "$status|$err|$out"
    run eval gt one two --columns IDSW --format markdown
    check "Markdown" "| A | two | **0** |" "$(grep 'A | two' stdout)"
    run eval gt/A/gt/gt.txt one/A.txt --format csv --columns MOTA,FP_per_frame --switches switches.csv --curve curve.csv
    check "two files, named by their folder" "sequence,MOTA,FP_per_frame A,0.75,0" "$(head -2 stdout | one_line)"
    check "switches" "sequence,frame,object,from,to,since A,3,7,1,2,1" "$(one_line switches.csv)"
    check "thresholds" "39|A,0.05,0.7071067811865476,1,0.5,1,1,0.5,1,1,0.7071067811865476,4,0,0" \
        "$(wc -l <curve.csv | tr -d ' ')|$(sed -n 2p curve.csv)"
    run eval gt two --format json
    check "JSON" '0|  "A": { "HOTA": { "CLR_Frames": 8, "CLR_Frames": 10,' \
        "$status|$(sed -n 2,3p stdout | tr -s '\n ' ' ' | sed 's/^/ /; s/ $//')$(grep Frames stdout | grep CLR | sed -n '1p;3p' | tr -s '\n ' ' ' | sed 's/ $//')"
    run eval gt one --rules mot15 --columns GT_Dets --format csv
    check "without classes" "4 3 7" "$(cut -d, -f2 stdout | sed 1d | one_line)"
    refused_figures
}

refused_figures() {
    while IFS='|' read -r name file content message; do
        cp $file kept
        printf '%b' "$content" >$file
        run eval -q gt one
        check "$name" "1||zeltrack: $message" "$status|$out|$err"
        cp kept $file
    done <<'END'
a wrong line|one/A.txt|1,1,10,20,30,40|one/A.txt:1: expected 7 fields or more, found 6
an identifier twice|one/A.txt|1,5,1,1,1,1,1\n2,5,1,1,1,1,1\n\n1,5,2,2,2,2,1|one/A.txt:4: identifier 5 twice in frame 1, first in line 1
beyond the sequence|one/A.txt|9,1,10,20,30,40,1|one/A.txt:1: expected a frame within the sequence, which has 8, found 9
truth beyond it|gt/A/gt/gt.txt|4,1,1,1,1,1,1\n9,1,1,1,1,1,0|gt/A/gt/gt.txt:2: expected a frame within the sequence, which has 8, found 9
no length|gt/A/seqinfo.ini|[Sequence]\nseqLength=many|gt/A/seqinfo.ini:2: expected seqLength from 1 to 10000000, found "many"
no line of the kind|gt/A/seqinfo.ini|seqLength|gt/A/seqinfo.ini:1: expected a line KEY=VALUE, found "seqLength"
END
    run eval gt one --rules mot17
    check "no class" '1|zeltrack: gt/A/gt/gt.txt:1: expected a class from 1 to 13, found "-1"' "$status|$err"
    run eval gt one --columns HOTA,MOTAR
    check "no such figure" 'expected names of figures, divided by commas, found "MOTAR"; did you mean MOTA?' \
        "$(sed 's/.*columns: //; s/ (see.*//' stderr)"
    run eval gt one/A.txt
    check "a folder and a file" "2|zeltrack: one/A.txt: expected a folder, as is gt" "$status|$err"
    run eval gt/A/gt/gt.txt one/A.txt --curve one/A.txt
    check "tracks as output" "2|zeltrack: one/A.txt: expected an output other than the input" "$status|$err"
    mv two/A.txt two/C.txt
    run eval gt one two
    check "without a partner" "1|zeltrack: no sequence A in two, C in gt, C in one (--skip-missing leaves out what is not everywhere)" \
        "$status|$err"
    run eval gt one two --skip-missing --columns HOTA --format csv
    check "what is everywhere" "0|B B COMBINED COMBINED" "$status|$(cut -d, -f1 stdout | sed 1d | one_line)"
}

# --- searching for options -------------------------------------------------------------------------------------------

# Three sequences in which a row of false boxes, none of which lasts, has a confidence below 0.4.
made_up_sequences() {
    mkdir det gt
    for n in 1 2 3; do
        zeltrack synth --objects 4 --frames 60 --seed $n --gt gt/s$n.txt 2>/dev/null |
            awk -F, -v OFS=, '{ $7 = 0.6 + 0.3 * $7; print } $1 % 2 { $3 += 300; $7 = 0.2 + 0.1 * (NR % 2); print }' >det/s$n.txt
    done
}

tuning() {
    made_up_sequences
    run tune -q det --gt gt --fix min-conf=0 --param min-conf=0:1
    check "searched and fixed" "2|zeltrack: --param: min-conf is fixed" "$status|$err"
    tune="tune -q det --gt gt --trials 60 --fix steady=off --param min-conf=0:0.9"
    run $tune -j 1 -o best.ini --trials-out one.json --report report.html
    check "a search" "0||HOTA, mean over 3 sequences" "$status|$err|$(head -1 stdout)"
    check "outputs" "steady = off|1|1" \
        "$(grep '^steady' best.ini)|$(grep -c '^# best' best.ini)|$(grep -c 'zeltrack view det/s3.txt' report.html)"
    cp stdout alone
    run $tune -j 3 --trials-out three.json
    check "whatever the number of jobs" "0" "$status$(cmp alone stdout && cmp one.json three.json)"
    run track -q --config best.ini det/s1.txt -o tracks.txt
    check "options for track" "0|" "$status|$err"
    split -n l/3 one.json part.
    run tune --from part.ac part.aa part.ab -o merged.ini
    check "trials from elsewhere" "0||" "$status|$err|$(cmp alone stdout)$(grep -v '^# zeltrack' merged.ini >merged && grep -v '^# zeltrack' best.ini | cmp - merged)"
    run $tune --seed 1:2
    cp stdout both
    zeltrack $tune --seed 2 --trials-out two.json >/dev/null
    run tune --from two.json one.json
    check "a search from each seed, on one machine or on two" "" "$(cmp both stdout)"
    for file in det/*.txt gt/*.txt; do
        mkdir -p from0/${file%/*}
        awk -F, -v OFS=, '{ --$1; print }' $file >from0/$file
    done
    zeltrack tune -q det --gt gt --trials 5 >from1.txt
    run tune -q from0/det --gt from0/gt --frame-base 0 --trials 5
    check "frames from 0" "0||" "$status|$err|$(cmp from1.txt stdout)"
    refused_searches
    ended_searches
}

refused_searches() {
    echo 1,2 >gt.json
    while IFS='|' read -r name arguments state message; do
        run tune -q $arguments
        check "$name" "$state||zeltrack: $message" "$status|$out|${err% (see *}"
    done <<'END'
no ground truth|det|2|expected as many files or folders after --gt as DETECTIONS
trials and files|det --gt gt --from one.json|2|expected either DETECTIONS or --from
no partner|det/s1.txt --gt gt|2|det/s1.txt: expected a folder, as is gt
a folder and a file|det --gt gt/s1.txt|2|det: expected a file, as is gt/s1.txt
an option that track does not have|det --gt gt --param speed=1:2|2|expected an option, found "--speed"; did you mean --steady?
a range that track refuses|det --gt gt --param iou=0:2|2|--iou: expected a number from 0 to 1, found "2"
no frame base|det --gt gt --frame-base 2|2|--frame-base: expected 0 or 1, found "2"
no range|det --gt gt --param iou=1|2|--param: expected NAME=LOW:HIGH or NAME=LOW:HIGH:log, found "iou=1"
no such figure|det --gt gt --maximize HOTTA|2|--maximize: expected the name of a figure, found "HOTTA"; did you mean HOTA?
less is better|det --gt gt --maximize IDSW|2|--maximize: expected IDSW with a minus, since less is better, found "IDSW"
no group|det --gt gt --group x*|2|--group: expected a pattern that matches a sequence, found "x*"
no trials|--from gt.json|1|gt.json:1: expected a trial as --trials-out writes it, found "1,2"
an input as output|--from one.json -o one.json|2|one.json: expected an output other than the input
END
}

ended_searches() {
    eval "exec $program tune det --gt gt --trials 1000000 -j 2 --trials-out ended.json >ended.txt 2>stderr" &
    sleep 1
    kill -TERM $!
    wait $!
    check "ended with what there is" "0|zeltrack: ended early|HOTA, mean over 3 sequences" \
        "$?|$(grep -o 'zeltrack: ended early' stderr)|$(head -1 ended.txt)"
    check "trials are kept" 0 "$([ -s ended.json ] || echo 1)0"
    check "no temporary file is left" "" "$(find . -name '.zeltrack*')"
}

"$group" || failed=1
exit $failed
