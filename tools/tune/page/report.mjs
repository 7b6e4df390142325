// SPDX-License-Identifier: MIT
//
// The start: reads the data, fills the page and ties the charts together.
import {byId, element, span, svgSign} from './dom.mjs';
import {darkScheme, readTheme} from './draw.mjs';
import {drawGains, drawTrials, SIGNS, trialAt} from './chart.mjs';
import {fixed, plural} from './numbers.mjs';
import {optionTable, rankingTable, sequenceTable, signed} from './tables.mjs';
import {rangeOf, settingText, valueText} from './trials.mjs';

const data = JSON.parse(byId('data').textContent);
const initial = data.trials.find(trial => Object.keys(trial.setting).length === 0);
const range = rangeOf(data.trials, data.before);
const charts = [];  // {canvas, n}
let marked = null;

const fact = (name, value, note = '') =>
    element('div', {}, element('b', {}, name), element('span', {}, value), note && element('i', {}, note));

function fillHeader() {
    const over = data.groups === data.sequences.length ? '' : ` in ${plural(data.groups, 'group')}`;
    byId('objective').textContent = data.objective;
    byId('extent').textContent = `mean over ${plural(data.sequences.length, 'sequence')}${over}, ` +
        plural(data.trials.length, 'setting') + (data.lost ? `, ${plural(data.lost, 'trial')} lost` : '');
    byId('command').textContent = data.command;
    byId('facts').append(
        fact('Defaults', fixed(data.before, 2)), fact('Best', fixed(data.after, 2)),
        fact('Gain', signed(data.gain), data.noise === null ? '' : `noise up to ${fixed(data.noise, 2)}`),
        data.heldOut ?
            fact('Held out', signed(data.heldOut.gain), `better on ${data.heldOut.better} of ${data.groups}`) :
            fact('Held out', 'nothing', 'that takes three sequences or groups'));
    byId('verdict').textContent = data.verdict;
    byId('verdict').hidden = !data.verdict;
}

function redraw() {
    for (const {canvas, n} of charts)
        drawTrials(canvas, {...chartOf(n), width: canvas.parentElement.clientWidth, marked});
    drawGains(byId('gains'), data.sequences, byId('gains').parentElement.clientWidth - 32);
}

const chartOf = n => ({parameter: data.parameters[n], n, trials: data.trials, initial, range});

function mark(trial) {
    if (trial === marked) return;
    marked = trial;
    byId('trial').replaceChildren(
        ...trial ?
            [
                `${fixed(trial.objective, 2)}: trial ${trial.trial} of the search from seed ${trial.seed} `,
                element('code', {}, settingText(trial))
            ] :
            []);
    redraw();
}

function addChart(parameter, n) {
    const canvas = element('canvas', {});
    canvas.setAttribute('role', 'img');
    canvas.setAttribute('aria-label', `Objective over ${parameter.name}`);
    canvas.onpointermove = event =>
        mark(trialAt({...chartOf(n), width: canvas.parentElement.clientWidth}, event.offsetX, event.offsetY));
    canvas.onpointerleave = () => mark(null);
    const values = `default ${parameter.usual}, best ${valueText(data.trials[0], parameter)}`;
    byId('charts').append(element('figure', {}, element('figcaption', {}, parameter.name, span(values)), canvas));
    charts.push({canvas, n});
}

function fillKeys() {
    byId('key').append(
        span(svgSign('M-2-2h4v4h-4z', 'took'), 'a trial; the worst tenth lies at the lower edge'),
        span(svgSign('M-6 0h12', 'accent', true), 'the best of each part of the range'),
        span(svgSign(SIGNS.initial, 'far'), 'the defaults'), span(svgSign(SIGNS.best, 'truth'), 'the best'));
    byId('gain-key')
        .append(
            span(svgSign('M-6-4h12v8h-12z', 'took'), 'gain of the best setting'),
            data.heldOut ?
                span(svgSign('M-6-4h12v8h-12z', 'accent'), 'gain of the setting chosen without the sequence') :
                '');
    byId('gains').setAttribute('aria-label', 'Gain by sequence, as in the table below');
}

fillHeader();
fillKeys();
data.parameters.forEach(addChart);
byId('options').append(optionTable(data));
byId('sequences').append(sequenceTable(data));
byId('ranking').append(rankingTable(data));
readTheme();
redraw();
new ResizeObserver(redraw).observe(byId('charts'));
darkScheme.addEventListener('change', () => {
    readTheme();
    redraw();
});
