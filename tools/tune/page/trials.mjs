// SPDX-License-Identifier: MIT
//
// Trials as charts need them. Knows no document.

// The outer line of the dots over a parameter: the best objective in each of so many parts of the range. A part without
// a trial is null.
export function bestLine(trials, place, parts) {
    const best = new Array(parts).fill(null);
    for (const trial of trials) {
        const at = place(trial);
        if (at === null) continue;
        const part = Math.min(parts - 1, Math.max(0, Math.floor(at * parts)));
        if (best[part] === null || trial.objective > best[part]) best[part] = trial.objective;
    }
    return best;
}

// The place of a trial's value within the range of parameter n, from 0 to 1; null for a word such as auto.
export function placeOf({low, high, log}, value) {
    if (value === null) return null;
    if (!(high > low)) return 0.5;
    return log ? Math.log(value / low) / Math.log(high / low) : (value - low) / (high - low);
}

// From below most trials to above all. The worst tenth would leave the best no room.
export function rangeOf(trials, before) {
    const sorted = trials.map(trial => trial.objective).sort((a, b) => a - b);
    const high = sorted[sorted.length - 1], low = Math.min(before, sorted[Math.floor(sorted.length / 10)]);
    const margin = Math.max((high - low) * 0.06, 0.01);
    return {low: low - margin, high: high + margin};
}

export const valueText = (trial, {name, usual}) => String(trial.setting[name] ?? usual);

export function settingText(trial) {
    const words = Object.entries(trial.setting).map(([name, value]) => `--${name}=${value}`);
    return words.length ? words.join(' ') : 'the defaults';
}
