// SPDX-License-Identifier: MIT
//
// Playing, stepping, and going from event to event; the density of events over time.
import {GUTTER, MARGIN} from './axis.mjs';
import {byId, element, onClicks, setLabel} from './dom.mjs';
import {cached, font, rightText, surface, theme} from './draw.mjs';
import {change, go, state, watch} from './state.mjs';
import {density, nextEvent} from './events.mjs';
import {plural, whole} from './numbers.mjs';

const LANE = 11;
const laneColours = {
    births: 'accent',
    misses: 'far',
    ends: 'lost',
    changes: 'ink'
};
const laneKeys = () => Object.keys(laneColours).filter(key => key !== 'changes' || state.run.truth);

function paintDensity(g, w) {
    const parts = Math.max(Math.floor((w - GUTTER - MARGIN) / 2), 1);
    g.font = font(10);
    laneKeys().forEach((key, n) => {
        const sums = density(state.events[key], state.run.frames, parts),
              most = Math.max(sums.reduce((a, b) => Math.max(a, b), 0), 1);
        g.fillStyle = theme.dim;
        rightText(g, state.events[key].name.replace('identity', 'id'), GUTTER - 8, n * LANE + LANE - 2);
        g.fillStyle = theme[laneColours[key]];
        sums.forEach((count, part) => {
            const high = count ? Math.max(Math.sqrt(count / most) * (LANE - 3), 2) : 0;
            g.fillRect(GUTTER + part * 2, n * LANE + LANE - 1 - high, 2, high);
        });
    });
}

function drawDensity() {
    const box = byId('density').parentNode, bar = byId('rows').offsetWidth - byId('rows').clientWidth;
    box.style.marginRight = bar + 'px';  // so that frames stand above each other
    box.style.height = laneKeys().length * LANE + 20 + 'px';
    const w = box.clientWidth, h = box.clientHeight;
    surface(byId('density'), w, h)
        .drawImage(cached('density', state.events.number, w, h, g => paintDensity(g, w)), 0, 0, w, h);
    setLabel('density', 'Density of ' + laneKeys().map(key => state.events[key].name).join(', ') + ' over the frames');
}

// --- playing ---

let clock = 0, due = 0;
export function play(wanted) {
    const {run, frame} = state, playing = wanted && run.frames > 1;
    if (playing === state.playing) return;
    change({playing, frame: playing && frame === run.frames ? 1 : frame});
    due = 0;
    clock = performance.now();
    if (playing) requestAnimationFrame(tick);
}

function tick(time) {
    if (!state.playing) return;
    due += Math.max(time - clock, 0) / 1000 * Number(byId('speed').value);
    clock = Math.max(time, clock);
    if (due >= 1) {
        go(state.frame + Math.floor(due));
        due %= 1;
    }
    if (state.frame === state.run.frames) return play(false);
    requestAnimationFrame(tick);
}

export const frameWords = () =>
    state.run.frames ? `Frame ${whole(state.frame)} of ${whole(state.run.frames)}` : 'No frames';

function drawTransport() {
    byId('play').textContent = state.playing ? 'Pause' : 'Play';
    byId('play').setAttribute('aria-pressed', state.playing);
    byId('frame').textContent = frameWords();
    byId('slider').value = state.frame;
    byId('slider').setAttribute('aria-valuetext', frameWords());
}

// --- events ---

const selectionFor = {
    life: life => ({life}),
    detection: detection => ({detection}),
    change: n => ({object: state.run.changes[n].object})
};

let current = {kind: '', item: -1};
export function jump(key, forward) {
    const kind = state.events[key], {frame} = state;
    const n = nextEvent(kind, frame, current.kind === key ? current.item : -1, forward);
    if (n < 0) return;
    current = {kind: key, item: kind.items[n]};
    change({playing: false, frame: kind.frames[n], selection: selectionFor[kind.subject](kind.items[n])});
}

export function bindPlayer() {
    const keys = Object.keys(state.events)
                     .filter(key => state.events[key].name && (key !== 'changes' || state.run.truth) && key !== 'took');
    byId('kind').append(...keys.map(key => element('option', {value: key}, state.events[key].name)));
    byId('speed').append(...[1, 5, 10, 25, 60, 240].map(
        n => element('option', {value: n, selected: n === 25}, plural(n, 'frame') + '/s')));
    onClicks({
        play: () => play(!state.playing),
        first: () => go(1),
        last: () => go(state.run.frames),
        back: () => go(state.frame - 1),
        forth: () => go(state.frame + 1),
        'kind-back': () => jump(byId('kind').value, false),
        'kind-forth': () => jump(byId('kind').value, true),
    });
    byId('slider').max = Math.max(state.run.frames, 1);
    byId('slider').disabled = state.run.frames < 2;
    byId('slider').oninput = () => go(byId('slider').valueAsNumber);
    watch(['frame', 'playing', 'run'], drawTransport);
    watch(['run', 'size'], drawDensity);
}
