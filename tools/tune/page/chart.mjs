// SPDX-License-Identifier: MIT
//
// The charts: the objective over one parameter, a dot for each trial; and the gains of the sequences.
import {bestLine, placeOf} from './trials.mjs';
import {font, strokes, surface, theme} from './draw.mjs';
import {fixed} from './numbers.mjs';

const HEIGHT = 190, LEFT = 44, RIGHT = 10, TOP = 8, BASE = 20, WORDS = 52;  // the slot of values that are words
const NEAR = 12;
const PARTS = 24;

const hasWord = parameter => Number.isNaN(parseFloat(parameter.usual));

// Where trials lie on a chart so wide.
export function layout(parameter, n, range, width) {
    const left = LEFT + (hasWord(parameter) ? WORDS : 0), right = width - RIGHT;
    const place = trial => placeOf(parameter, trial.values[n]);
    return {
        left,
        right,
        place,
        x: trial => {
            const at = place(trial);
            return at === null ? LEFT + WORDS / 2 : left + at * (right - left);
        },
        y: objective =>
            TOP + (range.high - Math.max(objective, range.low)) / (range.high - range.low) * (HEIGHT - TOP - BASE),
    };
}

function drawAxes(g, parameter, range, at, width) {
    const {low, high, unit, usual} = parameter, bottom = HEIGHT - BASE;
    g.strokeStyle = theme.line;
    strokes(g, [LEFT, TOP, LEFT, bottom], [LEFT, bottom, width - RIGHT, bottom]);
    g.fillStyle = theme.dim;
    g.textAlign = 'right';
    for (const value of [range.low, (range.low + range.high) / 2, range.high])
        g.fillText(fixed(value, 1), LEFT - 5, at.y(value) + 4);
    g.textAlign = 'left';
    if (high >= low) g.fillText(Number(low.toPrecision(3)) + unit, at.left, HEIGHT - 6);
    g.textAlign = 'right';
    if (high > low) g.fillText(Number(high.toPrecision(3)) + unit, at.right, HEIGHT - 6);
    g.textAlign = 'center';
    if (hasWord(parameter)) g.fillText(usual, LEFT + WORDS / 2, HEIGHT - 6);
}

function drawBestLine(g, trials, at) {
    const best = bestLine(trials, at.place, PARTS);
    g.strokeStyle = theme.accent;
    g.lineWidth = 1.5;
    g.beginPath();
    best.forEach((objective, part) => {
        if (objective !== null) g.lineTo(at.left + (part + 0.5) / PARTS * (at.right - at.left), at.y(objective));
    });
    g.stroke();
    g.lineWidth = 1;
}

export const SIGNS = {
    best: 'M0-6L1.8-1.9 6-1.9 2.7.9 3.9 5.4 0 2.7-3.9 5.4-2.7.9-6-1.9-1.8-1.9Z',
    initial: 'M0-5L5 0 0 5-5 0Z'
};

function drawSign(g, path, colour, x, y) {
    g.save();
    g.translate(x, y);
    g.fillStyle = colour;
    g.strokeStyle = theme.panel;
    const shape = new Path2D(path);
    g.fill(shape);
    g.stroke(shape);
    g.restore();
}

// `marked` is the trial under the pointer, or null.
export function drawTrials(canvas, {parameter, n, trials, initial, range, width, marked}) {
    const g = surface(canvas, width, HEIGHT), at = layout(parameter, n, range, width);
    g.font = font(10.5);
    drawAxes(g, parameter, range, at, width);
    g.fillStyle = theme.took;
    g.globalAlpha = 0.55;
    for (const trial of trials) g.fillRect(at.x(trial) - 1.5, at.y(trial.objective) - 1.5, 3, 3);
    g.globalAlpha = 1;
    drawBestLine(g, trials, at);
    drawSign(g, SIGNS.initial, theme.far, at.x(initial), at.y(initial.objective));
    drawSign(g, SIGNS.best, theme.truth, at.x(trials[0]), at.y(trials[0].objective));
    if (!marked) return;
    g.strokeStyle = theme.ink;
    g.strokeRect(at.x(marked) - 4.5, at.y(marked.objective) - 4.5, 9, 9);
}

// The trial nearest to a point of the chart, or null.
export function trialAt({parameter, n, trials, range, width}, x, y) {
    const at = layout(parameter, n, range, width);
    let nearest = null, least = NEAR;
    for (const trial of trials) {
        const distance = Math.hypot(at.x(trial) - x, at.y(trial.objective) - y);
        if (distance >= least) continue;
        least = distance;
        nearest = trial;
    }
    return nearest;
}

// --- gains by sequence -----------------------------------------------------------------------------------------------

const ROW = 22, NAMES = 190;

// Two bars for each sequence, to the right of a common zero what was gained and to the left what was lost.
export function drawGains(canvas, sequences, width) {
    const g = surface(canvas, width, sequences.length * ROW + 4), names = Math.min(NAMES, width / 3);
    const gains = sequences.map(it => [it.after - it.before, it.heldOut === null ? null : it.heldOut - it.before]);
    const low = Math.min(0, ...gains.flat()), high = Math.max(0.01, ...gains.flat());
    const x = gain => names + 50 + (gain - low) / (high - low) * (width - names - 110);
    g.font = font(11.5);
    sequences.forEach((it, row) => {
        g.textAlign = 'left';
        g.fillStyle = theme.ink;
        g.fillText(it.name, 0, row * ROW + 14, names);
        gains[row].forEach((gain, n) => {
            if (gain === null) return;
            g.fillStyle = n ? theme.accent : theme.took;
            g.fillRect(Math.min(x(0), x(gain)), row * ROW + 3 + n * 8, Math.max(1, Math.abs(x(gain) - x(0))), 7);
        });
    });
    g.strokeStyle = theme.dim;
    strokes(g, [x(0), 0, x(0), sequences.length * ROW]);
}
