// SPDX-License-Identifier: MIT
//
// What the page shows now: one object, changed by change() alone. Whoever draws says which parts of it he draws.
import {clamp} from './numbers.mjs';
import {detectionsAt, liveAt} from './run.mjs';

export const state = {
    run: null,     // the run that is shown
    events: null,  // its events
    before: null,  // the tracks that it is compared with
    other: null,   // those that the page was given for that
    frame: 1,
    selection: null,  // {life}, {detection} or {object}
    hover: null,      // the same, under the pointer
    playing: false,
    show: {},        // layers of the scene, by name
    trail: 15,       // frames
    tab: 'inspect',  // of the panel
    setting: null,   // parameters of the run
    undo: 0,         // settings to go back to
    tuning: '',      // busy, or why it failed
    size: 0,         // counts what changes sizes or colours
};

const painters = [];
const dirty = new Set();

// The painter runs before the next picture once any of the named parts has changed.
export function watch(names, paint) { painters.push({names, paint}); }

function paintAll() {
    const changed = new Set(dirty);
    dirty.clear();
    for (const {names, paint} of painters)
        if (names.some(name => changed.has(name))) paint(changed);
}

export function redraw(...names) {
    if (!dirty.size) requestAnimationFrame(paintAll);
    for (const name of names) dirty.add(name);
}

// A selected detection belongs to one frame: whoever leaves the frame leaves it.
function agree(patch) {
    const {run} = state;
    if (patch.selection?.detection >= 0) state.frame = run.detections.frame[patch.selection.detection];
    state.frame = run.frames ? clamp(Math.round(state.frame), 1, run.frames) : 0;
    if (state.selection?.detection >= 0 && run.detections.frame[state.selection.detection] !== state.frame)
        state.selection = null;
    if ('frame' in patch && !('hover' in patch)) state.hover = null;
}

export function change(patch) {
    const before = {...state};
    Object.assign(state, patch);
    agree(patch);
    const changed = Object.keys(state).filter(name => state[name] !== before[name]);
    if (changed.length) redraw(...changed);
}

export const go = frame => change({frame});
export const select = (selection, frame = state.frame) => change({selection, frame});
export const toggle = name => change({show: {...state.show, [name]: !state.show[name]}});

// The life that the selection is about; -1 if it is about none.
export function selectedLife() {
    const {run, selection} = state;
    if (selection?.life >= 0) return selection.life;
    if (!(selection?.detection >= 0)) return -1;
    const {life, nearest} = run.detections;
    return life[selection.detection] >= 0 ? life[selection.detection] : nearest[selection.detection];
}

const step = (list, at, by) => list[at < 0 ? (by > 0 ? 0 : list.length - 1) : (at + by + list.length) % list.length];
export function selectNextOf(name, list, by) {
    if (list.length) select({[name]: step(list, list.indexOf(state.selection?.[name]), by)});
}
export const selectDetection = by => selectNextOf('detection', detectionsAt(state.run, state.frame), by);
export const selectLife = by => selectNextOf('life', Array.from(liveAt(state.run, state.frame)), by);
