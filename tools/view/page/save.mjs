// SPDX-License-Identifier: MIT
//
// Files that the page offers for saving.
import {drawScene} from './scene.mjs';
import {element} from './dom.mjs';
import {state} from './state.mjs';

export function saveBlob(name, blob) {
    const url = URL.createObjectURL(blob), anchor = element('a', {href: url, download: name});
    anchor.click();
    setTimeout(() => URL.revokeObjectURL(url), 1000);
}
export const save = (name, text, type) => saveBlob(name, new Blob([text], {type}));

// The scene as it is shown now, without the picture beneath.
export function savePicture() {
    const canvas = element('canvas', {});
    drawScene(canvas, true);
    canvas.toBlob(blob => saveBlob(`frame-${state.frame}.png`, blob), 'image/png');
}
