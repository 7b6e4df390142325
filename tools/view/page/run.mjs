// SPDX-License-Identifier: MIT
//
// The packed columns of one run of the tracker, unpacked: lives, rows, detections and ground truth. Knows no document,
// so that two runs can stand side by side. All per-frame lists go by busy frames, those that hold anything at all: what
// lies between them costs nothing, however long it is.
import {lowerBound} from './numbers.mjs';

export const TOOK = 0, FAR = 1, REFUSED = 2, LOST = 3, DISPLACED = 4;
export const ALONE = 5;  // too far, since there was no track at all

const floats = count => new Float32Array(count);
const integers = count => new Int32Array(count);
// Centre and size in pixels.
const boxes = count => ({x: floats(count), y: floats(count), w: floats(count), h: floats(count)});

// Single-precision numbers as written in a file: whole numbers of a decimal unit, or else their bits.
const RAW = 10, CONSTANT = 11;
function readExact(source, count) {
    const values = floats(count), code = count ? source.unsigned() : RAW, unit = 10 ** code;
    if (code === CONSTANT) return values.fill(source.float());
    for (let i = 0; i < count; i++) values[i] = code === RAW ? source.float() : source.signed() / unit;
    return values;
}

// Frames as gaps, each with the number of its entries.
function readFrames(source, count) {
    const frames = integers(count);
    for (let i = 0, frame = 0; source.more();) {
        frame += source.unsigned();
        for (let n = source.unsigned(); n > 0; n--) frames[i++] = frame;
    }
    return frames;
}

function readBoxes(columns, name) {
    const count = columns.number(name + 'Count'), part = field => readExact(columns.reader(name + field), count);
    const list = {
        ...boxes(count),
        count,
        left: part('Left'),
        top: part('Top'),
        frame: readFrames(columns.reader(name + 'Frames'), count),
        score: part('Score'),
        cls: part('Class')
    };
    list.w = part('Width');
    list.h = part('Height');
    for (let i = 0; i < count; i++) {
        list.x[i] = list.left[i] + list.w[i] / 2;
        list.y[i] = list.top[i] + list.h[i] / 2;
    }
    return list;
}

// A life is a track from birth to end; row first + i is its frame birth + i.
function readLives(source, count) {
    const lives = {
        count,
        rows: 0,
        birth: integers(count),
        span: integers(count),
        first: integers(count + 1),
        end: new Uint8Array(count),
        confirmed: integers(count),
        id: integers(count),
        forgotten: [],
        byId: new Map()
    };
    for (let k = 0, birth = 0, id = 0; k < count; k++) {
        lives.birth[k] = birth += source.unsigned();
        lives.span[k] = source.unsigned();
        lives.first[k] = lives.rows;
        lives.rows += lives.span[k];
        lives.end[k] = source.unsigned();
        lives.confirmed[k] = source.unsigned() - 1;
        lives.id[k] = lives.confirmed[k] < 0 ? -1 : id + source.signed();
        id = Math.max(id, lives.id[k]);
        if (lives.id[k] >= 0) lives.byId.set(lives.id[k], k);
        lives.forgotten.push(Array.from({length: source.unsigned()}, source.unsigned));
    }
    lives.first[count] = lives.rows;
    return lives;
}

// Which frames hold anything, in order.
function busyFrames(lives, ...lists) {
    const spans = Array.from(lives.birth, (birth, k) => [birth, birth + lives.span[k]]);
    const all = new Set();
    for (const list of lists)
        for (const frame of list.frame) all.add(frame);
    let done = 0;  // lives come in the order of birth
    for (const [birth, end] of spans) {
        for (let frame = Math.max(birth, done); frame < end; frame++) all.add(frame);
        done = Math.max(done, end);
    }
    return Int32Array.from(all).sort();
}

// The places in a list sorted by frame where the entries of each busy frame begin.
function starts(busy, frames) {
    const start = integers(busy.length + 1);
    for (let b = 0, i = 0; b < busy.length; b++) {
        start[b] = i;
        while (i < frames.length && frames[i] === busy[b]) i++;
    }
    start[busy.length] = frames.length;
    return start;
}

