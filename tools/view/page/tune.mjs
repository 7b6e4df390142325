// SPDX-License-Identifier: MIT
//
// The panel that tunes: a slider and a field for each parameter, what becomes of the figures, and the command that
// tracks with this setting.
import {byId, element, refresh, span} from './dom.mjs';
import {cached, surface, theme} from './draw.mjs';
import {canTune, reset, set, undo, writtenRun} from './tuner.mjs';
import {clamp, exact, fixed, short, whole} from './numbers.mjs';
import {commandLine, configFile} from './command.mjs';
import {save} from './save.mjs';
import {figureTable, figureText, titleOf} from './figures.mjs';
import {pin} from './compareview.mjs';
import {state, watch} from './state.mjs';
import {drawSweep, sweep, sweepOf} from './sweep.mjs';

// --- what can be tuned ---

const single = value => Number(exact(Math.fround(value)));
const medianSize = () => state.run.medianSize;
const inBoxes = pixels => `${fixed(pixels / medianSize(), 2)} box sizes`;

// `low` and `high` are the ends of the slider; whoever wants more types it. A slider of root or log is finer at its
// low end.
export const tunables = () => {
    const {parameters, input, file} = state.run, gate = parameters.gate, size = medianSize(), {scoreRange} = file;
    return [
        {
            name: 'scale',
            label: 'Gate',
            unit: 'px',
            low: size / 20,
            high: size * 5,
            log: true,
            get: () => state.run.gate,
            set: pixels => ({scale: gate / Number(pixels.toPrecision(4))}),
            note: () => inBoxes(state.run.gate),
            automatic: {
                is: () => !(state.setting.scale > 0),
                patch: {scale: 0},
                fix: () => ({scale: state.run.parameters.scale})
            },
            text: short
        },
        {
            name: 'iou',
            label: 'Overlap above',
            unit: '',
            low: 0,
            high: 1,
            step: 0.01,
            get: () => single(state.setting.iou),
            set: value => ({iou: clamp(value, 0, 1)}),
            text: exact
        },
        {
            name: 'euc',
            label: 'Full overlap within',
            unit: 'px',
            low: 0,
            high: state.run.gate / gate,
            step: 0,
            get: () => state.run.near,
            set: pixels => ({euc: clamp(single((pixels * parameters.scale) ** 2), 0, 1)}),
            note: () => inBoxes(state.run.near),
            text: short
        },
        {
            name: 'stable',
            label: 'Confirmed at',
            unit: 'matches',
            low: 1,
            high: 15,
            step: 1,
            get: () => state.setting.stable,
            set: value => ({stable: clamp(Math.round(value), 1, 1e7)}),
            text: String
        },
        {
            name: 'removal',
            label: 'Survives',
            unit: 'misses',
            low: 1,
            high: 90,
            step: 1,
            root: true,
            get: () => state.setting.removal,
            set: value => ({removal: clamp(Math.round(value), 1, 1e7)}),
            text: String
        },
        ...(scoreRange[0] < scoreRange[1] ? [{
            name: 'minConf',
            label: 'Least confidence',
            unit: '',
            low: scoreRange[0],
            high: scoreRange[1],
            step: 0,
            get: () => Math.max(leastConfidence(), scoreRange[0]),
            set: value =>
                ({minConf: value <= scoreRange[0] ? -AUTOMATIC : Math.fround(single(Number(value.toPrecision(3))))}),
            note: () => `${whole(state.run.weak)} of ${whole(input.count)} dropped`,
            text: value => exact(value),
            automatic: {
                is: () => state.setting.minConf === AUTOMATIC,
                patch: {minConf: AUTOMATIC},
                fix: () => ({minConf: Math.fround(leastConfidence())})
            },
            histogram: true
        }] :
                                            []),
    ];
};

const AUTOMATIC = 3.4028234663852886e38;  // the least confidence that leaves the choice to the kit

// What the kit chose, if it did.
function leastConfidence() {
    const {minConf} = state.setting;
    return minConf < AUTOMATIC ? minConf : state.run.parameters.minConfNow;
}

const TICKS = 1000;
const toTicks = ({low, high, log, root}, value) => TICKS *
    (log      ? Math.log(value / low) / Math.log(high / low) :
         root ? Math.sqrt((value - low) / (high - low)) :
                (value - low) / (high - low));
export const fromTicks = ({low, high, log, root, step}, ticks) => {
    const share = ticks / TICKS,
          value = log ? low * (high / low) ** share : low + (high - low) * (root ? share ** 2 : share);
    return step ? Math.round(value / step) * step : value;
};

// --- controls ---

// Ticked, the kit chooses; not, what it chose last stays.
function automaticBox({automatic, label}, id) {
    const box = element(
        'input',
        {type: 'checkbox', id: id + '-auto', onchange: () => set(box.checked ? automatic.patch : automatic.fix())});
    box.setAttribute('aria-label', label + ' automatic');
    return element('label', {htmlFor: id + '-auto'}, box, 'auto');
}

const STEADY = [['-1', 'where the camera moves'], ['1', 'always'], ['0', 'never']];
const steadyControl = () => element(
    'label', {className: 'check'}, 'Steady the camera ',
    element(
        'select', {id: 'tune-steady', onchange: event => set({steady: Number(event.target.value)})},
        ...STEADY.map(([value, text]) => element('option', {value}, text))));

