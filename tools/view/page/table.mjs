// SPDX-License-Identifier: MIT
//
// The panel with the tables of tracks and objects, and the field that finds by number.
import {byId, element, link, refresh} from './dom.mjs';
import {go, select, state, watch} from './state.mjs';
import {findTarget, sorted, tables, toCsv} from './find.mjs';
import {plural} from './numbers.mjs';
import {save} from './save.mjs';

const TABLE_ROWS = 200;
const chosen = {
    table: 'tracks',
    column: 0,
    down: false
};
let listed = {run: null, table: '', entries: []};  // the entries are gathered once for a run

function entriesOf(run) {
    if (listed.run !== run || listed.table !== chosen.table)
        listed = {run, table: chosen.table, entries: tables[chosen.table].entries(run)};
    return sorted(listed.entries, tables[chosen.table].columns[chosen.column], chosen.down);
}

function chooseTable(patch) {
    Object.assign(chosen, patch);
    drawTable();
}

function headCell(it, n) {
    const mine = chosen.column === n,
          cell = element(
              'th', {scope: 'col'},
              link(
                  it.title + (mine ? chosen.down ? ' \u25be' : ' \u25b4' : ''),
                  () => chooseTable({column: n, down: mine && !chosen.down})));
    cell.setAttribute('aria-sort', mine ? chosen.down ? 'descending' : 'ascending' : 'none');
    return cell;
}

function drawTable() {
    if (state.tab !== 'tables') return;
    const {run} = state, table = tables[chosen.table], entries = entriesOf(run);
    const isMine = entry => {
        const {selection} = table.target(entry);
        return Object.keys(selection).every(key => state.selection?.[key] === selection[key]);
    };
    const open = entry => {
        const {selection, frame} = table.target(entry);
        select(selection, frame);
    };
    const row = entry => element(
        'tr', {className: isMine(entry) ? 'mine' : ''},
        ...table.columns.map(
            (it, n) =>
                element('td', {}, n ? it.text(it.value(entry)) : link(it.text(it.value(entry)), () => open(entry)))));
    const pick = name => Object.assign(
        element('button', {type: 'button', onclick: () => chooseTable({table: name, column: 0, down: false})}, name),
        {ariaPressed: String(chosen.table === name)});
    refresh(
        byId('table'),
        element(
            'div', {className: 'buttons'}, pick('tracks'), run.truth && pick('objects'),
            element(
                'button',
                {type: 'button', onclick: () => save(`${chosen.table}.csv`, toCsv(table, entries), 'text/csv')},
                'Save as CSV')),
        element(
            'div', {className: 'scroll', tabIndex: 0, role: 'region', ariaLabel: 'Table of ' + chosen.table},
            element(
                'table', {}, element('thead', {}, element('tr', {}, ...table.columns.map(headCell))),
                element('tbody', {}, ...entries.slice(0, TABLE_ROWS).map(row)))),
        entries.length > TABLE_ROWS &&
            element(
                'p', {className: 'note'},
                `The first ${TABLE_ROWS} of ${plural(entries.length, 'entry', 'entries')}; the CSV file has all.`));
}

function findNumber(event) {
    event.preventDefault();
    const target = findTarget(state.run, byId('find').value), unknown = !target && byId('find').value !== '';
    byId('find').setCustomValidity(unknown ? 'There is no such track, object or frame.' : '');
    byId('find').setAttribute('aria-invalid', unknown);
    if (unknown) byId('find').reportValidity();
    if (target?.selection)
        select(target.selection, target.frame);
    else if (target)
        go(target.frame);
}

export function bindTables() {
    byId('finder').onsubmit = findNumber;
    byId('find').oninput = () => byId('find').setCustomValidity('');
    watch(['run', 'tab', 'selection'], drawTable);
}