// The lives of each busy frame in the order of birth, those that it ended included.
function listLive(busy, lives) {
    const start = integers(busy.length + 1), from = integers(lives.count);
    for (let k = 0; k < lives.count; k++) {
        from[k] = lowerBound(busy, lives.birth[k]);
        for (let b = from[k]; b < from[k] + lives.span[k]; b++) start[b + 1]++;
    }
    for (let b = 1; b <= busy.length; b++) start[b] += start[b - 1];
    const fill = start.slice(), list = integers(lives.rows);
    for (let k = 0; k < lives.count; k++)
        for (let b = from[k]; b < from[k] + lives.span[k]; b++) list[fill[b]++] = k;
    return {start, list};
}

// Detections are those of the input that the tracker was given; the others were too weak or beyond its capacity.
function readDetections(columns, input) {
    const count = columns.number('count'), frame = integers(count), source = columns.reader('detections');
    const found = {
        ...boxes(count),
        count,
        frame,
        row: integers(count),
        cls: integers(count),
        left: floats(count),
        top: floats(count),
        score: floats(count),
        outcome: new Uint8Array(count),
        started: new Uint8Array(count),
        close: new Uint8Array(count),
        place: integers(count),
        nearest: integers(count).fill(-1),
        distance: floats(count),
        overlap: floats(count),
        rival: integers(count).fill(-1),
        life: integers(count).fill(-1)
    };
    for (let i = 0, row = 0, current = 0, first = 0; i < count; i++, row++) {
        row += source.unsigned();
        found.row[i] = row;
        if (input.frame[row] !== current) first = i;
        current = frame[i] = input.frame[row];
        for (const name of ['x', 'y', 'w', 'h', 'left', 'top', 'score', 'cls']) found[name][i] = input[name][row];
        const code = source.unsigned();
        found.outcome[i] = code & 7;
        found.started[i] = code >> 3 & 1;
        found.close[i] = code >> 4 & 1;
        found.place[i] = source.unsigned();
        if (!found.place[i]) {
            found.outcome[i] = ALONE;
            continue;
        }
        found.distance[i] = source.float();
        found.overlap[i] = source.float();
        if (found.outcome[i] >= LOST) found.rival[i] = first + source.unsigned();
    }
    return found;
}

// Row codes: missed as before, missed at a new prediction, both reported or not; then the detections of the frame.
const CODES = 4;

// Boxes of rows are whole numbers of a decimal part of a pixel, as differences to the detection or to the row before.
function readRows(source, run) {
    const {lives, detections, digits} = run, unit = 10 ** digits, count = lives.rows;
    const rows = {
        count,
        detection: integers(count).fill(-1),
        misses: integers(count),
        reported: new Uint8Array(count),
        predicted: boxes(count),
        box: boxes(count),
        hits: integers(count + 1)
    };
    const outputs = [rows.predicted, rows.box].map(list => [list.x, list.y, list.w, list.h]);
    const at = [0, 0, 0, 0], predicted = [0, 0, 0, 0], box = [0, 0, 0, 0];
    const toGrid = value => Math.sign(value) * Math.round(Math.abs(value * unit));
    const findOnGrid = i => {
        at[0] = toGrid(detections.left[i] + detections.w[i] / 2);
        at[1] = toGrid(detections.top[i] + detections.h[i] / 2);
        at[2] = toGrid(detections.w[i]);
        at[3] = toGrid(detections.h[i]);
    };
    const read = (target, base, same) => {
        for (let j = 0; j < 4; j++) target[j] = base[j] + (same ? 0 : source.signed());
    };
    for (let k = 0; k < lives.count; k++) {
        let repeat = 0, code = 0, busy = run.at(lives.birth[k]);
        for (let row = lives.first[k]; row < lives.first[k + 1]; row++, busy++) {
            if (repeat > 0) {
                repeat--;
            } else {
                code = source.unsigned();
                if (code < 2) repeat = source.unsigned();
            }
            if (code >= CODES) {
                const i = run.detectionStart[busy] + code - CODES;
                findOnGrid(i);
                read(predicted, at, row === lives.first[k]);
                read(box, at, row === lives.first[k]);
                rows.detection[row] = i;
                detections.life[i] = k;
            } else if (code > 1) {
                read(predicted, box, false);
            }
            rows.misses[row] = code >= CODES ? 0 : rows.misses[row - 1] + 1;
            rows.reported[row] = code >= CODES ?
                Number(lives.confirmed[k] >= 0 && row - lives.first[k] >= lives.confirmed[k]) :
                1 - code % 2;
            rows.hits[row + 1] = rows.hits[row] + Number(code >= CODES);
            for (let j = 0; j < 4; j++) {
                outputs[0][j][row] = predicted[j] / unit;
                outputs[1][j][row] = box[j] / unit;
            }
        }
    }
    return rows;
}

