// SPDX-License-Identifier: MIT
//
// Two sets of tracks side by side: A, which is another setting or another tracker, and what the page shows now. Knows
// no document.
import {TOOK, range} from './run.mjs';
import {lowerBound} from './numbers.mjs';

// What a run reports, as a list by frame that any tracker could have written. `row` is the detection's in the file.
export function tracksOf(run, name) {
    const {lives, rows, detections} = run, {outcome, life, frame} = detections, places = [];
    for (let i = 0; i < detections.count; i++) {
        if (life[i] < 0) continue;
        const at = lives.first[life[i]] + frame[i] - lives.birth[life[i]];
        if (rows.detection[at] === i && rows.reported[at] && (outcome[i] === TOOK || lives.confirmed[life[i]] === 0))
            places.push([i, at]);
    }
    const list = source => Float32Array.from(places, ([, at]) => source[at]);
    const {box} = rows;
    return {
        name,
        count: places.length,
        frame: Int32Array.from(places, ([i]) => frame[i]),
        id: Int32Array.from(places, ([i]) => lives.id[life[i]]),
        row: Int32Array.from(places, ([i]) => detections.row[i]),
        x: list(box.x),
        y: list(box.y),
        w: list(box.w),
        h: list(box.h),
        figures: run.figures,
        followedBy: run.followedBy ?? null
    };
}

export const boxesAt = (tracks, frame) => range(lowerBound(tracks.frame, frame), lowerBound(tracks.frame, frame + 1));

function overlap(a, i, b, j) {
    const shared = (x, w) =>
        Math.min(a[x][i] + a[w][i] / 2, b[x][j] + b[w][j] / 2) - Math.max(a[x][i] - a[w][i] / 2, b[x][j] - b[w][j] / 2);
    const w = shared('x', 'w'), h = shared('y', 'h');
    return w > 0 && h > 0 ? w * h / (a.w[i] * a.h[i] + b.w[j] * b.h[j] - w * h) : 0;
}

// Which box of the one is which of the other in a frame: the same detection of the file where both know it, else the
// boxes that overlap most, by half or more.
function pairs(a, b, ofA, ofB) {
    if (a.row && b.row) {
        const byRow = new Map(ofB.map(j => [b.row[j], j]));
        return ofA.filter(i => byRow.has(a.row[i])).map(i => [i, byRow.get(a.row[i])]);
    }
    const all = [];
    for (const i of ofA)
        for (const j of ofB) {
            const share = overlap(a, i, b, j);
            if (share >= 0.5) all.push([i, j, share]);
        }
    const usedA = new Set(), usedB = new Set();
    return all.sort((x, y) => y[2] - x[2]).filter(([
                                                      i, j
                                                  ]) => !usedA.has(i) && !usedB.has(j) && usedA.add(i) && usedB.add(j));
}

// The frames in which they differ: boxes that only one of them reports, and boxes that both report but join to
// different earlier ones. An identifier alone is no difference: trackers count as they like.
export function differences(a, b) {
    const list = [], latestA = new Map(), latestB = new Map();
    for (let i = 0, j = 0; i < a.count || j < b.count;) {
        const frame = Math.min(a.frame[i] ?? Infinity, b.frame[j] ?? Infinity), ofA = [], ofB = [];
        for (; a.frame[i] === frame; i++) ofA.push(i);
        for (; b.frame[j] === frame; j++) ofB.push(j);
        const found = pairs(a, b, ofA, ofB), pairedA = new Set(found.map(it => it[0])),
              pairedB = new Set(found.map(it => it[1]));
        const onlyA = ofA.filter(it => !pairedA.has(it)).map(it => a.id[it]),
              onlyB = ofB.filter(it => !pairedB.has(it)).map(it => b.id[it]);
        const other = [];
        for (const [p, q] of found) {
            const before = latestA.get(a.id[p]), now = latestB.get(b.id[q]);
            if ((before !== undefined && before !== b.id[q]) || (now !== undefined && now !== a.id[p]))
                other.push([a.id[p], b.id[q]]);
            latestA.set(a.id[p], b.id[q]);
            latestB.set(b.id[q], a.id[p]);
        }
        if (onlyA.length + onlyB.length + other.length) list.push({frame, onlyA, onlyB, other});
    }
    return list;
}

// The lives of a set of tracks: by identifier, the places of its boxes.
export function livesOf(tracks) {
    const byId = new Map();
    for (let i = 0; i < tracks.count; i++) {
        if (!byId.has(tracks.id[i])) byId.set(tracks.id[i], []);
        byId.get(tracks.id[i]).push(i);
    }
    return byId;
}
