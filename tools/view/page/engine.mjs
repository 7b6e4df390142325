// SPDX-License-Identifier: MIT
//
// The tracker as a WebAssembly module: rows of the file and parameters in, the package of a run out.

// As the module's parameters stand in its memory, all of them doubles.
export const PARAMETERS =
    ['scale', 'euc', 'iou', 'stable', 'removal', 'minConf', 'maxObjects', 'ignoreClass', 'steady'];

const ROW = 8;  // words in a row: frame, identifier, left, top, width, height, score, class

// All that the module asks of its surroundings is the time, of which it makes no use here.
const imports = {
    wasi_snapshot_preview1: new Proxy({}, {get: () => () => 0})
};

function fill(memory, at, list) {
    const numbers = new Int32Array(memory.buffer), values = new Float32Array(memory.buffer);
    for (let i = 0, word = at >> 2; i < list.count; i++, word += ROW) {
        numbers[word] = list.frame[i];
        numbers[word + 1] = list.id?.[i] ?? -1;
        values[word + 2] = list.left[i];
        values[word + 3] = list.top[i];
        values[word + 4] = list.w[i];
        values[word + 5] = list.h[i];
        values[word + 6] = list.score[i];
        values[word + 7] = list.cls[i];
    }
}

// `file` has input, truth (or null) and frames, as readFile() gives them.
export async function startEngine(bytes, file) {
    const {instance} = await WebAssembly.instantiate(bytes, imports), {exports} = instance, {memory} = exports;
    exports._initialize();
    fill(memory, exports.input_rows(file.input.count, file.frames), file.input);
    if (file.truth) fill(memory, exports.truth_rows(file.truth.count), file.truth);
    if (file.others) fill(memory, exports.other_rows(file.others.count), file.others);
    return (parameters, what = 'run') => {
        const values = new Float64Array(memory.buffer, exports.parameter_values(), PARAMETERS.length);
        PARAMETERS.forEach((name, n) => {
            values[n] = parameters[name];
        });
        const size = exports[what](), at = exports.result_bytes();
        return new Uint8Array(memory.buffer, at, size).slice();
    };
}
