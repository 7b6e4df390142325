// SPDX-License-Identifier: MIT
//
// Buttons in the text that lead to a track, a detection, an object or a frame.
import {detectionName, nameOf} from './words.mjs';
import {element, link, span} from './dom.mjs';
import {go, select, state} from './state.mjs';
import {whole} from './numbers.mjs';

export const lifeLink = k => link(nameOf(state.run, k), () => select({life: k}));
export const trackLink = id => state.run.lives.byId.has(id) ?
    link('track ' + id, () => select({life: state.run.lives.byId.get(id)})) :
    'track ' + id;
export const detectionLink = i => link(detectionName(state.run, i), () => select({detection: i}));
export const frameLink = frame => link('frame ' + whole(frame), () => go(frame));
export const objectLink = object => link('object ' + object, () => select({object}));

export const heading = (mark, title, stateText) => element(
    'h2', {className: 'what'}, mark, span(title), element('small', {}, stateText || ''),
    Object.assign(link('close', () => select(null)), {ariaLabel: 'Close the selection', className: 'link close'}));
