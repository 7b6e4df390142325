// SPDX-License-Identifier: MIT
//
// The objects of the ground truth.
import {element, terms} from './dom.mjs';
import {frameLink, heading, trackLink} from './links.mjs';
import {plural} from './numbers.mjs';
import {state} from './state.mjs';

export function objectPanel(object) {
    const {truth, changes} = state.run, {boxes} = truth.objects.find(it => it.id === object),
                  own = changes.filter(change => change.object === object);
    const first = truth.frame[boxes[0]], last = truth.frame[boxes[boxes.length - 1]];
    return [
        heading(element('span', {className: 'swatch truth'}), 'True object ' + object, 'ground truth'),
        terms(
            ['In view', frameLink(first), ' to ', frameLink(last), `, ${plural(boxes.length, 'frame')}`],
            ...own.map(({frame,
                         before,
                         after}) => ['Changes', frameLink(frame), ': ', trackLink(before), ' to ', trackLink(after)])),
    ];
}
