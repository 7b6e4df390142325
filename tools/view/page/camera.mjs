// SPDX-License-Identifier: MIT
//
// Which part of the image the scene shows, and how large.
import {byId} from './dom.mjs';
import {redraw, state} from './state.mjs';

export const camera = {
    x: 0,
    y: 0,
    zoom: 1,
    fitted: true
};
export const extent = {
    x: 0,
    y: 0,
    w: 640,
    h: 480
};  // of the image, or of nearly all detections

export const fieldSize = () => [byId('field').clientWidth || 1, byId('field').clientHeight || 1];
export const toX = x => (x - camera.x) * camera.zoom;
export const toY = y => (y - camera.y) * camera.zoom;

const SAMPLE = 20000;
function bounds(low, size) {
    const every = Math.max(Math.floor(low.length / SAMPLE), 1), from = [], to = [];
    for (let i = 0; i < low.length; i += every) {
        from.push(Math.min(low[i], low[i] + size[i]));
        to.push(Math.max(low[i], low[i] + size[i]));
    }
    from.sort((a, b) => a - b);
    to.sort((a, b) => a - b);
    const place = share => Math.floor(share * (from.length - 1));
    return [from[place(0.005)], to[place(0.995)]];
}

// A few far-off boxes do not count: they would shrink everything else to nothing.
export function measure(run) {
    const {size, input} = run;
    if (size) return Object.assign(extent, {x: 0, y: 0, w: size[0], h: size[1]});
    if (!input.count) return extent;
    const [left, right] = bounds(input.left, input.w), [top, bottom] = bounds(input.top, input.h);
    return Object.assign(extent, {x: left, y: top, w: Math.max(right - left, 1e-9), h: Math.max(bottom - top, 1e-9)});
}

export function fit() {
    const [w, h] = fieldSize(), margin = Math.min(30, w / 10, h / 10);
    camera.zoom = Math.min((w - margin) / extent.w, (h - margin) / extent.h);
    camera.x = extent.x + extent.w / 2 - w / 2 / camera.zoom;
    camera.y = extent.y + extent.h / 2 - h / 2 / camera.zoom;
    camera.fitted = true;
    redraw('camera');
}

export function zoomBy(factor, x = fieldSize()[0] / 2, y = fieldSize()[1] / 2) {
    const wide = Math.max(extent.w, extent.h);
    const zoom = Math.min(Math.max(camera.zoom * factor, 5 / wide), 1e4 / wide * Math.max(...fieldSize()));
    camera.x += x / camera.zoom - x / zoom;
    camera.y += y / camera.zoom - y / zoom;
    camera.zoom = zoom;
    camera.fitted = false;
    redraw('camera');
}

export function moveBy(dx, dy) {
    camera.x -= dx / camera.zoom;
    camera.y -= dy / camera.zoom;
    camera.fitted = false;
    redraw('camera');
}

export function moveTo(place) {
    Object.assign(camera, place);
    redraw('camera');
}

// Moves as little as it must to bring a place into sight.
export function reveal(x, y) {
    const [w, h] = fieldSize();
    if (camera.fitted || (toX(x) > 0 && toX(x) < w && toY(y) > 0 && toY(y) < h)) return;
    camera.x = x - w / 2 / camera.zoom;
    camera.y = y - h / 2 / camera.zoom;
    redraw('camera');
}

export function resized() {
    if (camera.fitted) fit();
    redraw('size');
    state.size++;
}
