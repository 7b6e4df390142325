// SPDX-License-Identifier: MIT
//
// The scene: boxes, tracks and gates of one frame.
import {TOOK, confirmedAt, detectionsAt, endsAt, liveAt, rowAt, truthAt} from './run.mjs';
import {byId} from './dom.mjs';
import {camera, extent, fieldSize, reveal, toX, toY} from './camera.mjs';
import {className} from './words.mjs';
import {cross, endings, font, lifeColour, plus, rightText, signs, stamp, strokes, surface, theme} from './draw.mjs';
import {fixed, short} from './numbers.mjs';
import {selectedLife, state} from './state.mjs';

export function outline(g, boxes, i, stroke, width, dash = [], grow = 0) {
    const w = Math.abs(boxes.w[i]), h = Math.abs(boxes.h[i]);
    g.strokeStyle = stroke;
    g.lineWidth = width;
    g.setLineDash(dash);
    g.strokeRect(
        toX(boxes.x[i] - w / 2) - grow, toY(boxes.y[i] - h / 2) - grow, w * camera.zoom + 2 * grow,
        h * camera.zoom + 2 * grow);
    g.setLineDash([]);
}

// Where a life is drawn in a frame: at its box, or where it is predicted when it was missed.
export const placeOf = (run, row) => run.rows.detection[row] < 0 ? run.rows.predicted : run.rows.box;

// --- what lies beneath ---

function niceStep(least) {
    const power = 10 ** Math.floor(Math.log10(least));
    return power * [1, 2, 5, 10].find(factor => factor * power >= least);
}

function drawGrid(g, w, h) {
    g.fillStyle = theme.panel;
    g.fillRect(toX(extent.x), toY(extent.y), extent.w * camera.zoom, extent.h * camera.zoom);
    const step = niceStep(110 / camera.zoom);
    g.strokeStyle = theme.line;
    g.fillStyle = theme.dim;
    g.lineWidth = 0.5;
    g.font = font(10);
    for (let v = Math.ceil(camera.x / step) * step; toX(v) < w; v += step) {
        strokes(g, [toX(v), 0, toX(v), h]);
        g.fillText(short(v), toX(v) + 3, h - 4);
    }
    for (let v = Math.ceil(camera.y / step) * step; toY(v) < h - 16; v += step) {
        strokes(g, [0, toY(v), w, toY(v)]);
        g.fillText(short(v), 3, toY(v) - 3);
    }
}

function circle(g, x, y, radius) {
    g.beginPath();
    g.arc(toX(x), toY(y), Math.max(radius * camera.zoom, 0), 0, 7);
}

function drawGate(g, run, k) {
    const row = rowAt(run, k, state.frame), {predicted} = run.rows, {hover} = state;
    if (state.frame === run.lives.birth[k]) return;  // nothing was predicted yet
    const mine = k === selectedLife() || k === hover?.life ||
        (hover?.detection >= 0 && run.detections.nearest[hover.detection] === k);
    const x = predicted.x[row], y = predicted.y[row];
    g.strokeStyle = g.fillStyle = lifeColour(run, k);
    g.lineWidth = mine ? 1.6 : 1;
    circle(g, x, y, run.gate);
    g.globalAlpha = mine ? 0.12 : 0.05;
    g.fill();
    g.globalAlpha = mine ? 1 : 0.6;
    g.setLineDash([2, 3]);
    g.stroke();
    g.setLineDash([]);
    circle(g, x, y, run.near);
    g.globalAlpha = mine ? 0.4 : 0.22;
    g.fill();
    g.globalAlpha = mine ? 1 : 0.6;
    strokes(g, [toX(x) - 4, toY(y), toX(x) + 4, toY(y)], [toX(x), toY(y) - 4, toX(x), toY(y) + 4]);
    g.globalAlpha = 1;
}

function drawTruth(g, run) {
    const {truth} = run;
    g.fillStyle = theme.truth;
    g.font = font(10);
    for (const i of truthAt(run, state.frame)) {
        outline(g, truth, i, theme.truth, 1.2, [7, 2, 1, 2]);
        if (state.show.labels)
            rightText(g, truth.id[i], toX(truth.x[i] + truth.w[i] / 2) - 2, toY(truth.y[i] + truth.h[i] / 2) - 3);
    }
}

// --- detections and tracks ---

