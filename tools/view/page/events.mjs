// SPDX-License-Identifier: MIT
//
// The events of a run, by kind and in the order of frames: what the totals count and what "next" goes to.
import {ALONE, DISPLACED, FAR, LOST, REFUSED, TOOK, lastFrame} from './run.mjs';
import {lowerBound} from './numbers.mjs';

// An event is a place in its kind: its frame and what it selects there. `subject` says what `items` are.
const kind = (key, name, subject) => ({key, name, subject, frames: [], items: []});

function add(list, frame, item) {
    list.frames.push(frame);
    list.items.push(item);
}

export const OUTCOME_KEYS = ['took', 'far', 'refused', 'lost', 'displaced', 'alone'];

function addDetections(run, kinds) {
    const {outcome, started, frame, count} = run.detections;
    for (let i = 0; i < count; i++) {
        add(kinds[OUTCOME_KEYS[outcome[i]]], frame[i], i);
        if (outcome[i] !== TOOK) add(started[i] ? kinds.started : kinds.noRoom, frame[i], i);
    }
}

function addLives(run, kinds) {
    const {birth, confirmed, end, first, count} = run.lives, {misses} = run.rows;
    const confirmations = [], gaps = [], ends = [];
    for (let k = 0; k < count; k++) {
        add(kinds.births, birth[k], k);
        if (confirmed[k] >= 0) confirmations.push([birth[k] + confirmed[k], k]);
        if (end[k]) ends.push([lastFrame(run, k), k]);
        for (let row = first[k]; row < first[k + 1]; row++) {
            kinds.misses.total += Number(misses[row] > 0);
            if (misses[row] === 1) gaps.push([birth[k] + row - first[k], k]);
        }
    }
    for (const [list, target] of [[confirmations, kinds.confirmations], [gaps, kinds.misses], [ends, kinds.ends]])
        for (const [frame, k] of list.sort((a, b) => a[0] - b[0])) add(target, frame, k);
    for (const end of [1, 2])
        for (const [frame, k] of ends)
            if (run.lives.end[k] === end) add(kinds[end === 1 ? 'missed' : 'tentative'], frame, k);
}

export function createEvents(run) {
    const kinds = {
        births: kind('b', 'births', 'life'),
        confirmations: kind('c', 'confirmations', 'life'),
        misses: {...kind('m', 'misses', 'life'), total: 0},
        ends: kind('e', 'ends', 'life'),
        missed: kind('', 'missed too long', 'life'),
        tentative: kind('', 'tentative too long', 'life'),
        took: kind('', 'took a track', 'detection'),
        alone: kind('', 'no track was there', 'detection'),
        far: kind('f', 'too far from any', 'detection'),
        refused: kind('r', 'refused by overlap', 'detection'),
        lost: kind('l', 'lost to a nearer', 'detection'),
        displaced: kind('p', 'displaced by a nearer', 'detection'),
        started: kind('', 'started a track', 'detection'),
        noRoom: kind('', 'no room', 'detection'),
        changes: kind('i', 'identity changes', 'change'),
    };
    addDetections(run, kinds);
    addLives(run, kinds);
    run.changes.forEach((change, n) => add(kinds.changes, change.frame, n));
    return kinds;
}

export const OUTCOMES = [TOOK, ALONE, FAR, REFUSED, LOST, DISPLACED];

// The place of the next event after a frame, or of the one before it; within the frame, next to the current item.
export function nextEvent({frames, items}, frame, item, forward) {
    const from = lowerBound(frames, frame), to = lowerBound(frames, frame + 1);
    for (let n = from; n < to; n++) {
        const next = n + (forward ? 1 : -1);
        if (items[n] === item) return next >= 0 && next < frames.length ? next : -1;
    }
    const next = forward ? to : from - 1;
    return next >= 0 && next < frames.length ? next : -1;
}

// How many events lie in each of so many equal parts of the frames.
export function density({frames}, count, parts) {
    const sums = new Int32Array(parts);
    for (const frame of frames) sums[Math.floor((frame - 1) / Math.max(count, 1) * parts)]++;
    return sums;
}
