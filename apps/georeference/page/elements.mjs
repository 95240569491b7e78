// elements.mjs: the elements of the page by their names.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

export function element(id) {
    return document.getElementById(id);
}