// Objects of the ground truth, each a list of boxes by frame.
export function readTruth(columns) {
    if (!columns.has('truthCount')) return null;
    const source = columns.reader('truthId'), list = readBoxes(columns, 'truth'), byId = new Map();
    list.id = integers(list.count);
    for (let i = 0; i < list.count; i++) {
        const id = list.id[i] = source.signed();
        if (!byId.has(id)) byId.set(id, []);
        byId.get(id).push(i);
    }
    return {...list, objects: [...byId].sort((a, b) => a[0] - b[0]).map(([id, boxes]) => ({id, boxes}))};
}

// The switches of CLEAR. `cause` is the first frame in which the object had no longer the track before.
function readChanges(source) {
    const list = [];
    while (source.more()) {
        const [frame, object, before, after, since] = Array.from({length: 5}, source.signed);
        list.push({frame, object, before, after, cause: frame - since + 1});
    }
    return list;
}

// By box of the ground truth: the identifier of the track that follows it, and the detection that shows it.
function readMatches(run, columns) {
    const {truth} = run, places = columns.reader('truthDetection'), tracks = columns.reader('truthTrack');
    run.followedBy = integers(truth.count);
    run.shownBy = integers(truth.count).fill(-1);
    for (let i = 0, b = 0; i < truth.count && tracks.more(); i++) {
        while (run.busy[b] < truth.frame[i]) b++;
        run.followedBy[i] = tracks.unsigned();
        const place = places.unsigned();
        if (place) run.shownBy[i] = run.detectionStart[b] + place - 1;
    }
}

const rangeOf = values =>
    values.reduce(([low, high], value) => [Math.min(low, value), Math.max(high, value)], [Infinity, -Infinity]);

// The file itself, which all runs share.
export function readFile(columns) {
    const input = readBoxes(columns, 'input');
    return {
        name: columns.text('file'),
        command: columns.text('command'),
        input,
        scoreRange: rangeOf(input.score),
        truth: readTruth(columns),
        others: columns.has('othersCount') ? readBoxes(columns, 'others') : null,
        frames: columns.number('frames'),
        size: columns.number('width') ? [columns.number('width'), columns.number('height')] : null,
        classColumn: columns.number('classColumn'),
        classBase: columns.number('classBase'),
        frameBase: columns.number('frameBase')
    };
}

// Those that end in Now are what an automatic choice came to at the end.
const NUMBERS = [
    'scale', 'chosen', 'gate', 'euc', 'iou', 'stable', 'removal', 'minConf', 'minConfNow', 'steady', 'steadyNow',
    'capacity', 'maxObjects', 'ignoreClass'
];

function findNearest(run) {
    const {detections, live, busy} = run;
    for (let i = 0, b = 0; i < detections.count; i++) {
        while (busy[b] < detections.frame[i]) b++;
        if (detections.place[i]) detections.nearest[i] = live.list[live.start[b] + detections.place[i] - 1];
    }
}

