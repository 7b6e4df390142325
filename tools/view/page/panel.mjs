// SPDX-License-Identifier: MIT
//
// The inspector: the whole story of what is selected, and what happens in the frame.
import {TOOK, confirmedAt, detectionsAt, endsAt, lastFrame, lifeFigures, liveAt, rowAt} from './run.mjs';
import {byId, element, refresh, setLabel, svgSign, terms} from './dom.mjs';
import {detectionLink, frameLink, heading, lifeLink, objectLink, trackLink} from './links.mjs';
import {
    capital,
    className,
    consequence,
    detectionName,
    distanceOf,
    endWords,
    missWords,
    nameOf,
    outcomeWords,
    overlapText,
    reason,
    stateWords
} from './words.mjs';
import {state, watch} from './state.mjs';
import {chartFigures, drawCharts} from './charts.mjs';
import {OUTCOME_COLOURS, lifeColour, signs} from './draw.mjs';
import {exact, fixed, pixels, plural, short, whole} from './numbers.mjs';
import {frameWords} from './player.mjs';
import {objectPanel} from './objects.mjs';

// --- a track ---

const boxText = (boxes, i) => {
    const digits = Math.min(state.run.digits, 6), text = value => fixed(value, digits);
    return `${text(boxes.x[i] - boxes.w[i] / 2)}, ${text(boxes.y[i] - boxes.h[i] / 2)}  \u00b7  ${
        text(boxes.w[i])} \u00d7 ${text(boxes.h[i])}`;
};
const distanceRow = i =>
    ['Distance',
     `${pixels(distanceOf(state.run, i))}, squared ${short(state.run.detections.distance[i])} of ${
         state.run.parameters.gate ** 2} units`];

function rowTerms(k, row) {
    const {run, frame} = state, {rows, detections, lives} = run, i = rows.detection[row], {predicted} = rows,
                later = frame > lives.birth[k];
    return terms(
        ['Detection', i < 0 ? 'none: missed' : detectionLink(i)], ['Box', boxText(rows.box, row)],
        later && ['Prediction', boxText(predicted, row)],
        ...(later && i >= 0 ?
                [
                    [
                        'Innovation',
                        `${fixed(detections.x[i] - predicted.x[row])}, ${fixed(detections.y[i] - predicted.y[row])} px`
                    ],
                    distanceRow(i), ['Overlap', overlapText(run, i)]
                ] :
                []));
}

let figures = {of: null, k: -1};  // of the life that is selected
function lifePanel(k) {
    const {run, frame} = state, {lives} = run, row = rowAt(run, k, frame);
    if (figures.of !== run || figures.k !== k) figures = {of: run, k, ...lifeFigures(run, k)};
    const {hits, misses, longest} = figures, explained = missWords(run, k, frame);
    return [
        heading(
            element('span', {className: 'swatch', style: `background:${lifeColour(run, k)}`}), capital(nameOf(run, k)),
            stateWords(run, k, frame)),
        explained && element('p', {}, explained),
        terms(
            [
                'Life', frameLink(lives.birth[k]), ' to ', frameLink(lastFrame(run, k)),
                `, ${plural(lives.span[k], 'frame')}`
            ],
            ['Confirmed', lives.confirmed[k] < 0 ? 'never' : frameLink(lives.birth[k] + lives.confirmed[k])],
            ['Ended', capital(endWords[lives.end[k]])],
            [
                'Hits, misses',
                `${whole(hits)} and ${whole(misses)}` + (longest ? `, at most ${whole(longest)} in a row` : '')
            ]),
        row >= 0 && rowTerms(k, row),
        ...chartFigures(),
    ];
}

// --- a detection ---

const fileBox = i => {
    const {left, top, w, h} = state.run.detections;
    return `${exact(left[i])}, ${exact(top[i])}  \u00b7  ${exact(w[i])} \u00d7 ${exact(h[i])}`;
};

function detectionPanel(i) {
    const {run} = state, {outcome, nearest, rival, score, started, life, frame} = run.detections, k = nearest[i];
    return [
        heading(
            svgSign(signs[outcome[i]], OUTCOME_COLOURS[outcome[i]]), capital(detectionName(run, i)),
            `frame ${whole(frame[i])}`),
        element('p', {id: 'reason'}, reason(run, i), ' ', consequence(run, i)),
        terms(
            ['Box', fileBox(i)], ['Score', exact(score[i])], className(run, i) && ['Class', className(run, i).slice(6)],
            k >= 0 && ['Nearest', lifeLink(k)], k >= 0 && distanceRow(i), k >= 0 && ['Overlap', overlapText(run, i)],
            rival[i] >= 0 && ['Rival', detectionLink(rival[i])], started[i] && ['Started', lifeLink(life[i])]),
    ];
}