function drawTrail(g, run, k) {
    const last = rowAt(run, k, state.frame), first = Math.max(run.lives.first[k], last - state.trail), {box} = run.rows;
    if (last <= first) return;
    g.strokeStyle = lifeColour(run, k);
    g.lineWidth = 1.4;
    g.globalAlpha = 0.6;
    g.beginPath();
    for (let row = first; row <= last; row++) g.lineTo(toX(box.x[row]), toY(box.y[row]));
    g.stroke();
    g.globalAlpha = 1;
}

function drawDetection(g, {detections}, i) {
    const took = detections.outcome[i] === TOOK;
    outline(g, detections, i, theme.outcomes[detections.outcome[i]], took ? 0.8 : 1.4, took ? [1, 2] : []);
}
function drawSign(g, {detections}, i) {
    const outcome = detections.outcome[i], x = toX(detections.x[i]), y = toY(detections.y[i]),
          colour = theme.outcomes[outcome];
    stamp(g, signs[outcome], x, y, colour, outcome === TOOK ? '' : theme.panel);
    if (outcome !== TOOK) stamp(g, detections.started[i] ? plus : cross, x + 10, y - 1, '', colour);
}

// Tentative dashed, confirmed solid; without a detection dotted, where the track is predicted.
function drawTrack(g, run, k) {
    const row = rowAt(run, k, state.frame), {predicted, box} = run.rows;
    const missed = run.rows.detection[row] < 0, confirmed = confirmedAt(run, k, state.frame),
          stroke = confirmed ? lifeColour(run, k) : theme.dim;
    if (endsAt(run, k, state.frame)) {
        outline(g, predicted, row, stroke, 1, [1, 6]);
        return stamp(g, endings[run.lives.end[k]], toX(predicted.x[row]), toY(predicted.y[row]), '', stroke);
    }
    if (missed && confirmed) {
        g.lineCap = 'round';
        outline(g, predicted, row, stroke, 2, [0.1, 5]);
        g.lineCap = 'butt';
    } else {
        outline(g, box, row, stroke, confirmed ? 2 : 1.4, confirmed ? [] : missed ? [2, 4] : [6, 4]);
    }
}

// --- labels ---

function labelText(run, k, row) {
    const i = run.rows.detection[row], parts = [];
    if (state.show.labels) {
        if (confirmedAt(run, k, state.frame)) parts.push(run.lives.id[k]);
        if (i >= 0 && className(run, i)) parts.push('c' + className(run, i).slice(6));
    }
    if (state.show.scores && i >= 0) parts.push(fixed(run.detections.score[i], 2));
    return parts.join(' \u00b7 ');
}

// Above the box, else below, else within it; a label that would still lie on another one is left out, so that a crowd
// stays visible. The selected one comes first.
const CELL = 8, CROWD = 80;
function freePlace(taken, x, wide, high, tops) {
    for (const y of tops) {
        const cells = [];
        for (let c = Math.floor(x / CELL); c <= Math.floor((x + wide) / CELL); c++)
            for (let r = Math.floor((y - high) / CELL); r < Math.ceil(y / CELL); r++) cells.push(c * 65536 + r);
        if (cells.some(cell => taken.has(cell))) continue;
        for (const cell of cells) taken.add(cell);
        return y;
    }
    return null;
}

function drawLabels(g, run, lives) {
    const taken = new Set(), mine = selectedLife(), isCrowd = lives.length > CROWD, size = isCrowd ? 9 : 11,
          high = size + 3;
    g.font = font(size, '600');
    for (const k of [...lives].sort((a, b) => Number(b === mine) - Number(a === mine))) {
        const row = rowAt(run, k, state.frame), boxes = placeOf(run, row);
        const text = endsAt(run, k, state.frame) ? '' : labelText(run, k, row);
        if (!text) continue;
        const x = toX(boxes.x[row] - Math.abs(boxes.w[row]) / 2) - 1, wide = g.measureText(text).width + 6;
        const half = Math.abs(boxes.h[row]) / 2, top = toY(boxes.y[row] - half) - 1, bottom = toY(boxes.y[row] + half);
        const y = freePlace(taken, x, wide, high - 1, [top, bottom + high + 1, top + high + 2]);
        if (y === null) continue;
        if (isCrowd)
            drawLightLabel(g, run, k, text, x, y);
        else
            drawLabel(g, run, k, text, x, y, wide, high, boxes === run.rows.predicted);
    }
}

// Without a ground, through which the boxes of a crowd stay visible.
function drawLightLabel(g, run, k, text, x, y) {
    g.strokeStyle = theme.panel;
    g.lineWidth = 2.5;
    g.lineJoin = 'round';
    g.strokeText(text, x + 2, y - 2);
    g.fillStyle = confirmedAt(run, k, state.frame) ? lifeColour(run, k) : theme.dim;
    g.fillText(text, x + 2, y - 2);
}

