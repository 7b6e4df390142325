// SPDX-License-Identifier: MIT
//
// Files that the page offers for saving.
import {element} from './dom.mjs';

export function saveBlob(name, blob) {
    const url = URL.createObjectURL(blob), anchor = element('a', {href: url, download: name});
    anchor.click();
    setTimeout(() => URL.revokeObjectURL(url), 1000);
}
export const save = (name, text, type) => saveBlob(name, new Blob([text], {type}));
