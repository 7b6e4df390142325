// SPDX-License-Identifier: MIT
//
// Tables of the figures of two runs.
import {element} from './dom.mjs';
import {fixed, whole} from './numbers.mjs';

// Of the ground truth where there is one: name, how it is called there, and which direction is better.
export const FIGURES = [
    ['HOTA', 'HOTA', 1], ['DetA', 'DetA', 1], ['AssA', 'AssA', 1], ['MOTA', 'MOTA', 1], ['IDF1', 'IDF1', 1],
    ['IDSW', 'identity switches', -1], ['Frag', 'fragmentations', -1], ['CLR_FP', 'false', -1],
    ['CLR_FN', 'missed', -1], ['tracks', 'identifiers', 0], ['rows', 'rows', 0]
];
const isShare = name => /^(HOTA|DetA|AssA|MOTA|IDF1)$/.test(name);
export const figureText = (name, value) => isShare(name) ? fixed(100 * value, 2) : whole(value);

export const titleOf = name => FIGURES.find(it => it[0] === name)[1];

export function figureTable(before, now, title) {
    const cell = (name, value, better) =>
        element('td', {className: better ? 'better' : ''}, figureText(name, value) + (better ? ' \u25b2' : ''));
    const rows = FIGURES.filter(([name]) => now.has(name) && before.has(name)).map(([name, text, better]) => {
        const difference = better * Math.sign(Number((now.get(name) - before.get(name)).toFixed(6)));
        return element(
            'tr', {}, element('th', {scope: 'row'}, text), cell(name, before.get(name), difference < 0),
            cell(name, now.get(name), difference > 0));
    });
    return element(
        'table', {className: 'figures'},
        element(
            'thead', {},
            element('tr', {}, ...['figure', title, 'now'].map(text => element('th', {scope: 'col'}, text)))),
        element('tbody', {}, ...rows));
}
