// SPDX-License-Identifier: MIT
//
// The page's data code, without a page: what it reads is what the command tracked, and what it says is true.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {readFileSync, writeFileSync} from 'node:fs';
import {join} from 'node:path';
import {test} from 'node:test';
import {gunzipSync} from 'node:zlib';

import {differences, tracksOf} from '../../tools/view/page/compare.mjs';
import {startEngine} from '../../tools/view/page/engine.mjs';
import {createEvents, nextEvent} from '../../tools/view/page/events.mjs';
import {findTarget, sorted, tables, toCsv} from '../../tools/view/page/find.mjs';
import {apart, exact, lowerBound} from '../../tools/view/page/numbers.mjs';
import {fromBase64, openPackage} from '../../tools/view/page/package.mjs';
import {causeOf, objectFigures} from '../../tools/view/page/objects.mjs';
import {createRun, liveAt, matches, readFile, readOther, rowAt} from '../../tools/view/page/run.mjs';
import {missWords, reason, stateWords} from '../../tools/view/page/words.mjs';

const directory = process.env.DIRECTORY;
const zeltrack = (...words) =>
    execFileSync(process.env.ZELTRACK, words, {encoding: 'utf8', cwd: directory, stdio: 'pipe'});

function parts(name, ...options) {
    zeltrack('view', '-q', name, '-o', name + '.html', ...options);
    const page = readFileSync(join(directory, name + '.html'), 'utf8');
    const bytes = id => fromBase64(new RegExp(`id="${id}">([^<]*)<`).exec(page)[1]);
    return {columns: openPackage(bytes('data')), module: bytes('module')};
}

const view = (name, ...options) => createRun(parts(name, ...options).columns);

function viewLines(name, lines, ...options) {
    writeFileSync(join(directory, name), lines.join('\n') + '\n');
    return view(name, ...options);
}

test('rows are those of the command, and their boxes to the last digit', () => {
    zeltrack('synth', '--objects=20', '--frames=300', '--seed=1', '-o', 'data.txt');
    const run = view('data.txt', '--iou=0.2'),
          tracked = zeltrack('track', '-q', '--iou=0.2', 'data.txt').trim().split('\n');
    const seen = new Map();
    for (let k = 0; k < run.lives.count; k++)
        for (let row = run.lives.first[k]; row < run.lives.first[k + 1]; row++)
            if (run.rows.reported[row] && run.rows.detection[row] >= 0)
                seen.set(`${run.lives.birth[k] + row - run.lives.first[k]},${run.lives.id[k]}`, row);
    assert.equal(seen.size, tracked.length);
    for (const line of tracked) {
        const [frame, id, left, top, width, height] = line.split(',').map(Number), row = seen.get(`${frame},${id}`),
                                            {box} = run.rows;
        const shown = [box.x[row], box.y[row], box.w[row], box.h[row]];
        [left + width / 2, top + height / 2, width, height].forEach(
            (value, n) => assert.ok(Math.abs(value - shown[n]) < 0.0052, line));
    }
});

test('reasons never contradict the outcome', () => {
    // one track; then beside it what is just within, exactly at and beyond the limits, at the scale 1
    const still = [1, 2, 3].map(frame => `${frame},-1,0,0,10,10,1`),
          at = (x, w = 10) => viewLines('limits.txt', [...still, `4,-1,${x},0,${w},10,1`], '--scale=1', '--iou=0.3');
    const cases = [
        [at(5.3846), /the overlap 0\.3000\d+ is above 0\.3|their overlap 0\.3000\d* is above 0\.3/],
        [at(5.3847), /overlap 0\.29999\d* is not above 0\.3/],
        [at(1, 10), /so close/],
        [at(9.9999), /overlap 0.0000\d* is not above 0\.3/],
        [at(10), /Too far: .* 10 px away; the gate is 10 px/],
    ];
    for (const [run, wanted] of cases) assert.match(reason(run, 3), wanted);
    assert.match(reason(cases[0][0], 0), /^No track was there/);
});

test('a long gap costs nothing, and a long tentative life no search', () => {
    const run = viewLines('gap.txt', ['1,-1,0,0,9,9,1', '1000000,-1,0,0,9,9,1'], '--stable=10000000');
    assert.ok(run.busy.length < 12 && run.rows.count < 12);
    assert.deepEqual([...liveAt(run, 500000)], []);
    assert.deepEqual([...liveAt(run, 1000000)], [1]);
});

