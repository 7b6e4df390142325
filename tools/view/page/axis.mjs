// SPDX-License-Identifier: MIT
//
// The time axis of the lanes: which frames lie between the left and the right edge.
import {clamp} from './numbers.mjs';
import {state} from './state.mjs';

export const GUTTER = 78, MARGIN = 28;  // left and right of all that has time from left to right
export const LINE = 14;                 // height of a lane

export const axis = {
    from: 0.5,
    to: 1.5
};

let changed = () => {};
export const onAxis = act => {
    changed = act;
};

export const timeX = (frame, w) => GUTTER + (frame - axis.from) / (axis.to - axis.from) * (w - GUTTER - MARGIN);
export const timeAt = (x, w) => axis.from + (x - GUTTER) / (w - GUTTER - MARGIN) * (axis.to - axis.from);

export function moveAxis(from, length) {
    const all = Math.max(state.run.frames, 1);
    length = clamp(length, Math.min(10, all), all);
    axis.from = clamp(from, 0.5, all + 0.5 - length);
    axis.to = axis.from + length;
    changed();
}

export function zoomTime(factor, at = state.frame) {
    const length = (axis.to - axis.from) / factor, share = (at - axis.from) / (axis.to - axis.from);
    moveAxis(at - (share < 0 || share > 1 ? 0.5 : share) * length, length);
}
