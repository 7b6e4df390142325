// SPDX-License-Identifier: MIT
//
// The tabs of the panel.
import {byId, element} from './dom.mjs';
import {change, state, watch} from './state.mjs';

const tabs = () => [['inspect', 'Inspect'], ['tune', 'Tune'], ['compare', 'Compare'], ['tables', 'Tables']];

function drawTabs() {
    for (const [name] of tabs()) {
        const chosen = state.tab === name;
        byId(name).hidden = !chosen;
        byId('tab-' + name).setAttribute('aria-selected', chosen);
        byId('tab-' + name).tabIndex = chosen ? 0 : -1;
    }
}

function moveTab(event) {
    const by = {ArrowLeft: -1, ArrowRight: 1}[event.key], names = tabs().map(([name]) => name);
    if (!by) return;
    event.preventDefault();
    const next = names[(names.indexOf(state.tab) + by + names.length) % names.length];
    change({tab: next});
    byId('tab-' + next).focus();
}

export function bindTabs() {
    byId('tabs').onkeydown = moveTab;
    byId('tabs').append(...tabs().map(([name, text]) => {
        const tab = element('button', {type: 'button', id: 'tab-' + name, onclick: () => change({tab: name})}, text);
        tab.setAttribute('role', 'tab');
        tab.setAttribute('aria-controls', name);
        byId(name).setAttribute('aria-labelledby', tab.id);
        return tab;
    }));
    watch(['tab'], drawTabs);
}
