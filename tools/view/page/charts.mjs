// SPDX-License-Identifier: MIT
//
// What a life went through, frame by frame: distance, overlap and innovation. A pixel that holds several frames shows
// the least and the greatest value, so that a chart costs what its pixels cost, however long the life is.
import {byId, element, span} from './dom.mjs';
import {cached, font, lifeColour, rightText, strokes, surface, theme} from './draw.mjs';
import {exact, fixed, short} from './numbers.mjs';
import {go, state} from './state.mjs';
import {rowAt} from './run.mjs';

const HEIGHT = 58, LEFT = 34;

// One entry per pixel column: from low to high, whether any frame was missed, whether all were.
export function summarize(run, k, parts, valueOf) {
    const {first, span} = run.lives, {detection} = run.rows, list = [], perPart = span[k] / parts;
    for (let part = 0; part < parts; part++) {
        const from = first[k] + Math.floor(part * perPart),
              to = first[k] + Math.max(Math.floor((part + 1) * perPart), Math.floor(part * perPart) + 1);
        let low = Infinity, high = -Infinity, missed = 0;
        for (let row = from; row < to; row++) {
            if (detection[row] < 0)
                missed++;
            else if (row > first[k]) {
                const value = valueOf(detection[row], row);
                low = Math.min(low, value);
                high = Math.max(high, value);
            }
        }
        list.push({low, high, missed: missed / (to - from)});
    }
    return list;
}

const chartsOf = run => {
    const {detections, rows, parameters, gate} = run, limit = parameters.gate ** 2;
    return [
        {
            id: 'chart-distance',
            title: 'Squared distance to the prediction, units\u00b2 (root)',
            low: 0,
            high: 1.1 * limit,
            root: true,
            lines: [limit, parameters.euc],
            name: 'gate ' + limit,
            values: [i => detections.distance[i]]
        },
        {
            id: 'chart-overlap',
            title: 'Overlap with the prediction',
            low: 0,
            high: 1.05,
            lines: [parameters.iou],
            name: 'above ' + exact(parameters.iou),
            values: [i => detections.overlap[i]]
        },
        {
            id: 'chart-innovation',
            title: 'Innovation, px: x solid, y dashed',
            low: -gate,
            high: gate,
            lines: [0],
            name: '',
            values: [
                (i, row) => detections.x[i] - rows.predicted.x[row], (i, row) => detections.y[i] - rows.predicted.y[row]
            ]
        },
    ];
};

export const chartFigures = () => chartsOf(state.run).map(
    chart => element(
        'figure', {},
        element('figcaption', {}, span(chart.title), element('span', {id: chart.id + '-now'}, chart.name)),
        Object.assign(
            element('canvas', {id: chart.id, role: 'img', className: 'chart'}),
            {ariaLabel: chart.title + ' over the life of the track'})));

function drawLine(g, list, y, dash) {
    g.setLineDash(dash);
    g.beginPath();
    let apart = true;
    list.forEach(({low, high}, n) => {
        if (low > high) {
            apart = true;
            return;
        }
        const x = LEFT + n + 0.5;
        if (apart) g.moveTo(x - 0.7, y(low));
        g.lineTo(x, y(low));
        if (high > low) g.lineTo(x, y(high));
        apart = false;
    });
    g.stroke();
    g.setLineDash([]);
}

function paintChart(g, w, k, chart) {
    const {run} = state, parts = Math.max(Math.min(Math.floor(w - LEFT), 2000), 1),
          lists = chart.values.map(value => summarize(run, k, parts, value));
    let {low, high} = chart;
    if (low < 0) {  // as much of the gate as is needed
        const most =
            Math.max(...lists.flat().filter(it => it.low <= it.high).map(it => Math.max(-it.low, it.high)), 1e-9);
        high = Math.min(1.1 * most, chart.high);
        low = -high;
    }
    const share = value => (Math.min(Math.max(value, low), high) - low) / (high - low);
    const y = value => HEIGHT - 2 - (chart.root ? Math.sqrt(share(value)) : share(value)) * (HEIGHT - 4);
    g.fillStyle = theme.faint;
    g.fillRect(LEFT, 0, w - LEFT, HEIGHT);
    g.fillStyle = theme.line;
    lists[0].forEach(({missed}, n) => {
        g.globalAlpha = missed;
        if (missed) g.fillRect(LEFT + n, 0, 1, HEIGHT);
    });
    g.globalAlpha = 1;
    g.strokeStyle = g.fillStyle = theme.dim;
    g.setLineDash([5, 3]);
    g.font = font(10);
    for (const value of chart.lines) {
        strokes(g, [LEFT, y(value), w, y(value)]);
        rightText(g, short(value), LEFT - 4, Math.max(y(value) + 3.5, 9));
    }
    if (low < 0) {
        rightText(g, fixed(high), LEFT - 4, 9);
        rightText(g, fixed(low), LEFT - 4, HEIGHT - 2);
    }
    g.lineWidth = 1.4;
    g.strokeStyle = run.lives.id[k] < 0 ? theme.ink : lifeColour(run, k);
    lists.forEach((list, n) => drawLine(g, list, y, n ? [2, 2] : []));
}

export function drawCharts(k) {
    const {run, frame} = state, {lives, rows} = run, now = rowAt(run, k, frame);
    for (const chart of chartsOf(run)) {
        const canvas = byId(chart.id), w = canvas.parentNode.clientWidth, wide = (w - LEFT) / lives.span[k];
        if (!w) continue;
        const g = surface(canvas, w, HEIGHT);
        g.drawImage(
            cached(chart.id, `${state.events.number} ${k}`, w, HEIGHT, to => paintChart(to, w, k, chart)), 0, 0, w,
            HEIGHT);
        g.fillStyle = theme.ink;
        if (now >= 0) g.fillRect(LEFT + (now - lives.first[k] + 0.5) * wide - 0.75, 0, 1.5, HEIGHT);
        const shown = now > lives.first[k] && rows.detection[now] >= 0;
        byId(chart.id + '-now').textContent =
            shown ? chart.values.map(value => short(value(rows.detection[now], now))).join(', ') : chart.name;
        canvas.onclick = event => go(lives.birth[k] + Math.floor((event.offsetX - LEFT) / wide));
    }
}
