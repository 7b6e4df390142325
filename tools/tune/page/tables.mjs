// SPDX-License-Identifier: MIT
//
// The tables below the charts.
import {element} from './dom.mjs';
import {fixed} from './numbers.mjs';
import {valueText} from './trials.mjs';

const SEE = 'See it';

export const signed = value => (value > 0.005 ? '+' : '') + fixed(value, 2);

const direction = value => value > 0.005 ? 'up' : value < -0.005 ? 'down' : '';
const changeCell = value =>
    value === null ? element('td', {}, '') : element('td', {className: direction(value)}, signed(value));
const cell = text => element('td', {}, text);
const heading = text => element('th', {scope: 'row'}, text);

function table(titles, rows) {
    return element(
        'table', {},
        element(
            'thead', {},
            element(
                'tr', {},
                titles.map(title => element('th', {scope: 'col', className: title === SEE ? 'command' : ''}, title)))),
        element('tbody', {}, rows.map(cells => element('tr', {}, cells))));
}

function lossText(data, name) {
    if (!(name in (data.losses ?? {}))) return 'has its default';
    return data.losses[name] === null ? 'not tried' : signed(-data.losses[name]);
}

export const optionTable = data => table(
    ['Option', 'Default', 'Best', 'Objective if it alone goes back'],
    data.parameters.map(
        it => [heading(it.name), cell(it.usual), cell(valueText(data.trials[0], it)), cell(lossText(data, it.name))]));

export const rankingTable = data => table(
    ['Rank', 'Objective', ...data.parameters.map(it => it.name)],
    data.trials.slice(0, 10).map(
        (trial, n) =>
            [heading(String(n + 1)), cell(fixed(trial.objective, 2)),
             ...data.parameters.map(it => cell(valueText(trial, it)))]));

function viewCell(command) {
    const text = element('code', {}, command), copy = element('button', {type: 'button'}, 'Copy');
    // where the browser keeps the clipboard to itself, the text is selected, to be copied by hand
    const select = () => getSelection().selectAllChildren(text);
    copy.onclick = () => {
        select();
        navigator.clipboard?.writeText(command).catch(select);
    };
    return element('td', {className: 'command'}, copy, text);
}

export function sequenceTable(data) {
    const grouped = data.groups !== data.sequences.length, views = data.sequences.some(it => it.view);
    return table(
        ['Sequence', ...(grouped ? ['Group'] : []), 'Defaults', 'Best', 'Gain', 'Held out', ...(views ? [SEE] : [])],
        data.sequences.map(
            it =>
                [heading(it.name), grouped && cell(it.group), cell(fixed(it.before, 2)), cell(fixed(it.after, 2)),
                 changeCell(it.after - it.before), changeCell(it.heldOut === null ? null : it.heldOut - it.before),
                 views && viewCell(it.view)]));
}