// --- the frame ---

function frameCounts() {
    const {run, frame} = state, live = liveAt(run, frame);
    let confirmed = 0, missed = 0;
    for (const k of live) {
        confirmed += Number(confirmedAt(run, k, frame));
        missed += Number(run.rows.detection[rowAt(run, k, frame)] < 0);
    }
    return `${plural(detectionsAt(run, frame).length, 'detection')}; ${plural(live.length, 'track')}: ${
        confirmed} confirmed, ${live.length - confirmed} tentative, ${missed} missed.`;
}

const changeRow = ({object, before, after}) =>
    [element('b', {}, '\u25c6 '), 'True ', objectLink(object), ' goes from ', trackLink(before), ' to ',
     trackLink(after)];

function eventsHere() {
    const {run, frame} = state, {outcome, started, life} = run.detections, rows = [], {lives} = run;
    const at = state.events.changes.frames.indexOf(frame);
    for (let n = at; n >= 0 && state.events.changes.frames[n] === frame; n++)
        rows.push(changeRow(run.changes[state.events.changes.items[n]]));
    for (const i of detectionsAt(run, frame))
        if (outcome[i] !== TOOK)
            rows.push([
                svgSign(signs[outcome[i]], OUTCOME_COLOURS[outcome[i]]), detectionLink(i),
                ' ' + outcomeWords[outcome[i]], started[i] ? ', started ' : ', no room', started[i] && lifeLink(life[i])
            ]);
    for (const k of liveAt(run, frame)) {
        if (endsAt(run, k, frame))
            rows.push(['\u2715 ', lifeLink(k), ` removed: ${endWords[lives.end[k]]}`]);
        else if (lives.confirmed[k] >= 0 && frame - lives.birth[k] === lives.confirmed[k])
            rows.push(['\u2713 ', lifeLink(k), ' confirmed']);
        else if (run.rows.misses[rowAt(run, k, frame)] === 1)
            rows.push(['\u25cb ', lifeLink(k), ' missed for the first time']);
    }
    return rows;
}

// --- drawing ---

const nothingSelected = () =>
    [element('h2', {}, 'Nothing selected'),
     element(
         'p', {},
         state.run.detections.count ?
             'Point at a box to see how far it is from its nearest track and what became of it. Click it, or a ' +
                 'bar below, for its whole story.' :
             'There is no detection in this file.')];

function selectionPanel({life, detection, object}) {
    if (life >= 0) return lifePanel(life);
    return detection >= 0 ? detectionPanel(detection) : objectPanel(object);
}

const LISTED = 14;
function drawPanel() {
    const {selection, playing} = state, rows = eventsHere(), counts = frameCounts();
    refresh(byId('inspector'), ...(selection ? selectionPanel(selection) : nothingSelected()));
    if (selection?.life >= 0) drawCharts(selection.life);
    refresh(
        byId('events'), element('h2', {}, 'In this frame'), element('p', {}, counts),
        element(
            'ul', {className: 'events'}, ...rows.slice(0, LISTED).map(row => element('li', {}, ...row)),
            rows.length > LISTED && element('li', {}, `and ${whole(rows.length - LISTED)} more`)));
    const title = byId('inspector').querySelector('h2.what'),
          summary = `${frameWords()}: ${counts}` +
        (selection && title ? ' Selected: ' + title.textContent.replace(/close$/, '') : '');
    setLabel('scene', 'Scene. ' + summary);
    if (!playing) byId('live').textContent = summary;
}

// While a button of the panel is pressed it stays where it is, and text that changes faster than this cannot be read.
const PAUSE = 150;
let pressed = false, panelDue = 0, timer = 0;
function drawSoon(changed) {
    const wait = changed?.has('selection') || changed?.has('run') || !state.playing ? 0 : panelDue - performance.now();
    if (pressed || wait > 0) {
        timer ||= setTimeout(() => {
            timer = 0;
            drawSoon();
        }, Math.max(wait, 30));
        return;
    }
    panelDue = performance.now() + PAUSE;
    drawPanel();
}

export function bindPanel() {
    byId('panel').addEventListener('pointerdown', () => {
        pressed = true;
    });
    for (const name of ['pointerup', 'pointercancel'])
        addEventListener(name, () => setTimeout(() => {
                                   pressed = false;
                               }));
    watch(['run', 'frame', 'selection', 'playing', 'size', 'tab'], drawSoon);
}
