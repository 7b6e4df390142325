// SPDX-License-Identifier: MIT
//
// The package of columns, as the command and the tracker within the page write it.

// Whole numbers, seven bits a byte, the least first; signed ones with the sign in the lowest bit.
function reader(bytes) {
    const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    let at = 0;
    const unsigned = () => {
        let value = 0, unit = 1, byte;
        do {
            byte = bytes[at++];
            value += (byte & 127) * unit;
            unit *= 128;
        } while (byte > 127);
        return value;
    };
    const signed = () => {
        const value = unsigned();
        return value % 2 ? -(value + 1) / 2 : value / 2;
    };
    const float = () => {
        at += 4;
        return view.getFloat32(at - 4, true);
    };
    return {unsigned, signed, float, more: () => at < bytes.length};
}

export function fromBase64(text) {
    const raw = atob(text.trim()), bytes = new Uint8Array(raw.length);
    for (let i = 0; i < raw.length; i++) bytes[i] = raw.charCodeAt(i);
    return bytes;
}

// Gives access to each column by its name.
export function openPackage(bytes) {
    const parts = new Map(), view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    const decode = part => new TextDecoder().decode(part);
    for (let at = 0; at < bytes.length;) {
        const name = decode(bytes.subarray(at + 1, at += 1 + bytes[at])), size = view.getUint32(at, true);
        parts.set(name, bytes.subarray(at + 4, at += 4 + size));
    }
    const part = name => parts.get(name) ?? new Uint8Array(0);
    return {
        names: () => [...parts.keys()],
        bytes: part,
        has: name => parts.has(name),
        text: name => decode(part(name)),
        number: name => {
            const bits = part(name);
            return bits.length === 8 ? new DataView(bits.buffer, bits.byteOffset, 8).getFloat64(0, true) : 0;
        },
        reader: name => reader(part(name)),
    };
}
