// SPDX-License-Identifier: MIT
//
// The header: what was tracked, with which parameters, and the totals, each of which goes to the next such event.
import {OUTCOMES, OUTCOME_KEYS} from './events.mjs';
import {OUTCOME_COLOURS, cross, endings, plus, signs} from './draw.mjs';
import {byId, element, refresh, span, svgSign} from './dom.mjs';
import {endWords} from './words.mjs';
import {exact, pixels, plural, short, whole} from './numbers.mjs';
import {jump} from './player.mjs';
import {state, watch} from './state.mjs';

const fact = (name, value) => span(element('i', {}, name + ' '), value);
const group = (title, ...facts) => element('div', {}, element('b', {}, title), ...facts);

function total(sign, name, key, count = state.events[key].frames.length) {
    const text = [sign, element('i', {}, name + ' '), whole(count)];
    if (!count) return element('span', {}, ...text);
    return element(
        'button', {
            className: 'total',
            type: 'button',
            title: 'Go to the next; with Shift to the one before',
            onclick: event => jump(key, !event.shiftKey)
        },
        ...text);
}

function parameterFacts() {
    const {parameters, gate, near} = state.run;
    return group(
        'Parameters', fact('scale', short(parameters.scale) + (parameters.chosen ? '' : ' (auto)')),
        fact('gate', pixels(gate)), fact('full overlap within', pixels(near)),
        fact('overlap above', exact(parameters.iou)),
        fact('confirmed at', plural(parameters.stable, 'match', 'matches')),
        fact('survives', plural(parameters.removal, 'miss', 'misses')), fact('capacity', whole(parameters.capacity)),
        parameters.steadyNow > 0 && fact('camera', 'steadied'),
        parameters.ignoreClass > 0 && fact('classes', 'ignored'));
}

// As the command eval gives them.
function figureFacts(figures) {
    const percent = name => fact(name, (100 * figures.get(name)).toFixed(2) + ' %');
    const count = (name, key) => fact(name, whole(figures.get(key)));
    return group(
        'Against ground truth', ...['HOTA', 'DetA', 'AssA', 'MOTA', 'IDF1'].map(percent), count('false', 'CLR_FP'),
        count('missed', 'CLR_FN'), count('fragmented', 'Frag'));
}

function drawHeader() {
    const {run, events} = state, {weak, unread} = run;
    const outcomes =
        OUTCOMES.map(n => total(svgSign(signs[n], OUTCOME_COLOURS[n]), events[OUTCOME_KEYS[n]].name, OUTCOME_KEYS[n]));
    byId('size').textContent = [
        plural(run.frames, 'frame'), plural(run.detections.count, 'detection'),
        plural(run.lives.byId.size, 'identifier'), run.frameBase ? '' : 'frame 1 is frame 0 of the file'
    ].filter(Boolean).join(' \u00b7 ');
    refresh(
        byId('facts'), parameterFacts(),
        group(
            'Detections', ...outcomes, total(svgSign(plus, 'dim', true), 'of these started a track', 'started'),
            total(svgSign(cross, 'dim', true), 'no room', 'noRoom'),
            weak > 0 && fact('below the least confidence', whole(weak)),
            unread > 0 && fact('not read, beyond the capacity', whole(unread))),
        group(
            'Tracks', total('', 'births', 'births'), total('', 'confirmations', 'confirmations'),
            total('', 'misses', 'misses', events.misses.total),
            total(svgSign(endings[1], 'dim', true), endWords[1], 'missed'),
            total(svgSign(endings[2], 'dim', true), endWords[2], 'tentative'),
            fact(endWords[0], whole(run.lives.count - events.ends.frames.length)),
            run.truth && total(svgSign(signs[3], 'ink'), 'identity changes', 'changes')),
        run.figures.has('HOTA') && figureFacts(run.figures));
}

export function bindHeader() {
    const {file} = state.run, name = file.name === '-' ? 'standard input' : file.name;
    byId('name').textContent = name.split('/').slice(-2).join('/');
    byId('name').title = name;
    document.title = name + ' \u2014 zeltrack view';
    byId('command').textContent = file.command;
    watch(['run'], drawHeader);
}