export function createRun(columns, file = readFile(columns)) {
    const run = {
        ...file,
        file,
        digits: columns.number('digits'),
        weak: columns.number('weak'),
        unread: columns.number('unread')
    };
    run.parameters = Object.fromEntries(NUMBERS.map(name => [name, columns.number(name)]));
    run.gate = run.parameters.gate / run.parameters.scale;  // in pixels, like all lengths
    run.near = Math.sqrt(run.parameters.euc) / run.parameters.scale;
    run.hasClasses = file.input.cls.some(cls => cls !== file.input.cls[0]);
    run.lives = readLives(columns.reader('lives'), columns.number('lifeCount'));
    run.detections = readDetections(columns, run.input);
    run.busy = busyFrames(run.lives, run.detections, run.truth ?? {frame: []});
    run.at = frame => lowerBound(run.busy, frame);
    run.detectionStart = starts(run.busy, run.detections.frame);
    run.truthStart = run.truth && starts(run.busy, run.truth.frame);
    run.live = listLive(run.busy, run.lives);
    findNearest(run);
    run.rows = readRows(columns.reader('rows'), run);
    run.medianSize = columns.number('medianSize');
    run.figures = new Map(
        columns.names().filter(name => name.startsWith('figure.')).map(name => [name.slice(7), columns.number(name)]));
    run.changes = readChanges(columns.reader('changes'));
    if (run.truth) readMatches(run, columns);
    return run;
}

// Tracks of another tracker, if the page was given any, as tracksOf() gives those of a run.
export function readOther(columns) {
    if (!columns.has('compareCount')) return null;
    const list = readBoxes(columns, 'compare'), ids = columns.reader('compareId'),
          followed = columns.reader('compareTruthTrack');
    const figures = columns.names().filter(name => name.startsWith('compareFigure.'));
    return {
        ...list,
        name: columns.text('compareName'),
        row: null,
        id: Int32Array.from({length: list.count}, ids.signed),
        figures: new Map(figures.map(name => [name.slice(14), columns.number(name)])),
        followedBy:
            Int32Array.from({length: columns.number('truthCount')}, () => followed.more() ? followed.unsigned() : 0)
    };
}

// --- what there is in a frame ---

const among = (run, start, frame) => {
    const b = run.at(frame);
    return b < run.busy.length && run.busy[b] === frame ? [start[b], start[b + 1]] : [0, 0];
};
export const range = (from, to) => Array.from({length: to - from}, (_, n) => from + n);
export const detectionsAt = (run, frame) => range(...among(run, run.detectionStart, frame));
export const liveAt = (run, frame) => run.live.list.subarray(...among(run, run.live.start, frame));
export const truthAt = (run, frame) => run.truth ? range(...among(run, run.truthStart, frame)) : [];

export const lastFrame = (run, k) => run.lives.birth[k] + run.lives.span[k] - 1;
export function rowAt(run, k, frame) {
    const {birth, span, first} = run.lives;
    return frame < birth[k] || frame >= birth[k] + span[k] ? -1 : first[k] + frame - birth[k];
}
export const confirmedAt = (run, k, frame) =>
    run.lives.confirmed[k] >= 0 && frame - run.lives.birth[k] >= run.lives.confirmed[k];
export const endsAt = (run, k, frame) => run.lives.end[k] > 0 && frame === lastFrame(run, k);
export const numberInFrame = (run, i) => i - run.detectionStart[run.at(run.detections.frame[i])] + 1;

// The matches of a tentative life that count towards its confirmation.
export function matches(run, k, frame) {
    const {first, birth, forgotten} = run.lives, row = first[k] + frame - birth[k];
    const since = forgotten[k][lowerBound(forgotten[k], frame - birth[k] + 1) - 1];
    return run.rows.hits[row + 1] - run.rows.hits[first[k] + (since ?? 0)];
}

// Hits, misses, the longest gap and the mean step of a life.
export function lifeFigures(run, k) {
    const {first} = run.lives, {hits, misses, box, detection} = run.rows, from = first[k], to = first[k + 1];
    let longest = 0, way = 0;
    for (let row = from; row < to; row++) {
        longest = Math.max(longest, misses[row]);
        if (row > from && detection[row] >= 0)
            way += Math.hypot(box.x[row] - box.x[row - 1], box.y[row] - box.y[row - 1]);
    }
    const count = hits[to] - hits[from];
    return {hits: count, misses: to - from - count, longest, step: count > 1 ? way / (to - from - 1) : 0};
}
