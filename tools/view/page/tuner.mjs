// SPDX-License-Identifier: MIT
//
// Tracking again with other parameters: the present setting, the ones before it, and the thread that does the work.
import {PARAMETERS} from './engine.mjs';
import {byId} from './dom.mjs';
import {change, state} from './state.mjs';
import {createEvents} from './events.mjs';
import {createRun, rowAt} from './run.mjs';
import {fromBase64, openPackage} from './package.mjs';
import {lowerBound} from './numbers.mjs';

export const BUSY = 'Tracking \u2026';

let worker = null;
let written = null;  // the run that the command wrote
let past = [];       // settings before the present one

export const canTune = () => worker !== null;
export const writtenRun = () => written;

// As the module wants it: a scale of 0 is chosen from the boxes.
export function settingOf(run) {
    const setting = Object.fromEntries(PARAMETERS.map(name => [name, run.parameters[name]]));
    return {...setting, scale: run.parameters.chosen ? setting.scale : 0};
}
const sameSetting = (a, b) => PARAMETERS.every(name => a[name] === b[name]);

// --- the thread ---

let asked = 0;              // number of the lastSet question
const waiting = new Map();  // by number, what to do with the answer
let busy = false;
let next = null;  // the lastSet setting that was asked for while the thread was busy: those between are left out

function ask(parameters, what) {
    return new Promise((resolve, reject) => {
        waiting.set(++asked, {resolve, reject});
        worker.postMessage({number: asked, parameters, what});
    });
}

function answer({data}) {
    const {resolve, reject} = waiting.get(data.number);
    waiting.delete(data.number);
    if (data.error)
        reject(new Error(data.error));
    else
        resolve(openPackage(data.bytes));
}

export const askFigures = parameters => ask(parameters, 'figures');

// --- runs ---

// The same detection of the file in another run; -1 if the tracker was not given it there.
function sameDetection(from, to, i) {
    const row = from.detections.row[i], at = lowerBound(to.detections.row, row);
    return to.detections.row[at] === row ? at : -1;
}

// What is selected, in another run: the track that has the same detection, at this frame or wherever else there is one.
export function transfer(selection, from, to, frame) {
    if (selection?.detection >= 0) {
        const detection = sameDetection(from, to, selection.detection);
        return detection < 0 ? null : {detection};
    }
    if (!(selection?.life >= 0)) return selection;
    const {first} = from.lives, here = Math.max(rowAt(from, selection.life, frame), first[selection.life]);
    for (const step of [-1, 1])
        for (let row = here; row >= first[selection.life] && row < first[selection.life + 1]; row += step) {
            const i = from.rows.detection[row], same = i < 0 ? -1 : sameDetection(from, to, i);
            if (same >= 0 && to.detections.life[same] >= 0) return {life: to.detections.life[same]};
        }
    return null;
}

let runs = 0;
export function showRun(run, setting) {
    const selection = state.run ? transfer(state.selection, state.run, run, state.frame) : null;
    change({run, setting, selection, hover: null, events: {...createEvents(run), number: ++runs}});
}

async function work() {
    busy = true;
    while (next) {
        const setting = next;
        next = null;
        change({tuning: BUSY});
        try {
            const run =
                sameSetting(setting, settingOf(written)) ? written : createRun(await ask(setting, 'run'), written.file);
            if (!next) showRun(run, setting);
            change({tuning: ''});
        } catch (error) {
            change({tuning: 'The tracker failed with this setting: ' + error.message});
        }
    }
    busy = false;
}

function track(setting) {
    next = setting;
    if (!busy) work();
}

// One slider that moves is one step to undo.
let lastSet = {name: '', time: 0};
export function set(patch) {
    const name = Object.keys(patch).join(), now = performance.now(), setting = {...(next ?? state.setting), ...patch};
    if (sameSetting(setting, next ?? state.setting)) return;
    if (lastSet.name !== name || now - lastSet.time > 1500) past.push(state.setting);
    lastSet = {name, time: now};
    change({undo: past.length});
    track(setting);
}

export function undo() {
    if (!past.length) return;
    lastSet.name = '';
    const setting = past.pop();
    change({undo: past.length});
    track(setting);
}
export const reset = () => set(settingOf(written));

// The tracker starts when it is first asked; without a module in the page there is none.
export function startTuner(run) {
    written = run;
    change({setting: settingOf(run), undo: 0, tuning: ''});
    const module = fromBase64(byId('module').textContent);
    if (!module.length) return;
    const source = new Blob([byId('worker').textContent], {type: 'text/javascript'});
    worker = new Worker(URL.createObjectURL(source));
    worker.onmessage = answer;
    const slim = list => list &&
        Object.fromEntries(
            ['count', 'frame', 'id', 'left', 'top', 'w', 'h', 'score', 'cls'].map(name => [name, list[name]]));
    const {input, truth, others, frames} = run.file;
    worker.postMessage({module, file: {input: slim(input), truth: slim(truth), others: slim(others), frames}});
}
