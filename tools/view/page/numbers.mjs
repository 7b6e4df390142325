// SPDX-License-Identifier: MIT
//
// Numbers as text. Two numbers that are compared are written with as many digits as tell them apart.

export const whole = value => value.toLocaleString('en-US');
export const plural = (count, one, many = one + 's') => whole(count) + ' ' + (count === 1 ? one : many);

// Without "-0.0".
export const fixed = (value, digits = 1) => value.toFixed(digits).replace(/^-(0\.?0*)$/, '$1');

export const short = value =>
    Math.abs(value) >= 1000 ? whole(Math.round(value)) : Number(value.toPrecision(3)).toString();
export const pixels = value => short(value) + ' px';
export const percent = value => fixed(100 * value, value < 0.1 ? 1 : 0) + ' %';

// The shortest text that reads back to the same single-precision number: what stands in the user's file.
export function exact(value) {
    for (let digits = 1; digits < 9; digits++) {
        const text = value.toPrecision(digits);
        if (Math.fround(Number(text)) === Math.fround(value)) return Number(text).toString();
    }
    return Number(value.toPrecision(9)).toString();
}

// Both numbers, rounded to as few digits as keep their order visible. Equal ones look equal.
export function apart(a, b, digits = 3) {
    const text = (value, n) => Number(value.toPrecision(n));
    let n = digits;
    while (n < 17 && a !== b && text(a, n) === text(b, n)) n++;
    return [text(a, n), text(b, n)].map(value => Math.abs(value) >= 1e5 ? whole(value) : value.toString());
}

// The first place in a sorted list whose value is not below the wanted one.
export function lowerBound(list, wanted, from = 0, to = list.length) {
    while (from < to) {
        const middle = (from + to) >> 1;
        if (list[middle] < wanted)
            from = middle + 1;
        else
            to = middle;
    }
    return from;
}

export const clamp = (value, low, high) => Math.max(Math.min(value, high), low);
