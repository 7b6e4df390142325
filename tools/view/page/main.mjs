// SPDX-License-Identifier: MIT
//
// The start: unpack the data, tie the parts together, draw.
import {bindAddress} from './address.mjs';
import {bindHeader} from './header.mjs';
import {bindKeys} from './keys.mjs';
import {bindLanes} from './lanes.mjs';
import {bindObjects} from './objects.mjs';
import {bindPanel} from './panel.mjs';
import {bindPlayer} from './player.mjs';
import {bindPointer} from './pointer.mjs';
import {byId, element} from './dom.mjs';
import {change, redraw, state, watch} from './state.mjs';
import {createRun, readOther} from './run.mjs';
import {darkScheme, readTheme} from './draw.mjs';
import {drawScene, revealSelected} from './scene.mjs';
import {fit, measure, resized} from './camera.mjs';
import {fromBase64, openPackage} from './package.mjs';
import {bindCompare} from './compareview.mjs';
import {bindTables} from './table.mjs';
import {bindPictures} from './pictures.mjs';
import {savePicture} from './save.mjs';
import {bindTabs} from './tabs.mjs';
import {bindTune} from './tune.mjs';
import {settingOf, showRun, startTuner} from './tuner.mjs';
import {moveAxis} from './axis.mjs';

const layers = [
    ['detections', 'Detections', true],
    ['tracks', 'Tracks', true, 'solid: confirmed, dashed: tentative, dotted: missed'], ['gates', 'Gates', true],
    ['labels', 'Identifiers', true], ['scores', 'Scores', false], ['truth', 'Truth', true],
    ['before', 'A', true, 'the tracks that these are compared with'], ['pictures', 'Pictures', true]
];

function bindLayers(hasPictures) {
    for (const [name, text, checked, title = ''] of layers) {
        const box = element('input', {
            type: 'checkbox',
            id: 'show-' + name,
            checked,
            oninput: () => change({show: {...state.show, [name]: box.checked}})
        });
        byId('trail-label')
            .before(element(
                'label', {
                    title,
                    hidden: (name === 'truth' && !state.run.truth) || name === 'before' ||
                        (name === 'pictures' && !hasPictures)
                },
                box, text));
        state.show[name] = checked && (name !== 'truth' || state.run.truth !== null);
    }
    byId('trail').oninput = () => change({trail: byId('trail').valueAsNumber});
    watch(['show'], () => {
        for (const [name] of layers) byId('show-' + name).checked = state.show[name];
    });
}

function start() {
    const columns = openPackage(fromBase64(byId('data').textContent)), run = createRun(columns);
    readTheme();
    state.run = run;
    showRun(run, settingOf(run));
    measure(run);
    moveAxis(0.5, run.frames);
    bindLayers(columns.has('pictureNames'));
    bindTabs();  // first: others measure what it shows
    bindHeader();
    bindPlayer();
    bindPointer();
    bindObjects();
    bindLanes();
    bindPanel();
    startTuner(run);
    bindTune();
    bindCompare(readOther(columns));
    bindTables();
    bindPictures(columns);
    byId('picture').onclick = savePicture;
    bindKeys();
    watch(['run', 'frame', 'selection', 'hover', 'show', 'trail', 'camera', 'size', 'before'], () => drawScene());
    watch(['selection'], revealSelected);
    new ResizeObserver(resized).observe(byId('field'));
    new ResizeObserver(() => redraw('size')).observe(byId('life'));
    darkScheme.addEventListener('change', () => {
        readTheme();
        redraw('size');
    });
    byId('lane-objects').hidden = !run.truth;
    bindAddress();
    fit();
    redraw(...Object.keys(state));
    document.body.classList.remove('loading');
}

// After the first picture, which says that it is loading.
requestAnimationFrame(() => setTimeout(start));
