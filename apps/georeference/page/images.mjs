// images.mjs: images as the views show them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

function decoded(url) {
    return new Promise((resolve, reject) => {
        const image = new Image();
        image.style.imageOrientation = 'none';
        image.onload = () => resolve(image);
        image.onerror = () => reject(new Error('not decoded'));
        image.src = url;
    });
}

// {name, blob, url, width, height}. Fails if the browser cannot show it.
export async function loadImage(name, blob) {
    const url = URL.createObjectURL(blob);
    try {
        const image = await decoded(url);
        if (image.naturalWidth === 0) {
            throw new Error('without size');
        }
        return { name, blob, url, width: image.naturalWidth, height: image.naturalHeight };
    } catch {
        URL.revokeObjectURL(url);
        throw new Error(`${name}: this browser cannot show this image (${blob.type || 'of unknown type'}). `
            + 'PNG, JPEG and WebP can be shown; points can be placed without an image, too.');
    }
}
