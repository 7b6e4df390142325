// SPDX-License-Identifier: MIT
//
// Frame and selection in the page's address. A new selection is a step that "back" undoes; a new frame is not.
import {change, state, watch} from './state.mjs';
import {numberInFrame} from './run.mjs';

function words() {
    const {run, frame, selection} = state, {lives} = run;
    if (!selection) return `#frame=${frame}`;
    if (selection.life >= 0) {
        const k = selection.life;
        return `#frame=${frame}&track=${lives.id[k] >= 0 ? lives.id[k] : 'n' + k}`;
    }
    if (selection.detection >= 0) return `#frame=${frame}&detection=${numberInFrame(run, selection.detection)}`;
    return `#frame=${frame}&object=${selection.object}`;
}

function selectionOf(wanted, frame) {
    const {run} = state, number = name => /^\d+$/.test(wanted.get(name) ?? '') ? Number(wanted.get(name)) : -1;
    const unnamed = /^n(\d+)$/.exec(wanted.get('track') ?? '');
    const life = unnamed ? Number(unnamed[1]) : run.lives.byId.get(number('track')) ?? -1;
    if (life >= 0 && life < run.lives.count) return {life};
    const b = run.at(frame), first = run.busy[b] === frame ? run.detectionStart[b] : 0;
    const detection = first + number('detection') - 1;
    if (number('detection') > 0 && run.detections.frame[detection] === frame) return {detection};
    const object = number('object');
    return object >= 0 && run.truth?.objects.some(it => it.id === object) ? {object} : null;
}

function read() {
    const wanted = new URLSearchParams(location.hash.slice(1)), frame = Number(wanted.get('frame')) || state.frame;
    change({frame, selection: selectionOf(wanted, frame)});
}

const sameSelection = (a, b) => JSON.stringify(a ?? null) === JSON.stringify(b ?? null);
let addressed = null;  // the selection that the address names
let writeTimer = 0;

function write() {
    writeTimer = 0;
    if (words() === location.hash) return;
    const isStep = !sameSelection(addressed, state.selection);
    history[isStep ? 'pushState' : 'replaceState'](null, '', words());
    addressed = state.selection;
}

// Browsers refuse addresses that change more than a few times a second.
export function bindAddress() {
    read();
    addressed = state.selection;
    addEventListener('popstate', () => {
        read();
        addressed = state.selection;
    });
    watch(['frame', 'selection', 'playing', 'run'], () => {
        if (!sameSelection(addressed, state.selection)) return write();
        if (!writeTimer && !state.playing) writeTimer = setTimeout(write, 200);
    });
}
