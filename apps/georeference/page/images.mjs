// images.mjs: images as the views show them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

// Width and height of the stored pixels. Programs that place images know nothing of the orientation that a camera notes
// beside them; without it the browser tells the size only of an image that is laid out.
function sizeOf(url) {
    return new Promise((resolve, reject) => {
        const image = new Image();
        image.className = 'measured';
        image.onload = () => {
            document.body.append(image);
            resolve([image.width, image.height]);
            image.remove();
        };
        image.onerror = () => reject(new Error('not decoded'));
        image.src = url;
    });
}

// {name, blob, url, width, height}. Fails if the browser cannot show it.
export async function loadImage(name, blob) {
    const url = URL.createObjectURL(blob);
    try {
        const [width, height] = await sizeOf(url);
        if (width === 0) {
            throw new Error('without size');
        }
        return { name, blob, url, width, height };
    } catch {
        URL.revokeObjectURL(url);
        throw new Error(`${name}: this browser cannot show this image (${blob.type || 'of unknown type'}). `
            + 'PNG, JPEG and WebP can be shown; points can be placed without an image, too.');
    }
}
