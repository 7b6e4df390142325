// SPDX-License-Identifier: MIT
//
// Pointing at the scene: hovering, clicking, dragging, and two fingers that zoom. One finger that moves up or down
// scrolls the page.
import {TOOK, detectionsAt, liveAt, rowAt, truthAt} from './run.mjs';
import {byId, element, onClicks, refresh, span, svgSign} from './dom.mjs';
import {camera, fieldSize, fit, moveBy, moveTo, zoomBy} from './camera.mjs';
import {OUTCOME_COLOURS, signs} from './draw.mjs';
import {
    capital,
    className,
    detectionName,
    distanceOf,
    nameOf,
    outcomeWords,
    overlapText,
    stateWords
} from './words.mjs';
import {change, select, state, watch} from './state.mjs';
import {exact, pixels} from './numbers.mjs';
import {placeOf} from './scene.mjs';

const NEAR = 6;  // in CSS pixels: small boxes can be hit as well
function inside(boxes, i, x, y) {
    const least = NEAR / camera.zoom;
    return Math.abs(x - boxes.x[i]) <= Math.max(Math.abs(boxes.w[i]) / 2, least) &&
        Math.abs(y - boxes.y[i]) <= Math.max(Math.abs(boxes.h[i]) / 2, least);
}

// What lies under a place of the canvas, the nearest centre of all.
export function pick(px, py) {
    const {run, frame, show} = state, x = px / camera.zoom + camera.x, y = py / camera.zoom + camera.y;
    let best = Infinity, found = null;
    const consider = (boxes, i, hit) => {
        const away = Math.hypot(x - boxes.x[i], y - boxes.y[i]);
        if (away < best && inside(boxes, i, x, y)) {
            best = away;
            found = hit;
        }
    };
    if (show.detections)
        for (const i of detectionsAt(run, frame)) consider(run.detections, i, {detection: i});
    if (show.tracks)
        for (const k of liveAt(run, frame)) {
            const row = rowAt(run, k, frame);
            if (run.rows.detection[row] < 0 || !show.detections) consider(placeOf(run, row), row, {life: k});
        }
    if (show.truth && !found)
        for (const i of truthAt(run, frame)) consider(run.truth, i, {object: run.truth.id[i]});
    return found;
}

function detectionTip(i) {
    const {run} = state, {nearest, outcome, score, started} = run.detections, k = nearest[i], what = outcome[i];
    const head = [capital(detectionName(run, i)), className(run, i), 'score ' + exact(score[i])]
                     .filter(text => text)
                     .join(' \u00b7 ');
    return [
        element('b', {}, head),
        k >= 0 &&
            element(
                'div', {},
                `${pixels(distanceOf(run, i))} from ${nameOf(run, k)} (gate ${pixels(run.gate)}), overlap ${
                    overlapText(run, i)}`),
        span(
            svgSign(signs[what], OUTCOME_COLOURS[what]),
            capital(outcomeWords[what]) +
                (what === TOOK  ? '' :
                     started[i] ? ' \u2014 started a track' :
                                  ' \u2014 no room'))
    ];
}

function tipFor({detection, life, object}) {
    const {run, frame} = state;
    if (detection >= 0) return detectionTip(detection);
    if (life >= 0)
        return [element('b', {}, capital(nameOf(run, life))), element('div', {}, stateWords(run, life, frame))];
    return [element('b', {}, 'True object ' + object), element('div', {}, 'ground truth')];
}

let pointer = {x: 0, y: 0};
function drawTip() {
    const tip = byId('tip'), [w, h] = fieldSize(), {x, y} = pointer;
    tip.hidden = !state.hover;
    if (tip.hidden) return;
    refresh(tip, ...tipFor(state.hover));
    const right = x + 316 > w;
    tip.style.left = right ? '' : x + 16 + 'px';
    tip.style.right = right ? Math.min(w - x + 12, Math.max(w - tip.offsetWidth - 4, 0)) + 'px' : '';
    tip.style.top = Math.min(y + 14, Math.max(h - 90, 0)) + 'px';
}

// The track first, at a second click its detection.
function choose(hit) {
    const {run, selection} = state,
                own = hit?.detection >= 0 && run.detections.outcome[hit.detection] === TOOK ?
        run.detections.life[hit.detection] :
        -1;
    select(own >= 0 && selection?.life !== own ? {life: own} : hit);
}

const down = new Map();  // pointers that are pressed
let moved = false;
let startedAt = null;  // the camera when the first pointer went down

function drag(event) {
    const before = down.get(event.pointerId), now = {x: event.offsetX, y: event.offsetY};
    if (down.size === 1) {
        if (!moved && Math.hypot(now.x - before.x, now.y - before.y) < 4) return;
        moveBy(now.x - before.x, now.y - before.y);
    } else {
        const [id] = [...down.keys()].filter(other => other !== event.pointerId), other = down.get(id);
        const apart = (a, b) => Math.max(Math.hypot(a.x - b.x, a.y - b.y), 20);
        zoomBy(apart(now, other) / apart(before, other), (now.x + other.x) / 2, (now.y + other.y) / 2);
        moveBy((now.x - before.x) / 2, (now.y - before.y) / 2);
    }
    moved = true;
    down.set(event.pointerId, now);
}

const same = (a, b) => a?.detection === b?.detection && a?.life === b?.life && a?.object === b?.object;
function hover(event) {
    const hit = pick(event.offsetX, event.offsetY);
    pointer = {x: event.offsetX, y: event.offsetY};
    if (!same(hit, state.hover))
        change({hover: hit});
    else if (hit)
        drawTip();
}

export function bindPointer() {
    const canvas = byId('scene');
    canvas.onpointerdown = event => {
        if (!down.size) {
            moved = false;
            startedAt = {...camera};
        }
        down.set(event.pointerId, {x: event.offsetX, y: event.offsetY});
        if (event.pointerType === 'mouse') canvas.setPointerCapture(event.pointerId);
    };
    canvas.onpointermove = event => down.has(event.pointerId) ? drag(event) : hover(event);
    canvas.onpointerup = event => {
        if (down.delete(event.pointerId) && !moved && !down.size) choose(pick(event.offsetX, event.offsetY));
    };
    canvas.onpointercancel = event => {
        if (down.size === 1) moveTo(startedAt);  // the browser took the finger to scroll the page
        down.delete(event.pointerId);
    };
    canvas.onpointerleave = event => {
        down.delete(event.pointerId);
        change({hover: null});
    };
    // With a page that scrolls the plain wheel is the page's.
    canvas.addEventListener('wheel', event => {
        if (!event.ctrlKey && document.documentElement.scrollHeight > innerHeight + 4) return;
        event.preventDefault();
        zoomBy(Math.exp(-event.deltaY / 500), event.offsetX, event.offsetY);
    }, {passive: false});
    canvas.ondblclick = fit;
    onClicks({'zoom-in': () => zoomBy(1.4), 'zoom-out': () => zoomBy(1 / 1.4), 'zoom-fit': fit});
    watch(['hover', 'run'], drawTip);
}
