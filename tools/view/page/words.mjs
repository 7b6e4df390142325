// SPDX-License-Identifier: MIT
//
// Sentences about a run: what became of a detection and why, and what state a track is in.
import {DISPLACED, LOST, REFUSED, TOOK, confirmedAt, endsAt, lastFrame, matches, numberInFrame, rowAt} from './run.mjs';
import {apart, exact, pixels, plural} from './numbers.mjs';

export const endWords = ['end of file', 'missed too long', 'tentative too long'];
export const outcomeWords = [
    'took a track', 'too far from any', 'refused by overlap', 'lost to a nearer', 'displaced by a nearer',
    'no track was there'
];

export const nameOf = (run, k) => run.lives.id[k] >= 0 ? 'track ' + run.lives.id[k] : 'tentative track n' + k;
export const detectionName = (run, i) => 'detection ' + numberInFrame(run, i);
export const capital = text => text[0].toUpperCase() + text.slice(1);

export const hasClasses = run => run.hasClasses;
export const className = (run, i) => hasClasses(run) ? 'class ' + (run.detections.cls[i] + run.classBase - 1) : '';

const inPixels = (run, squared) => Math.sqrt(squared) / run.parameters.scale;
export const distanceOf = (run, i) => inPixels(run, run.detections.distance[i]);
export const overlapText = (run, i) => Number.isNaN(run.detections.overlap[i]) ?
    'none (no area)' :
    exact(Number(run.detections.overlap[i].toPrecision(3)));

const beside = (run, i, other) => apart(distanceOf(run, i), distanceOf(run, other));

function tookWords(run, i, of) {
    const {detections, parameters, gate} = run, [away, limit] = apart(distanceOf(run, i), gate);
    const [overlap, least] = apart(detections.overlap[i], Math.fround(parameters.iou), 2);
    return `Took ${nameOf(run, detections.nearest[i])}: it is the nearest prediction${of}, ${
               away} px away, within the gate of ` +
        `${limit} px; ` +
        (detections.close[i] ? 'so close that the boxes count as overlapping fully.' :
                               `their overlap ${overlap} is above ${least}.`);
}

function farWords(run, i, of) {
    const {detections, gate} = run, k = detections.nearest[i];
    if (k < 0) return `No track${of} was there to be taken.`;
    const [away, limit] = apart(distanceOf(run, i), gate);
    return `Too far: its nearest track${of} is ${nameOf(run, k)}, ${away} px away; the gate is ${limit} px.`;
}

function refusedWords(run, i) {
    const {detections, parameters} = run, to = nameOf(run, detections.nearest[i]), away = pixels(distanceOf(run, i));
    if (parameters.iou >= 1)
        return `Refused: an overlap above 1 is asked for, which nothing has. Its nearest track is ${to}, ${away} away.`;
    if (Number.isNaN(detections.overlap[i]))
        return `Refused: its nearest track is ${to}, ${
            away} away and within the gate, but boxes without an area overlap nothing.`;
    const [overlap, least] = apart(detections.overlap[i], Math.fround(parameters.iou), 2);
    return `Refused: its nearest track is ${to}, ${away} away and within the gate, but the overlap ${
        overlap} is not above ${least}.`;
}

// Why detection i went the way it went, in one sentence.
export function reason(run, i) {
    const {detections} = run, rival = detections.rival[i],
          of = hasClasses(run) && !run.parameters.ignoreClass ? ' of its class' : '';
    switch (detections.outcome[i]) {
    case TOOK:
        return tookWords(run, i, of);
    case REFUSED:
        return refusedWords(run, i);
    case LOST: {
        const [own, other] = beside(run, i, rival);
        return `Lost: its nearest track is ${nameOf(run, detections.nearest[i])}, ${own} px away, but ${
                   detectionName(run, rival)}, ` +
            `earlier in the list, is ${own === other ? 'as near' : `nearer: ${other} px`}.`;
    }
    case DISPLACED: {
        const [own, other] = beside(run, i, rival);
        return `Displaced: it held ${nameOf(run, detections.nearest[i])}, ${own} px away, until ${
                   detectionName(run, rival)}, ` +
            `later in the list and nearer (${other} px), took it over.`;
    }
    default:
        return farWords(run, i, of);
    }
}

// What became of a detection that took no track.
export function consequence(run, i) {
    const {outcome, started, nearest, life} = run.detections;
    if (outcome[i] === TOOK) return '';
    const again = nearest[i] >= 0 && outcome[i] >= REFUSED ? 'It is tried against no other track. ' : '';
    return again +
        (started[i] ?
             `It started ${nameOf(run, life[i])}.` :
             `No room: ${plural(run.parameters.capacity, 'track')} were alive, the capacity, so it started none.`);
}

// The state of a life in a frame in a few words.
export function stateWords(run, k, frame) {
    const {birth, end, confirmed} = run.lives, row = rowAt(run, k, frame);
    if (row < 0) return frame < birth[k] ? 'not born yet' : 'ended: ' + endWords[end[k]];
    if (endsAt(run, k, frame)) return 'removed here: ' + endWords[end[k]];
    if (frame === birth[k]) return confirmedAt(run, k, frame) ? 'born and confirmed' : 'born, tentative';
    const state = confirmedAt(run, k, frame) ?
        (frame - birth[k] === confirmed[k] ? 'confirmed here' : 'confirmed') :
        `tentative, ${matches(run, k, frame)} of ${plural(run.parameters.stable, 'match', 'matches')}`;
    return state + (run.rows.misses[row] ? `, missed ${plural(run.rows.misses[row], 'frame')}` : '');
}

// What a missed frame means for the track, in a sentence; empty where nothing needs an explanation.
export function missWords(run, k, frame) {
    const row = rowAt(run, k, frame), {misses, reported} = run.rows, {birth, forgotten, end} = run.lives;
    if (row < 0 || !misses[row]) return '';
    if (endsAt(run, k, frame))
        return end[k] === 1 ?
            `No detection took it for ${plural(misses[row], 'frame')}; a track survives ${
                plural(run.parameters.removal, 'miss', 'misses')} in a row.` :
            `No detection took it for ${plural(misses[row], 'frame')}, more than an unconfirmed track survives.`;
    if (!confirmedAt(run, k, frame))
        return forgotten[k].includes(frame - birth[k]) ?
            'After so long a gap its matches so far no longer count: confirmation starts again from zero.' :
            '';
    const left = run.parameters.removal - misses[row];
    return (reported[row] ? 'Still reported, at its last place, where --coasted asks for it. ' :
                            'No longer reported until a detection takes it again. ') +
        (left > 0 ? `It survives ${plural(left, 'more miss', 'more misses')}.` : 'The next miss removes it.');
}

export const lifeWords = (run, k) => `${capital(nameOf(run, k))}, frames ${run.lives.birth[k]} to ${lastFrame(run, k)}`;
