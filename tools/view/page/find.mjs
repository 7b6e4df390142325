// SPDX-License-Identifier: MIT
//
// Finding by number, and the tables of tracks and of objects as data. Knows no document.
import {endWords} from './words.mjs';
import {exact} from './numbers.mjs';
import {lastFrame, lifeFigures, range} from './run.mjs';
import {objectFigures} from './objects.mjs';

// "12" and "track 12", "n7", "object 3", "frame 100", or their first letters; null if there is no such thing.
export function findTarget(run, text) {
    const found = /^\s*(track|t|object|o|frame|f|n)?\s*#?(\d+)\s*$/i.exec(text);
    if (!found) return null;
    const kind = (found[1] ?? 't')[0].toLowerCase(), number = Number(found[2]), {lives, truth} = run;
    if (kind === 'f') return number >= 1 && number <= run.frames ? {frame: number} : null;
    if (kind === 'o') {
        const object = truth?.objects.find(it => it.id === number);
        return object ? {selection: {object: number}, frame: truth.frame[object.boxes[0]]} : null;
    }
    const life = kind === 'n' ? (number < lives.count ? number : undefined) : lives.byId.get(number);
    return life === undefined ? null : {selection: {life}, frame: lives.birth[life]};
}

// Columns of a table: title, value of an entry, and how it is written.
const column = (title, value, text = value => String(value)) => ({title, value, text});
const share = value => exact(Math.round(1e4 * value) / 100);

export const tables = {
    tracks: {
        entries: run =>
            range(0, run.lives.count).filter(k => run.lives.id[k] >= 0).map(k => ({
                                                                                k,
                                                                                id: run.lives.id[k],
                                                                                birth: run.lives.birth[k],
                                                                                last: lastFrame(run, k),
                                                                                length: run.lives.span[k],
                                                                                end: endWords[run.lives.end[k]],
                                                                                ...lifeFigures(run, k)
                                                                            })),
        columns: [
            column('track', it => it.id), column('first', it => it.birth), column('last', it => it.last),
            column('frames', it => it.length), column('hits', it => it.hits), column('misses', it => it.misses),
            column('gap', it => it.longest), column('step, px', it => it.step, value => value.toFixed(2)),
            column('ending', it => it.end)
        ],
        target: it => ({selection: {life: it.k}, frame: it.birth}),
    },
    objects: {
        entries: run => (run.truth?.objects ??
                         []).map(object => ({...objectFigures(run, object), first: run.truth.frame[object.boxes[0]]})),
        columns: [
            column('object', it => it.id), column('first', it => it.first), column('frames', it => it.frames),
            column('followed, %', it => it.followed / it.frames, share), column('undetected', it => it.undetected),
            column('not followed', it => it.untracked), column('tracks', it => it.tracks.size),
            column('changes', it => it.changes)
        ],
        target: it => ({selection: {object: it.id}, frame: it.first}),
    },
};

// By one column, up or down; on a tie as they were.
export function sorted(entries, {value}, down) {
    const order = (a, b) => typeof a === 'string' ? a.localeCompare(b) : a - b;
    return entries.map((it, n) => [it, n])
        .sort(([a, n], [b, m]) => (down ? -1 : 1) * order(value(a), value(b)) || n - m)
        .map(([it]) => it);
}

const quote = text => /[",\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
export const toCsv =
    ({columns}, entries) => [columns.map(it => quote(it.title)),
                             ...entries.map(entry => columns.map(it => quote(it.text(it.value(entry)))))]
                                .map(row => row.join(',') + '\n')
                                .join('');
