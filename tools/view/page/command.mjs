// SPDX-License-Identifier: MIT
//
// The present setting as a command and as a file of options.
import {exact} from './numbers.mjs';
import {state} from './state.mjs';

const CHOSEN = 3.4e38;  // a least confidence above it is chosen by the kit

// Each option and its value, exactly: who runs the command gets the tracks of the page.
function options() {
    const {scale, euc, iou, stable, removal, minConf, maxObjects, ignoreClass, steady} = state.setting,
                                                                               {file} = state.run;
    const {classColumn, classBase, frameBase} = file, float = value => exact(Math.fround(value));
    return [
        scale > 0 && ['scale', String(scale)],
        ['euc', float(euc)],
        ['iou', float(iou)],
        ['stable', stable],
        ['removal', removal],
        minConf < CHOSEN && ['min-conf', float(minConf)],
        maxObjects > 0 && ['max-objects', maxObjects],
        classColumn > 0 && ['class-column', classColumn],
        classColumn > 0 && classBase !== 1 && ['class-base', classBase],
        frameBase !== 1 && ['frame-base', frameBase],
        ignoreClass > 0 && ['ignore-class', ''],
        steady >= 0 && ['steady', steady ? 'on' : 'off'],
    ].filter(Boolean);
}

const quoted = word => /^[\w%+,\-./:=@]+$/.test(word) ? word : `'${word.replace(/'/g, '\'\\\'\'')}'`;

export const commandLine =
    () => ['zeltrack', 'track', ...options().map(([name, value]) => `--${name}` + (value === '' ? '' : `=${value}`)),
           quoted(state.run.file.name)]
              .join(' ');
export const configFile = () =>
    options().map(([name, value]) => `${name} = ${value === '' ? 'true' : value}\n`).join('');
