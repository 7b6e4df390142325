// SPDX-License-Identifier: MIT
//
// Aids for drawing on canvases: colours of the theme, signs, sharp surfaces, text.

export const theme = {};
const names = [
    'panel', 'ink', 'dim', 'line', 'faint', 'accent', 'far', 'refused', 'lost', 'displaced', 'took', 'truth', 'before'
];

// Told apart by lightness as well as by hue. Green is the ground truth's, black and white the selection's.
const palettes = {
    light: ['#0b57a8', '#c2410c', '#00758a', '#8a2f86', '#7a6200', '#2f7fd6', '#b0103f', '#5b46b8', '#8a4b2a'],
    dark: ['#6fb1ff', '#ff9d5c', '#4fd0e3', '#e08be0', '#e8cf55', '#a8d4ff', '#ff7f95', '#b3a2ff', '#e0b193'],
};
export const darkScheme = globalThis.matchMedia?.('(prefers-color-scheme: dark)');

export const OUTCOME_COLOURS = ['took', 'far', 'refused', 'lost', 'displaced', 'far'];

export function readTheme() {
    const style = getComputedStyle(document.documentElement);
    for (const name of names) theme[name] = style.getPropertyValue('--' + name).trim();
    theme.outcomes = OUTCOME_COLOURS.map(name => theme[name]);
    theme.tracks = palettes[darkScheme.matches ? 'dark' : 'light'];
}
export const trackColour = id => theme.tracks[id % theme.tracks.length];
export const lifeColour = (run, k) => run.lives.id[k] < 0 ? theme.dim : trackColour(run.lives.id[k]);

export const font = (size, weight = '') => `${weight} ${size}px system-ui, sans-serif`;

// A canvas of so many CSS pixels, cleared, in the device's own resolution.
export function surface(canvas, width, height) {
    const ratio = devicePixelRatio || 1, w = Math.round(width * ratio), h = Math.round(height * ratio);
    if (canvas.width !== w || canvas.height !== h) {
        canvas.width = w;
        canvas.height = h;
        canvas.style.width = width + 'px';
        canvas.style.height = height + 'px';
    }
    const g = canvas.getContext('2d');
    g.setTransform(ratio, 0, 0, ratio, 0, 0);
    g.clearRect(0, 0, width, height);
    g.font = font(11);
    return g;
}

// The same, drawn anew only when the key changes: for what costs more than a copy.
const drawings = new Map();
export function cached(name, key, width, height, draw) {
    let entry = drawings.get(name);
    if (!entry) drawings.set(name, entry = {canvas: document.createElement('canvas'), key: null});
    const full = [key, width, height, devicePixelRatio, theme.ink].join();
    if (entry.key !== full) {
        entry.key = full;
        draw(surface(entry.canvas, width, height));
    }
    return entry.canvas;
}

export function strokes(g, ...lines) {
    g.beginPath();
    for (const [x1, y1, x2, y2] of lines) {
        g.moveTo(x1, y1);
        g.lineTo(x2, y2);
    }
    g.stroke();
}

export function rightText(g, text, x, y) {
    g.textAlign = 'right';
    g.fillText(text, x, y);
    g.textAlign = 'left';
}

// The signs of outcomes and endings: paths around 0, 0 that reach 5 to each side.
export const signs = [
    'M-2.6,0A2.6,2.6 0 1 0 2.6,0A2.6,2.6 0 1 0 -2.6,0Z', 'M0,-5L5,4L-5,4Z', 'M-4,-4H4V4H-4Z',
    'M0,-5.5L5.5,0L0,5.5L-5.5,0Z', 'M0,5L5,-4L-5,-4Z',
    'M-5,0A5,5 0 1 0 5,0A5,5 0 1 0 -5,0ZM-2.4,0A2.4,2.4 0 1 1 2.4,0A2.4,2.4 0 1 1 -2.4,0Z'
];
export const plus = 'M-4,0H4M0,-4V4', cross = 'M-4,-4L4,4M-4,4L4,-4';
export const endings =
    ['M-3,-4L4,0L-3,4Z', 'M-3.5,-3.5L3.5,3.5M-3.5,3.5L3.5,-3.5', 'M-3.5,0A3.5,3.5 0 1 0 3.5,0A3.5,3.5 0 1 0 -3.5,0'];

const paths = {};
export function stamp(g, path, x, y, fill, stroke) {
    const drawn = paths[path] ??= new Path2D(path);
    g.save();
    g.translate(x, y);
    g.fillStyle = fill;
    g.strokeStyle = stroke;
    g.lineWidth = fill ? 1 : 1.8;
    if (fill) g.fill(drawn);
    if (stroke) g.stroke(drawn);
    g.restore();
}