test('what a missed frame means is said', () => {
    const frames = [1, 2, 8, 9, 10, 11],
          run = viewLines('missed.txt', [...frames.map(f => `${f},-1,0,0,9,9,1`), '30,-1,500,0,9,9,1'], '--stable=3');
    assert.equal(matches(run, 0, 2), 2);
    assert.match(missWords(run, 0, 6), /starts again from zero/);
    assert.match(stateWords(run, 0, 8), /tentative, 1 of 3/);
    const k = run.lives.byId.get(1), from = run.lives.birth[k] + run.lives.confirmed[k] + 1;
    assert.match(missWords(run, k, from + 2), /Still reported/);
    assert.match(missWords(run, k, from + 3), /No longer reported.*survives 7 more/);
    assert.equal(run.rows.reported[rowAt(run, k, from + 3)], 0);
});

test('events are walked through one by one, both ways', () => {
    const kind = {frames: [3, 5, 5, 9], items: [7, 8, 9, 4]};
    assert.deepEqual(
        [
            nextEvent(kind, 4, -1, true), nextEvent(kind, 5, 8, true), nextEvent(kind, 5, 9, true),
            nextEvent(kind, 5, 9, false)
        ],
        [1, 2, 3, 1]);
    assert.deepEqual(
        [nextEvent(kind, 9, 4, true), nextEvent(kind, 3, 7, false), nextEvent(kind, 5, -1, false)], [-1, -1, 0]);
    const run = viewLines(
        'events.txt', ['1,-1,0,0,9,9,1', '1,-1,90,0,9,9,1', '2,-1,0,0,9,9,1'], '--stable=1', '--max-objects=1');
    const {births, misses, noRoom} = createEvents(run);
    assert.deepEqual([births.frames, misses.total, noRoom.items, run.unread], [[1], 0, [], 1]);
});

test('figures and identity changes are those of the command eval', () => {
    zeltrack('synth', '--objects=40', '--size=600x400', '--seed=2', '--gt=plain.txt', '-o', 'scored.txt');
    // every third object is a distractor, and every fifth does not count
    const classes = readFileSync(join(directory, 'plain.txt'), 'utf8').trim().split('\n').map(line => {
        const [frame, id, ...box] = line.split(',');
        return [frame, id, ...box.slice(0, 4), id % 5 ? 1 : 0, id % 3 ? 1 : 8].join(',');
    });
    writeFileSync(join(directory, 'classes.txt'), classes.join('\n') + '\n');
    zeltrack('track', '-q', 'scored.txt', '-o', 'tracks.txt');
    for (const truth of ['plain', 'classes']) {
        const run = view('scored.txt', '--gt', truth + '.txt'),
              report = JSON.parse(zeltrack('eval', truth + '.txt', 'tracks.txt', '--format=json'))[truth];
        const all = {...report.HOTA, ...report.CLEAR, ...report.Identity, ...report.Count};
        assert.ok(run.figures.size > 9 && all.IDSW > 5);
        for (const [name, value] of run.figures) {
            if (['tracks', 'rows'].includes(name)) continue;  // counted without ground truth, too
            const list = [all[name]].flat(), mean = list.reduce((sum, it) => sum + it, 0) / list.length;
            assert.ok(Math.abs(value - mean) < 1e-6, `${truth}: ${name} ${value} ${mean}`);
        }
        assert.equal(run.changes.length, all.IDSW);
        assert.equal(run.truth.count, all.GT_Dets);
        const objects = run.truth.objects.map(it => objectFigures(run, it)),
              sum = name => objects.reduce((n, it) => n + it[name], 0);
        assert.equal(sum('followed'), all.CLR_TP);
        assert.equal(sum('frames') - sum('followed'), all.CLR_FN);
        assert.equal(sum('changes'), all.IDSW);
        const words = run.changes.map(it => causeOf(run, it)),
              told = words.filter(({text}) => !/undefined|NaN/.test(text) && text.length > 20);
        assert.equal(told.length, all.IDSW);
        for (const [n, {frame}] of words.entries()) assert.ok(frame <= run.changes[n].frame);
    }
});

