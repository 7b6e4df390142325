// SPDX-License-Identifier: MIT
//
// The keyboard. A key that the focused field or button uses itself stays with it.
import {byId, element} from './dom.mjs';
import {go, select, selectDetection, selectLife, state, toggle} from './state.mjs';
import {fit, zoomBy} from './camera.mjs';
import {jump, play} from './player.mjs';

const eventKeys = () =>
    Object.keys(state.events).filter(key => state.events[key].key && (key !== 'changes' || state.run.truth));

const keyList = () => [
    ['Space', ' ', 'play or pause', () => play(!state.playing)],
    ['\u2190 \u2192', 'ArrowLeft', 'one frame; with Shift ten', event => go(state.frame - (event.shiftKey ? 10 : 1))],
    ['', 'ArrowRight', '', event => go(state.frame + (event.shiftKey ? 10 : 1))],
    ['Home', 'Home', 'first frame', () => go(1)],
    ['End', 'End', 'last frame', () => go(state.run.frames)],
    ...eventKeys().map(
        name =>
            [state.events[name].key, state.events[name].key, `next of: ${state.events[name].name}; with Shift back`,
             event => jump(name, !event.shiftKey)]),
    ['d', 'd', 'next detection of the frame; with Shift back', event => selectDetection(event.shiftKey ? -1 : 1)],
    ['t', 't', 'next track of the frame; with Shift back', event => selectLife(event.shiftKey ? -1 : 1)],
    ['g', 'g', 'gates', () => toggle('gates')],
    ['/', '/', 'find a track, an object or a frame', () => byId('find').focus()],
    ['+ \u2212 0', '+', 'zoom, and all of the scene', () => zoomBy(1.4)],
    ['', '-', '', () => zoomBy(1 / 1.4)],
    ['', '0', '', fit],
    ['Esc', 'Escape', 'select nothing', () => select(null)],
    ['?', '?', 'this list', () => byId('keys').showModal()],
];

const ARROWS = /^(Arrow|Home$|End$|Page)/;
function isOwn(target, key) {
    const {tagName, type} = target;
    if (tagName === 'SELECT' || tagName === 'TEXTAREA') return key !== 'Escape';
    if (tagName === 'INPUT' && !['range', 'checkbox', 'radio'].includes(type)) return true;
    if (type === 'range') return target.id !== 'slider' && ARROWS.test(key);
    if (target.getAttribute('role') === 'tab') return ARROWS.test(key) || key === ' ';
    return key === ' ' && /^(BUTTON|INPUT|SUMMARY)$/.test(tagName);
}

export function bindKeys() {
    const keys = keyList();
    byId('key-list')
        .replaceChildren(
            ...keys.filter(key => key[2])
                .flatMap(key => [element('dt', {}, element('kbd', {}, key[0])), element('dd', {}, key[2])]));
    byId('help').onclick = () => byId('keys').showModal();
    addEventListener('keydown', event => {
        if (event.ctrlKey || event.metaKey || event.altKey || document.querySelector('dialog[open]') ||
            isOwn(event.target, event.key))
            return;
        const found = keys.find(key => key[1] === (event.key.length === 1 ? event.key.toLowerCase() : event.key));
        if (!found) return;
        event.preventDefault();
        found[3](event);
    });
}