function drawLabel(g, run, k, text, x, y, wide, high, missed) {
    const colour = confirmedAt(run, k, state.frame) ? lifeColour(run, k) : theme.dim;
    g.fillStyle = missed ? theme.panel : colour;
    g.fillRect(x, y - high, wide, high);
    if (missed) {
        g.strokeStyle = colour;
        g.lineWidth = 1;
        g.strokeRect(x + 0.5, y - high + 0.5, wide - 1, high - 1);
    }
    g.fillStyle = missed ? colour : theme.panel;
    g.fillText(text, x + 3, y - 3.5);
}

// --- what is selected or under the pointer ---

// The four corners around a box, in black or white over a rim of the other: no track looks like that.
function corners(g, boxes, i, grow) {
    const w = Math.abs(boxes.w[i]) / 2, h = Math.abs(boxes.h[i]) / 2,
          arm = Math.max(Math.min(w, h) * camera.zoom / 2, 6);
    const left = toX(boxes.x[i] - w) - grow, right = toX(boxes.x[i] + w) + grow;
    const top = toY(boxes.y[i] - h) - grow, bottom = toY(boxes.y[i] + h) + grow;
    for (const [colour, width] of [[theme.panel, 5], [theme.ink, 2.5]]) {
        g.strokeStyle = colour;
        g.lineWidth = width;
        for (const [x, y, dx, dy] of [
                 [left, top, arm, arm], [right, top, -arm, arm], [left, bottom, arm, -arm],
                 [right, bottom, -arm, -arm]])
            strokes(g, [x + dx, y, x, y], [x, y, x, y + dy]);
    }
}

function markDetection(g, run, i, grow) {
    const {detections} = run, k = detections.nearest[i], row = k < 0 ? -1 : rowAt(run, k, state.frame),
          {predicted} = run.rows;
    corners(g, detections, i, grow);
    if (row < 0) return;
    outline(g, predicted, row, theme.ink, 1, [3, 3]);
    g.lineWidth = 1.5;
    strokes(g, [toX(detections.x[i]), toY(detections.y[i]), toX(predicted.x[row]), toY(predicted.y[row])]);
}

function drawMarked(g, run, marked, grow) {
    if (!marked) return;
    if (marked.detection >= 0) markDetection(g, run, marked.detection, grow);
    const row = marked.life >= 0 ? rowAt(run, marked.life, state.frame) : -1;
    if (row >= 0) {
        corners(g, placeOf(run, row), row, grow);
        if (state.frame > run.lives.birth[marked.life]) outline(g, run.rows.predicted, row, theme.ink, 1, [3, 3]);
    }
    for (const i of truthAt(run, state.frame))
        if (run.truth.id[i] === marked.object) corners(g, run.truth, i, grow);
}

// --- the whole ---

export const underlays = [];  // drawn beneath all, by others
export const overlays = [];   // between boxes and labels

// `plain` leaves out what must not be saved: a canvas that shows a picture of the disk cannot be read again.
export function drawScene(canvas = byId('scene'), plain = false) {
    const {run, frame, show} = state, [w, h] = fieldSize(), g = surface(canvas, w, h);
    const live = liveAt(run, frame), found = detectionsAt(run, frame);
    drawGrid(g, w, h);
    for (const draw of underlays) draw(g, plain);
    if (show.gates)
        for (const k of live) drawGate(g, run, k);
    if (run.truth && show.truth) drawTruth(g, run);
    if (show.tracks)
        for (const k of live) drawTrail(g, run, k);
    if (show.detections)
        for (const i of found) drawDetection(g, run, i);
    if (show.tracks)
        for (const k of live) drawTrack(g, run, k);
    for (const draw of overlays) draw(g);
    if (show.detections)
        for (const i of found) drawSign(g, run, i);
    if (show.labels || show.scores) drawLabels(g, run, live);
    drawMarked(g, run, state.selection, 5);
    drawMarked(g, run, state.hover, 2);
}

// What is selected from a list may lie outside of what the scene shows.
export function revealSelected() {
    const {run, frame, selection} = state, row = selection?.life >= 0 ? rowAt(run, selection.life, frame) : -1;
    if (row >= 0) reveal(placeOf(run, row).x[row], placeOf(run, row).y[row]);
    for (const i of truthAt(run, frame))
        if (run.truth.id[i] === selection?.object) reveal(run.truth.x[i], run.truth.y[i]);
}
