// SPDX-License-Identifier: MIT
//
// The thread in which the tracker of the page runs: the file comes once, then parameters, one run after the other.
import {startEngine} from './engine.mjs';

let engine = null;
let given = null;

async function inflate(bytes) {
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
    return new Response(stream).arrayBuffer();
}

onmessage = async ({data}) => {
    if (data.file) given = data;
    if (!data.parameters) return;
    try {
        engine ??= await startEngine(await inflate(given.module), given.file);
        const bytes = engine(data.parameters, data.what);
        postMessage({number: data.number, bytes}, [bytes.buffer]);
    } catch (error) {
        engine = null;  // its memory cannot be trusted any more
        postMessage({number: data.number, error: String(error)});
    }
};
