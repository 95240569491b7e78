// difference.mjs: makes the module without vectors from the one with them. make_difference.py describes the format.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

// Bytes that are read one after the other.
class Reader {
    constructor(bytes) {
        this.bytes = bytes;
        this.place = 0;
    }

    take(count) {
        this.place += count;
        return this.bytes.subarray(this.place - count, this.place);
    }

    number() {
        let value = 0;
        let [byte] = this.take(1);
        for (let scale = 1; ; scale *= 128) {
            value += (byte & 127) * scale;
            if (byte < 128) {
                return value;
            }
            [byte] = this.take(1);
        }
    }

    get ended() {
        return this.place >= this.bytes.length;
    }
}

// The target. base and difference: bytes.
export function applyDifference(base, difference) {
    const file = new Reader(difference);
    const target = new Uint8Array(file.number());
    const [stepsSize, insertedSize] = [file.number(), file.number()];
    const steps = new Reader(file.take(stepsSize));
    const inserted = new Reader(file.take(insertedSize));
    let place = 0;
    let done = 0;
    while (!steps.ended) {
        const [insert, copy, move] = [steps.number(), steps.number(), steps.number()];
        target.set(inserted.take(insert), done);
        place += move % 2 === 0 ? move / 2 : -(move + 1) / 2;
        file.take(copy).forEach((added, i) => { target[done + insert + i] = base[place + i] + added; });
        place += copy;
        done += insert + copy;
    }
    return target;
}
