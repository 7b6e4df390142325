// SPDX-License-Identifier: MIT
//
// One parameter over its whole range: how the figures go with it, and where the present value stands.
import {askFigures, set} from './tuner.mjs';
import {byId, element, link, refresh} from './dom.mjs';
import {font, rightText, strokes, surface, theme} from './draw.mjs';
import {fixed, whole} from './numbers.mjs';
import {redraw, state} from './state.mjs';

const SWEEP_STEPS = 25;
const SWEEP_HEIGHT = 110, SWEEP_LEFT = 34, SWEEP_BASE = 16, SWEEP_TOP = 12;

let swept = null;  // {it, points: [{value, figures}]}
export const sweepOf = () => swept;

// Without ground truth there is nothing better: then it shows how many tracks there are and how many rows.
const sweepLines = () => state.run.truth ? [['HOTA', 'accent', []], ['IDF1', 'far', [5, 3]]] :
                                           [['tracks', 'accent', []], ['rows', 'far', [5, 3]]];

function valuesOf({low, high, step, log, root}) {
    const at = share => log ? low * (high / low) ** share : low + (high - low) * (root ? share ** 2 : share);
    const values = Array.from({length: SWEEP_STEPS}, (_, n) => at(n / (SWEEP_STEPS - 1)))
                       .map(value => step ? Math.round(value / step) * step : value);
    return [...new Set(values)];
}

export async function sweep(it) {
    const mine = swept = {it, points: [], setting: state.setting};
    for (const value of valuesOf(it)) {
        const setting = {...mine.setting, ...it.set(value)}, figures = await askFigures(setting).catch(() => null);
        if (swept !== mine) return;
        if (figures)
            mine.points.push(
                {value, figures: new Map(sweepLines().map(([name]) => [name, figures.number('figure.' + name)]))});
        redraw('tuning');
    }
    mine.done = true;
    redraw('tuning');
}

function placeOn({low, high, log, root}, value, w) {
    const share = log ? Math.log(value / low) / Math.log(high / low) :
        root          ? Math.sqrt((value - low) / (high - low)) :
                        (value - low) / (high - low);
    return SWEEP_LEFT + share * (w - SWEEP_LEFT - 8);
}

export function drawSweep() {
    const {it, points, done} = swept, box = byId(`tune-${it.name}-chart`), w = box.clientWidth;
    for (const other of document.querySelectorAll('.tunable > div.wide'))
        if (other !== box) other.replaceChildren();
    const best = best =>
        points.reduce((a, b) => b.figures.get(best) > (a?.figures.get(best) ?? -Infinity) ? b : a, null);
    const first = sweepLines()[0][0], top = best(first), isShare = state.run.truth !== null;
    const words = !done || !top ? 'Sweeping \u2026' :
        isShare ? `${first} is best, ${fixed(100 * top.figures.get(first))}, at ${it.text(top.value)} ${it.unit}.` :
                  `Solid: tracks, up to ${whole(top.figures.get(first))}; dashed: rows.`;
    refresh(
        box, element('canvas', {id: 'sweep', role: 'img'}),
        element(
            'p', {className: 'note'}, words, ' ',
            done && top && isShare && link('Take it', () => set(it.set(top.value)))));
    byId('sweep').setAttribute('aria-label', `Sweep of ${it.label}. ${words}`);
    const g = surface(byId('sweep'), w, SWEEP_HEIGHT), bottom = SWEEP_HEIGHT - SWEEP_BASE;
    g.fillStyle = theme.faint;
    g.fillRect(SWEEP_LEFT, SWEEP_TOP - 6, w - SWEEP_LEFT, bottom - SWEEP_TOP + 6);
    g.font = font(10);
    sweepLines().forEach(([name, colour, dash], n) => {
        const values = points.map(point => point.figures.get(name)),
              low = isShare ?
            Math.min(...sweepLines().flatMap(([other]) => points.map(point => point.figures.get(other)))) :
            0;
        const high = isShare ?
            Math.max(...sweepLines().flatMap(([other]) => points.map(point => point.figures.get(other)))) :
            Math.max(...values);
        const y = value => bottom - (value - low) / Math.max(high - low, 1e-9) * (bottom - SWEEP_TOP);
        g.strokeStyle = g.fillStyle = theme[colour];
        g.lineWidth = 1.6;
        g.setLineDash(dash);
        g.beginPath();
        points.forEach((point, i) => g.lineTo(placeOn(it, point.value, w), y(values[i])));
        g.stroke();
        g.setLineDash([]);
        g.fillText(name, SWEEP_LEFT + 4 + n * 44, 9);
        if (n || !points.length) return;
        g.fillStyle = theme.dim;
        rightText(g, isShare ? fixed(100 * high) : whole(high), SWEEP_LEFT - 4, SWEEP_TOP + 4);
        rightText(g, isShare ? fixed(100 * low) : '0', SWEEP_LEFT - 4, bottom);
    });
    g.strokeStyle = theme.ink;
    g.lineWidth = 1.5;
    const now = Math.min(Math.max(placeOn(it, it.get(), w), SWEEP_LEFT), w - 4);
    strokes(g, [now, SWEEP_TOP - 6, now, bottom]);
    g.fillStyle = theme.dim;
    g.fillText(it.text(it.low), SWEEP_LEFT, SWEEP_HEIGHT - 4);
    rightText(g, it.text(it.high), w - 2, SWEEP_HEIGHT - 4);
    byId('sweep').onclick = event => {
        const away = point => Math.abs(placeOn(it, point.value, w) - event.offsetX);
        const nearest = points.reduce((a, b) => away(b) < away(a) ? b : a, points[0]);
        if (nearest) set(it.set(nearest.value));
    };
}