function control(it) {
    const id = 'tune-' + it.name, slider = element('input', {
                                      type: 'range',
                                      id,
                                      min: 0,
                                      max: TICKS,
                                      step: 1,
                                      oninput: () => set(it.set(fromTicks(it, slider.valueAsNumber)))
                                  });
    const field = element('input', {
        type: 'number',
        id: id + '-number',
        step: 'any',
        min: 0,
        onchange: () => field.value !== '' && set(it.set(field.valueAsNumber))
    });
    slider.setAttribute('aria-label', it.label);
    field.setAttribute('aria-label', `${it.label}, ${it.unit || 'number'}`);
    const button = element('button', {type: 'button', id: id + '-sweep', onclick: () => sweep(it)}, 'sweep');
    button.setAttribute('aria-label', 'Sweep ' + it.label);
    return element(
        'div', {className: 'tunable'}, element('label', {htmlFor: id}, it.label),
        element('div', {className: 'note'}, element('span', {id: id + '-note'}), it.automatic && automaticBox(it, id)),
        it.histogram && element('canvas', {id: 'confidences', className: 'wide'}), slider, field, span(it.unit), button,
        element('div', {className: 'wide', id: id + '-chart'}));
}

function drawControls() {
    for (const it of tunables()) {
        const id = 'tune-' + it.name, value = it.get(), slider = byId(id), field = byId(id + '-number');
        if (document.activeElement !== slider || state.tuning !== BUSY)
            slider.value = clamp(toTicks(it, value), 0, TICKS);
        slider.setAttribute('aria-valuetext', `${it.text(value)} ${it.unit}`);
        if (document.activeElement !== field) field.value = it.text(value).replace(/,/g, '');
        byId(id + '-note').textContent = it.note?.() ?? '';
        if (it.automatic) byId(id + '-auto').checked = it.automatic.is();
    }
    byId('tune-steady').value = String(state.setting.steady);
    drawConfidences();
}

const HISTOGRAM_HEIGHT = 34, BINS = 60;
function drawConfidences() {
    const canvas = byId('confidences');
    if (!canvas || !canvas.parentNode.clientWidth) return;
    const w = canvas.parentNode.clientWidth, {scoreRange: [low, high]} = state.run.file, {score} = state.run.input,
          least = leastConfidence();
    surface(canvas, w, HISTOGRAM_HEIGHT)
        .drawImage(cached('confidences', least, w, HISTOGRAM_HEIGHT, g => {
                       const bins = new Int32Array(BINS);
                       for (const value of score)
                           bins[Math.min(Math.floor((value - low) / (high - low) * BINS), BINS - 1)]++;
                       const most = bins.reduce((a, b) => Math.max(a, b), 1), wide = w / BINS;
                       bins.forEach((count, n) => {
                           const tall = count ? Math.max(Math.sqrt(count / most) * (HISTOGRAM_HEIGHT - 2), 1) : 0;
                           g.fillStyle = low + (n + 1) / BINS * (high - low) <= least ? theme.line : theme.accent;
                           g.fillRect(n * wide, HISTOGRAM_HEIGHT - tall, wide - 1, tall);
                       });
                   }), 0, 0, w, HISTOGRAM_HEIGHT);
}

// What matters most, for the upper edge of the panel.
function summaryText() {
    const before = writtenRun().figures, now = state.run.figures, name = now.has('HOTA') ? 'HOTA' : 'tracks';
    const change = now.get(name) - before.get(name), title = titleOf(name);
    const from = Math.abs(change) < 5e-6 ? '' : figureText(name, before.get(name)) + ' \u2192 ';
    return state.tuning || `${title} ${from}${figureText(name, now.get(name))}`;
}

function drawFigures() {
    if (state.tab !== 'tune') return;
    refresh(byId('figures'), figureTable(writtenRun().figures, state.run.figures, 'as written'));
    byId('tune-summary').textContent = summaryText();
    byId('setting').textContent = commandLine();
    byId('tune-undo').disabled = !state.undo;
    drawControls();
    if (sweepOf()) drawSweep();
}

function withoutModule() {
    byId('tune').replaceChildren(element(
        'section', {}, element('h2', {}, 'Tune'),
        element('p', {}, 'This page holds no tracker: the command was built without clang and lld for WebAssembly.')));
}

export function bindTune() {
    if (!canTune()) return withoutModule();
    const button = (id, text, act) => element('button', {type: 'button', id, onclick: act}, text);
    const copy = () => navigator.clipboard?.writeText(commandLine()).then(() => {
        byId('tune-copy').textContent = 'Copied';
    });
    byId('tune').replaceChildren(
        element('p', {id: 'tune-summary', role: 'status'}),
        element(
            'section', {}, element('h2', {}, 'Parameters'), ...tunables().map(control), steadyControl(),
            state.run.hasClasses &&
                element(
                    'label', {className: 'check'}, element('input', {
                        type: 'checkbox',
                        checked: state.setting.ignoreClass > 0,
                        onchange: event => set({ignoreClass: Number(event.target.checked)})
                    }),
                    ' match across classes'),
            element(
                'div', {className: 'buttons'}, button('tune-undo', 'Undo', undo), button('tune-reset', 'Reset', reset),
                button('pin', 'Keep as A', pin))),
        element('section', {}, element('h2', {}, 'Figures'), element('div', {id: 'figures'})),
        element(
            'section', {}, element('h2', {}, 'Command'), element('code', {id: 'setting'}),
            element(
                'div', {className: 'buttons'}, button('tune-copy', 'Copy', copy),
                button(
                    'tune-config', 'Save as --config file', () => save('zeltrack.conf', configFile(), 'text/plain')))));
    watch(['run', 'setting', 'tuning', 'undo', 'tab', 'size'], drawFigures);
    watch(['run', 'setting'], () => {
        byId('tune-copy').textContent = 'Copy';
    });
}
