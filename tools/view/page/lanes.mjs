// SPDX-License-Identifier: MIT
//
// The lives of the tracks below each other, over time. Where a pixel holds several frames, it shows their mean.
import {byId, onClicks, refresh, span, svgSign} from './dom.mjs';
import {GUTTER, LINE, MARGIN, axis, moveAxis, onAxis, timeAt, timeX, zoomTime} from './axis.mjs';
import {change, redraw, select, selectedLife, state, watch} from './state.mjs';
import {endWords} from './words.mjs';
import {endings, font, lifeColour, rightText, signs, stamp, surface, theme} from './draw.mjs';
import {lastFrame, range, rowAt, LOST} from './run.mjs';

let lanes = [];             // what is listed: {life} or {object}
let places = new Map();     // of lives in that list
let births = [];            // lives and their places, in the order of birth
let changesOf = new Map();  // frames of identity changes, by the identifier after them

export const laneKinds = {
    tracks: run => range(0, run.lives.count).filter(k => run.lives.id[k] >= 0).map(life => ({life})),
    all: run => range(0, run.lives.count).map(life => ({life})),
};
export const lanePainters = {
    life: (g, lane, y, w) => drawLife(g, lane.life, y, w)
};
export const laneNames = {
    life: ({life}) => state.run.lives.id[life] < 0 ? 'n' + life : String(state.run.lives.id[life])
};

export function listLanes() {
    lanes = laneKinds[byId('lane-kind').value](state.run);
    places = new Map(lanes.map(({life}, n) => [life, n]));
    births = lanes.map((lane, n) => [lane.life, n]).filter(([life]) => life !== undefined);
    changesOf = new Map();
    for (const {after, frame} of state.run.changes) changesOf.set(after, [...changesOf.get(after) ?? [], frame]);
    byId('spacer').style.height = lanes.length * LINE + 6 + 'px';
    drawKey();
    follow();
    redraw('lanes');
}

// --- drawing ---

const hatches = new Map();
export function hatch(g, stroke) {
    if (hatches.has(stroke)) return hatches.get(stroke);
    const tile = document.createElement('canvas');
    tile.width = tile.height = 5;
    const t = tile.getContext('2d');
    t.strokeStyle = stroke;
    t.lineWidth = 1.3;
    for (const d of [-5, 0, 5]) {
        t.moveTo(d - 1, 6);
        t.lineTo(d + 6, -1);
    }
    t.stroke();
    hatches.set(stroke, g.createPattern(tile, 'repeat'));
    return hatches.get(stroke);
}

// Calls paint(from, to, key) for the parts of a lane whose columns have the same key: a column is a frame, or a pixel
// where frames are narrower.
export function columns(first, last, w, keyOf, paint) {
    const perColumn = Math.max((axis.to - axis.from) / (w - GUTTER - MARGIN), 1);
    const end = Math.min(last + 1, Math.ceil(axis.to) + 1);
    let from = Math.max(first, Math.floor(axis.from)), start = from, key = null;
    for (let f = from; f < end; f += perColumn) {
        const a = Math.floor(f), b = Math.min(Math.max(Math.floor(f + perColumn), a + 1), last + 1), next = keyOf(a, b);
        if (next !== key) {
            if (key !== null) paint(start, a, key);
            start = a;
            key = next;
        }
    }
    if (key !== null) paint(start, end, key);
}

const SHADES = 5;
function drawLife(g, k, y, w) {
    const {lives, rows} = state.run, x = f => timeX(f - 0.5, w), stroke = lifeColour(state.run, k);
    const first = lives.first[k], birth = lives.birth[k],
          confirmed = lives.confirmed[k] < 0 ? Infinity : lives.confirmed[k];
    const keyOf = (a, b) => {
        const share = (rows.hits[first + b - birth] - rows.hits[first + a - birth]) / (b - a);
        return (a - birth < confirmed ? SHADES : 0) + (share === 1 ? SHADES - 1 : Math.ceil(share * (SHADES - 2)));
    };
    columns(birth, lastFrame(state.run, k), w, keyOf, (from, to, key) => {
        const shade = key % SHADES, left = x(from), wide = Math.max(x(to) - left, 0.6);
        g.fillStyle = key >= SHADES && shade ? hatch(g, stroke) : stroke;
        g.globalAlpha = shade ? (shade + 3) / (SHADES + 2) : 0.7;
        g.fillRect(left, shade ? y : y + 4, wide, shade ? 9 : 1);
        g.globalAlpha = 1;
    });
    stamp(
        g, endings[lives.end[k]], x(lastFrame(state.run, k) + 1) + 5, y + 4.5, lives.end[k] ? '' : stroke,
        lives.end[k] ? stroke : '');
    for (const frame of changesOf.get(lives.id[k]) ?? [])
        stamp(g, signs[LOST], timeX(frame, w), y + 4.5, theme.ink, theme.panel);
}

const isSelected = lane =>
    lane.life === selectedLife() || (lane.object !== undefined && lane.object === state.selection?.object);
const kindOf = lane => Object.keys(lanePainters).find(kind => lane[kind] !== undefined);

