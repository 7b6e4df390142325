// SPDX-License-Identifier: MIT
//
// The objects of the ground truth: their lanes, and the panel of one: which track followed it when, where it was not
// detected, where it was detected and not tracked, and why.
import {capital, consequence, detectionName, nameOf, reason, stateWords} from './words.mjs';
import {select, state} from './state.mjs';
import {columns, laneKinds, laneNames, lanePainters, hatch} from './lanes.mjs';
import {detectionLink, frameLink, heading, lifeLink, trackLink} from './links.mjs';
import {element, link, terms} from './dom.mjs';
import {lowerBound, percent, plural, whole} from './numbers.mjs';
import {rowAt, truthAt} from './run.mjs';
import {theme, trackColour} from './draw.mjs';
import {timeX} from './axis.mjs';

const UNDETECTED = -1, UNTRACKED = 0;  // else the identifier of the track

// What became of the box i of the ground truth.
export function coverOf(run, i) { return run.followedBy[i] || (run.shownBy[i] < 0 ? UNDETECTED : UNTRACKED); }

const boxOf = (run, object, frame) => truthAt(run, frame).find(i => run.truth.id[i] === object) ?? -1;
const objectOf = id => state.run.truth.objects.find(it => it.id === id);

// --- lanes ---

// By pixel column the first box within; a column without one is a gap.
function drawCover(g, {boxes}, cover, y, high, w) {
    const {truth} = state.run, x = f => timeX(f - 0.5, w), frames = boxes.map(i => truth.frame[i]);
    const keyOf = (a, b) => {
        const n = lowerBound(frames, a);
        return n < frames.length && frames[n] < b ? cover(boxes[n]) : null;
    };
    columns(frames[0], frames[frames.length - 1], w, (a, b) => keyOf(a, b) ?? 'gap', (from, to, key) => {
        if (key === 'gap') return;
        const left = x(from), wide = Math.max(x(to) - left, 0.6), thin = key === UNDETECTED;
        g.fillStyle = key === UNTRACKED ? hatch(g, theme.far) : thin ? theme.truth : trackColour(key);
        g.fillRect(left, thin ? y + high / 2 : y, wide, thin ? 1 : high);
    });
}

// The lower half of a lane is what is tracked now, the upper one what A tracks.
function drawObject(g, {object}, y, w) {
    const {run, before} = state, it = objectOf(object), both = before?.followedBy;
    if (both) drawCover(g, it, i => before.followedBy[i] || UNDETECTED, y - 1, 4, w);
    drawCover(g, it, i => coverOf(run, i), both ? y + 4 : y, both ? 6 : 9, w);
}

export function bindObjects() {
    laneKinds.objects = run => (run.truth?.objects ?? []).map(({id}) => ({object: id}));
    laneNames.object = ({object}) => 'obj ' + object;
    lanePainters.object = drawObject;
}

// --- figures of an object ---

export function objectFigures(run, {id, boxes}) {
    const tracks = new Map(),
          figures = {id, frames: boxes.length, followed: 0, undetected: 0, untracked: 0, changes: 0};
    for (const i of boxes) {
        const cover = coverOf(run, i);
        if (cover > 0) {
            figures.followed++;
            tracks.set(cover, (tracks.get(cover) ?? 0) + 1);
        } else {
            figures[cover === UNDETECTED ? 'undetected' : 'untracked']++;
        }
    }
    figures.changes = run.changes.filter(it => it.object === id).length;
    return {...figures, tracks};
}

// --- the cause of a change ---

// The decision by which the object's old track lost it: about the detection that showed it first without that track.
export function causeOf(run, {object, before, cause}) {
    const i = boxOf(run, object, cause), detection = i < 0 ? -1 : run.shownBy[i], k = run.lives.byId.get(before);
    if (detection < 0)
        return {
            frame: cause,
            selection: {object},
            text: `It was not detected in frame ${whole(cause)}` +
                (k >= 0 && rowAt(run, k, cause) >= 0 ? `, where ${nameOf(run, k)} was ${stateWords(run, k, cause)}.` :
                                                       '.')
        };
    return {
        frame: cause,
        selection: {detection},
        text: `${capital(detectionName(run, detection))} of frame ${whole(cause)}: ${reason(run, detection)} ${
            consequence(run, detection)}`
    };
}

function changePanel(it) {
    const cause = causeOf(state.run, it);
    return element(
        'p', {}, element('b', {}, '\u25c6 '), frameLink(it.frame), ': from ', trackLink(it.before), ' to ',
        trackLink(it.after), '. ', cause.text, ' ', link('Show the cause', () => select(cause.selection, cause.frame)));
}

// --- the panel ---

function hereTerms(object) {
    const {run, frame} = state, i = boxOf(run, object, frame);
    if (i < 0) return ['In this frame', 'not there'];
    const detection = run.shownBy[i], track = run.followedBy[i];
    if (track) return ['In this frame', 'followed by ', trackLink(track)];
    if (detection < 0) return ['In this frame', 'not detected: no detection overlaps it by half'];
    const k = run.detections.life[detection];
    return [
        'In this frame', 'detected, not followed: ', detectionLink(detection), k < 0 ? '' : ' is of ',
        k >= 0 && lifeLink(k), k >= 0 && `, ${stateWords(run, k, frame)}`
    ];
}

export function objectPanel(object) {
    const {run} = state, {truth, changes} = run, it = objectOf(object), figures = objectFigures(run, it);
    const first = truth.frame[it.boxes[0]], last = truth.frame[it.boxes[it.boxes.length - 1]],
          share = count => `${plural(count, 'frame')}, ${percent(count / figures.frames)}`;
    return [
        heading(element('span', {className: 'swatch truth'}), 'True object ' + object, 'ground truth'),
        terms(
            ['In view', frameLink(first), ' to ', frameLink(last), `, ${plural(figures.frames, 'frame')}`],
            hereTerms(object), ['Followed', share(figures.followed)], ['Not detected', share(figures.undetected)],
            ['Detected, not followed', share(figures.untracked)],
            ['Tracks', ...[...figures.tracks].flatMap(([id, count]) => [trackLink(id), ` (${whole(count)}) `])]),
        ...changes.filter(other => other.object === object).map(changePanel),
    ];
}
