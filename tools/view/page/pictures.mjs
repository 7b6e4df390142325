// SPDX-License-Identifier: MIT
//
// The pictures beneath the scene: loaded from where they lie when they are needed, and a few ahead of the player.
import {byId, element} from './dom.mjs';
import {camera, extent, fit, toX, toY} from './camera.mjs';
import {redraw, state} from './state.mjs';
import {underlays} from './scene.mjs';

const KEPT = 40, AHEAD = 8;

let folder = '', files = [];
const loaded = new Map();  // by frame, in the order of their latest use

const address = name => [...folder.split('/'), name]
                            .map(part => part === '..' || part === '.' ? part : encodeURIComponent(part))
                            .join('/');

function firstSeen(image) {
    if (state.run.size || extent.w === image.naturalWidth) return;
    Object.assign(extent, {x: 0, y: 0, w: image.naturalWidth, h: image.naturalHeight});
    if (camera.fitted) fit();
}

function pictureOf(frame) {
    const name = files[frame - 1];
    if (!name) return null;
    const image = loaded.get(frame) ?? Object.assign(new Image(), {
        src: address(name),
        onload: () => {
            firstSeen(image);
            if (state.frame === frame) redraw('camera');
        }
    });
    loaded.delete(frame);
    loaded.set(frame, image);
    if (loaded.size > KEPT) loaded.delete(loaded.keys().next().value);
    return image;
}

function drawPicture(g, plain) {
    if (plain || !state.show.pictures) return;
    const image = pictureOf(state.frame);
    if (state.playing)
        for (let n = 1; n <= AHEAD; n++) pictureOf(state.frame + n);
    if (!image?.complete || !image.naturalWidth) return;
    g.globalAlpha = byId('dim').valueAsNumber / 100;
    g.drawImage(image, toX(0), toY(0), image.naturalWidth * camera.zoom, image.naturalHeight * camera.zoom);
    g.globalAlpha = 1;
}

export function bindPictures(columns) {
    if (!columns.has('pictureNames')) return;
    folder = columns.text('pictureFolder');
    files = columns.text('pictureNames').split('\n');
    underlays.push(drawPicture);
    byId('trail-label')
        .after(element(
            'label', {}, 'Pictures ',
            Object.assign(
                element(
                    'input', {type: 'range', id: 'dim', min: 0, max: 100, value: 70, oninput: () => redraw('camera')}),
                {ariaLabel: 'Strength of the pictures in percent'})));
}