function drawLanes() {
    const box = byId('rows'), w = box.clientWidth, h = box.clientHeight, g = surface(byId('lives'), w, h),
          top = box.scrollTop;
    const first = Math.floor(top / LINE), inSight = lanes.slice(first, first + Math.ceil(h / LINE) + 1);
    inSight.forEach((lane, n) => {
        const y = (first + n) * LINE - top;
        if (isSelected(lane)) {
            g.fillStyle = theme.faint;
            g.fillRect(0, y + 1, w, LINE);
        }
        lanePainters[kindOf(lane)](g, lane, y + 3, w);
    });
    g.clearRect(0, 0, GUTTER - 2, h);
    inSight.forEach((lane, n) => {
        g.fillStyle = isSelected(lane) ? theme.ink : theme.dim;
        g.font = font(10.5, isSelected(lane) ? '700' : '');
        rightText(
            g, (isSelected(lane) ? '\u25b8 ' : '') + laneNames[kindOf(lane)](lane), GUTTER - 8,
            (first + n) * LINE - top + 12);
    });
}

function drawNow() {
    const {run, frame} = state, x = timeX(frame, byId('rows').clientWidth);
    byId('now').hidden = !run.frames || frame < axis.from || frame > axis.to;
    byId('now').style.transform = `translateX(${x}px)`;
    byId('now').style.top = byId('rows').offsetTop + 'px';
    if (axis.to - axis.from < run.frames && (frame < axis.from || frame > axis.to))
        moveAxis(frame - (axis.to - axis.from) / 2, axis.to - axis.from);
}

// --- what is in sight ---

// In place of a life that is not listed: the latest born so far.
function laneOf(k) {
    if (places.has(k)) return places.get(k);
    const {birth} = state.run.lives;
    let from = 0, to = births.length;
    while (from < to) {
        const middle = (from + to) >> 1;
        if (birth[births[middle][0]] <= state.frame)
            from = middle + 1;
        else
            to = middle;
    }
    return from ? births[from - 1][1] : 0;
}

function show(n) {
    const box = byId('rows');
    if (n * LINE < box.scrollTop || (n + 1) * LINE > box.scrollTop + box.clientHeight)
        box.scrollTop = (n + 0.5) * LINE - box.clientHeight / 2;
}

// While there is a track of the frame in sight, nothing moves.
function follow() {
    const {run, frame, selection} = state, box = byId('rows'), top = Math.floor(box.scrollTop / LINE);
    if (selection?.object !== undefined)
        return show(Math.max(lanes.findIndex(lane => lane.object === selection.object), 0));
    if (!births.length) return;
    const lives = k => k >= 0 && rowAt(run, k, frame) >= 0, mine = selectedLife();
    if (mine >= 0 && (lives(mine) || state.selection?.life === mine))
        show(laneOf(mine));
    else if (!lanes.slice(top, top + box.clientHeight / LINE).some(lane => lane.life !== undefined && lives(lane.life)))
        show(laneOf(-1));
}

// --- input ---

function chooseLane(event) {
    const box = byId('rows'), lane = lanes[Math.floor((event.offsetY + box.scrollTop) / LINE)], {scrollTop} = box;
    const {life, object} = lane ?? {};
    const first = life === undefined ? state.frame : state.run.lives.birth[life];
    change({playing: false});
    select(
        life !== undefined       ? {life} :
            object !== undefined ? {object} :
                                   null,
        event.offsetX >= GUTTER ? timeAt(event.offsetX, box.clientWidth) : first);
    box.scrollTop = scrollTop;
}

const laneSelection = ({life, object}) => life !== undefined ? {life} : object !== undefined ? {object} : null;

function stepLane(by) {
    const n = lanes.findIndex(isSelected),
          next = lanes[n < 0 ? (by > 0 ? 0 : lanes.length - 1) : (n + by + lanes.length) % lanes.length];
    if (next) select(laneSelection(next));
}

// What the marks of the lanes mean.
function drawKey() {
    const example = end => span(svgSign(endings[end], 'dim', end > 0), endWords[end]);
    const marks = byId('lane-kind').value === 'objects' ?
        ['in the colour of the track that follows', 'hatched: detected, not followed', 'thin: not detected'].map(
            text => span(text)) :
        [
            span('hatched: tentative'), span('thin: missed'), ...[1, 2, 0].map(example),
            state.run.truth && span(svgSign(signs[LOST], 'ink'), 'identity change')
        ];
    refresh(byId('life-key'), ...marks);
}

export function bindLanes() {
    const box = byId('rows');
    box.onscroll = () => redraw('lanes');
    byId('lives').onclick = chooseLane;
    box.addEventListener('wheel', event => {
        if (!event.ctrlKey && !event.shiftKey) return;
        event.preventDefault();
        zoomTime(Math.exp(-(event.deltaY || event.deltaX) / 400), timeAt(event.offsetX, box.clientWidth));
    }, {passive: false});
    box.onkeydown = event => {
        const by = {ArrowUp: -1, ArrowDown: 1}[event.key];
        if (by) {
            event.preventDefault();
            stepLane(by);
        } else if (event.key === 'Enter' && selectedLife() >= 0) {
            change({frame: state.run.lives.birth[selectedLife()]});
        }
    };
    byId('lane-kind').onchange = listLanes;
    onClicks({'time-in': () => zoomTime(2), 'time-out': () => zoomTime(0.5)});
    onAxis(() => redraw('lanes'));
    watch(['run'], listLanes);
    watch(['frame', 'selection'], follow);
    watch(['run', 'selection', 'size', 'lanes'], drawLanes);
    watch(['run', 'frame', 'size', 'lanes'], drawNow);
}