test('sets of tracks differ where boxes or their joins do, not where identifiers do', () => {
    zeltrack('synth', '--objects=30', '--frames=120', '--size=700x500', '--seed=4', '-o', 'both.txt');
    zeltrack('track', '-q', 'both.txt', '-o', 'same.txt');
    const renamed = readFileSync(join(directory, 'same.txt'), 'utf8')
                        .replace(/^(\d+),(\d+)/gm, (_, frame, id) => `${frame},${Number(id) + 7}`);
    writeFileSync(join(directory, 'renamed.txt'), renamed);
    const compare = (...options) => {
        const {columns} = parts('both.txt', '--compare', 'renamed.txt', ...options), run = createRun(columns);
        return {other: readOther(columns), now: tracksOf(run, 'now'), run};
    };
    const same = compare(), late = compare('--stable=5'), tight = compare('--iou=0.8');
    assert.deepEqual(differences(same.other, same.now), []);
    assert.equal(same.other.figures.get('rows'), same.run.figures.get('rows'));
    assert.ok(differences(late.other, late.now).every(({onlyA, onlyB}) => onlyA.length && !onlyB.length));
    // by detections of the file as by overlap
    const frames = (a, b) => differences(a, b).map(it => it.frame);
    assert.deepEqual(frames(same.now, tight.now), frames(tight.other, tight.now));
    assert.ok(frames(same.now, tight.now).length > 20);
});

// Every column of the module's package, and with them rows, reasons and figures, is that of the command.
test('the tracker in the page gives what the command gives, bit for bit', async context => {
    const odd =
        ['--iou=0', '--euc=0', '--stable=1', '--removal=1', '--min-conf=0.5', '--max-objects=7', '--scale=0.05'];
    const cases = [
        ['sample', ['--objects=20', '--frames=300'], []],
        ['crowd', ['--objects=120', '--frames=60', '--size=700x500'], []],
        ['odd', ['--objects=12', '--frames=80', '--size=400x300'], odd],
        ['late', ['--objects=30', '--frames=50'], ['--stable=7', '--iou=0.7', '--ignore-class']],
    ];
    for (const [name, invent, options] of cases) {
        zeltrack('synth', ...invent, '--seed=5', '--gt=truth.txt', '-o', name);
        const {columns, module} = parts(name, '--gt=truth.txt', ...options);
        if (!module.length) return context.skip('built without the module');
        const file = readFile(columns), run = createRun(columns, file), {parameters} = run;
        const engine = await startEngine(gunzipSync(module), file);
        for (const again of [1, 2]) {
            const result = openPackage(engine({...parameters, scale: parameters.chosen ? parameters.scale : 0}));
            assert.ok(result.names().length > 20);
            for (const column of result.names())
                assert.deepEqual(result.bytes(column), columns.bytes(column), `${name}: ${column}, run ${again}`);
        }
    }
});

test('numbers find tracks, objects and frames; tables sort and become CSV', () => {
    const run = viewLines('find.txt', [1, 2, 3, 4].flatMap(f => [`${f},-1,${f},0,9,9,1`, `${f},-1,90,${2 * f},9,9,1`]));
    const cases = [
        ['2', {life: 1}], ['track 1', {life: 0}], ['n0', {life: 0}], ['t 7', undefined], ['object 1', undefined],
        ['x', undefined]
    ];
    for (const [text, selection] of cases) assert.deepEqual(findTarget(run, text)?.selection, selection, text);
    assert.deepEqual([findTarget(run, 'f 3'), findTarget(run, 'frame 5')], [{frame: 3}, null]);
    const {tracks} = tables, step = tracks.columns.find(it => it.title === 'step, px'),
          entries = sorted(tracks.entries(run), step, true);
    assert.deepEqual(entries.map(it => it.id), [2, 1]);
    assert.match(toCsv(tracks, entries), /^track,.*"step, px",ending\n2,1,4,4,4,0,0,\d\.\d\d,end of file\n1,/);
});

test('a page without data is small', () => {
    writeFileSync(join(directory, 'small.txt'), '');
    zeltrack('view', '-q', 'small.txt', '-o', 'small.html');
    assert.ok(readFileSync(join(directory, 'small.html')).length < 260000);
});

test('numbers are written so that they can be told apart', () => {
    assert.deepEqual(apart(0.30000004, 0.3), ['0.30000004', '0.3']);
    assert.deepEqual(apart(2, 2), ['2', '2']);
    assert.equal(exact(Math.fround(0.1)), '0.1');
    assert.equal(exact(Math.fround(1648.1)), '1648.1');
    assert.equal(lowerBound([1, 3, 3, 5], 3), 1);
});
