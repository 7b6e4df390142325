// SPDX-License-Identifier: MIT
//
// The panel that compares: figures of A and of what is shown now, and the frames in which they differ.
import {boxesAt, differences, livesOf, tracksOf} from './compare.mjs';
import {byId, element, link, refresh, span} from './dom.mjs';
import {change, go, select, state, watch} from './state.mjs';
import {figureTable} from './figures.mjs';
import {font, theme} from './draw.mjs';
import {lanePainters, laneKinds, laneNames, listLanes, columns} from './lanes.mjs';
import {lowerBound, plural, whole} from './numbers.mjs';
import {outline, overlays} from './scene.mjs';
import {timeX} from './axis.mjs';
import {toX, toY} from './camera.mjs';

let compared = null;  // {before, run, now, list} as last computed

function comparison() {
    const {before, run} = state;
    if (!compared || compared.before !== before || compared.run !== run) {
        const now = tracksOf(run, 'now');
        compared = {before, run, now, list: differences(before, now), lives: livesOf(before)};
    }
    return compared;
}

export const pin = () => change({before: tracksOf(state.run, 'pinned setting'), tab: 'compare'});
const unpin = () => change({before: state.other ?? null});

// --- scene and lanes ---

function drawBefore(g) {
    const {before, frame} = state;
    if (!before || !state.show.before) return;
    g.font = font(10);
    for (const i of boxesAt(before, frame)) {
        outline(g, before, i, theme.before, 1, [], 2);
        g.fillStyle = theme.before;
        if (state.show.labels)
            g.fillText(
                'A ' + before.id[i], toX(before.x[i] - before.w[i] / 2), toY(before.y[i] + before.h[i] / 2) + 11);
    }
}

function drawPinned(g, id, y, w) {
    const places = comparison().lives.get(id), frames = places.map(i => state.before.frame[i]);
    const keyOf = (a, b) => lowerBound(frames, a) < lowerBound(frames, b) ? 1 : 0, x = f => timeX(f - 0.5, w);
    g.fillStyle = theme.before;
    columns(
        frames[0], frames[frames.length - 1], w, keyOf,
        (from, to, key) => g.fillRect(x(from), key ? y + 2 : y + 4, Math.max(x(to) - x(from), 0.6), key ? 5 : 1));
}

// Tracks of both by their first frame, A's first.
function bothLanes() {
    const {run, before} = state, {lives} = run, list = [];
    if (!before) return laneKinds.tracks(run);
    for (const [id, places] of comparison().lives) list.push({pinned: id, from: before.frame[places[0]]});
    for (let k = 0; k < lives.count; k++)
        if (lives.id[k] >= 0) list.push({life: k, from: lives.birth[k]});
    return list.sort((a, b) => a.from - b.from || Number(a.life !== undefined) - Number(b.life !== undefined));
}

// --- the panel ---

const SHOWN = 100;
const idList = (text, ids) =>
    ids.length ? [`${text} ${ids.slice(0, 6).join(', ')}${ids.length > 6 ? ' \u2026' : ''} `] : [];

function differenceRow({frame, onlyA, onlyB, other}) {
    return element(
        'li', {}, link('frame ' + whole(frame), () => go(frame)), ' ', ...idList('only A:', onlyA),
        ...idList('only now:', onlyB),
        ...other.slice(0, 3).map(
            ([a, b]) =>
                span(`A ${a} is `, link('track ' + b, () => select({life: state.run.lives.byId.get(b)}, frame)), ' ')));
}

function comparePanel() {
    const {before, run, frame} = state;
    if (!before)
        return [
            element('h2', {}, 'Compare'),
            element(
                'p', {},
                'Keep the present setting as A, then tune: A stays in the scene as thin boxes, beside what is ' +
                    'tracked now. With --compare FILE the tracks of any tracker are A.'),
            element('button', {type: 'button', onclick: pin}, 'Keep as A')
        ];
    const {list} = comparison(), at = lowerBound(list.map(it => it.frame), frame);
    const from = Math.max(Math.min(at, list.length - SHOWN), 0), next = list.find(it => it.frame > frame),
          last = list[at - 1];
    return [
        element('h2', {}, 'A is ' + before.name),
        figureTable(before.figures, run.figures, 'A'),
        element(
            'div', {className: 'buttons'}, element('button', {type: 'button', onclick: pin}, 'Keep the present as A'),
            element('button', {type: 'button', onclick: unpin}, 'Stop')),
        element('h2', {}, `They differ in ${plural(list.length, 'frame')} of ${whole(run.frames)}`),
        element(
            'div', {className: 'buttons'},
            element('button', {type: 'button', disabled: !last, onclick: () => go(last.frame)}, '\u25c2 previous'),
            element('button', {type: 'button', disabled: !next, onclick: () => go(next.frame)}, 'next \u25b8')),
        element('ul', {className: 'events'}, ...list.slice(from, from + SHOWN).map(differenceRow)),
    ];
}

export function bindCompare(other) {
    overlays.push(drawBefore);
    lanePainters.pinned = (g, lane, y, w) => drawPinned(g, lane.pinned, y, w);
    laneNames.pinned = lane => 'A ' + lane.pinned;
    laneKinds.both = bothLanes;
    state.other = state.before = other;
    watch(['before', 'run', 'frame', 'tab'], () => {
        if (state.tab === 'compare') refresh(byId('compared'), ...comparePanel());
    });
    watch(['before'], () => {
        byId('lane-both').hidden = byId('show-before').parentNode.hidden = !state.before;
        if (!state.before && byId('lane-kind').value === 'both') byId('lane-kind').value = 'tracks';
        listLanes();
    });
}
