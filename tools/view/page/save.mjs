// SPDX-License-Identifier: MIT
//
// Files that the page offers for saving.
import {byId, element} from './dom.mjs';
import {state} from './state.mjs';

export function saveBlob(name, blob) {
    const url = URL.createObjectURL(blob), anchor = element('a', {href: url, download: name});
    anchor.click();
    setTimeout(() => URL.revokeObjectURL(url), 1000);
}
export const save = (name, text, type) => saveBlob(name, new Blob([text], {type}));

// The scene as it is shown now.
export function savePicture() { byId('scene').toBlob(blob => saveBlob(`frame-${state.frame}.png`, blob), 'image/png'); }
