// SPDX-License-Identifier: MIT
//
// Elements made of text only: nothing of the data is ever parsed as markup.

export const byId = id => document.getElementById(id);
export const setLabel = (id, text) => byId(id).setAttribute('aria-label', text);
export const onClicks = acts => {
    for (const id in acts) byId(id).onclick = acts[id];
};

export function element(tag, properties, ...children) {
    const {style, ...others} = properties ?? {}, node = Object.assign(document.createElement(tag), others);
    if (style) node.style.cssText = style;
    node.append(...children.flat().filter(Boolean));
    return node;
}
export const span = (...children) => element('span', {}, ...children);
export const link = (text, act, properties) =>
    element('button', {className: 'link', type: 'button', onclick: act, ...properties}, text);
export const terms = (...pairs) => element(
    'dl', {},
    ...pairs.filter(pair => pair).flatMap(([name,
                                            ...value]) => [element('dt', {}, name), element('dd', {}, ...value)]));

const HANDLERS = ['onclick', 'oninput', 'onpointermove', 'onkeydown', 'onpointerleave', 'onchange'];

function takeOver(old, fresh) {
    for (const {name} of [...old.attributes])
        if (!fresh.hasAttribute(name)) old.removeAttribute(name);
    for (const {name, value} of fresh.attributes)
        if (name === 'style')
            old.style.cssText = value;  // as an attribute, the policy forbids it
        else if (old.getAttribute(name) !== value)
            old.setAttribute(name, value);
    for (const name of HANDLERS) old[name] = fresh[name];
}

// Makes the children of a node like the fresh ones, in place: what has focus keeps it, and a button that is pressed
// stays the same button. Canvases and fields keep what they show.
export function refresh(parent, ...children) {
    const fresh = children.flat().filter(Boolean).map(
        child => typeof child === 'string' ? document.createTextNode(child) : child);
    fresh.forEach((child, n) => {
        const old = parent.childNodes[n];
        if (!old) return parent.append(child);
        if (old.nodeName !== child.nodeName || old.id !== child.id) return old.replaceWith(child);
        if (child.nodeType === Node.TEXT_NODE) {
            if (old.data !== child.data) old.data = child.data;
            return;
        }
        if (child.nodeName === 'CANVAS') {
            setAria(old, child);
            return;
        }
        takeOver(old, child);
        if (!(child instanceof SVGElement) || child.childNodes.length) refresh(old, ...child.childNodes);
    });
    while (parent.childNodes.length > fresh.length) parent.lastChild.remove();
}

function setAria(old, fresh) {
    old.onclick = fresh.onclick;
    old.setAttribute('aria-label', fresh.getAttribute('aria-label') ?? '');
}

function svgElement(tag, attributes) {
    const node = document.createElementNS('http://www.w3.org/2000/svg', tag);
    for (const name in attributes) node.setAttribute(name, attributes[name]);
    return node;
}

// A sign of a few pixels for text, its path around 0, 0; filled, or stroked only.
export function svgSign(path, colour, stroked = false) {
    const svg = svgElement('svg', {class: 'sign', viewBox: '-6 -6 12 12', 'aria-hidden': 'true'});
    const paint = `var(--${colour})`;
    svg.append(svgElement(
        'path', {d: path, fill: stroked ? 'none' : paint, stroke: stroked ? paint : 'none', 'stroke-width': 2}));
    return svg;
}
