// sample.mjs: images for the sample: a made-up scan in pixels, and a made-up map in target coordinates.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

const [WIDTH, HEIGHT] = [6000, 4000];   // pixels of the scan
const STEP = 60;                        // pixels between points of a line

// Lines and areas in pixels of the scan.
const RIVER = [[-50, 2700], [700, 2120], [1500, 2350], [2500, 2500], [3300, 2230], [3900, 1810], [4700, 1300],
    [6050, 950]];
const ROADS = [
    [[611, 402], [2204, 1543], [3310, 2244], [3988, 3581]], [[2980, 318], [2204, 1543], [2377, 3120], [489, 3702]],
    [[5620, 455], [3890, 1812], [2204, 1543], [770, 2011]], [[5433, 2102], [3890, 1812]], [[3988, 3581], [5544, 3790]],
    [[2377, 3120], [3988, 3581]],
];
const AREAS = [
    [[300, 2900], [1100, 2800], [1300, 3500], [500, 3850]], [[4300, 2500], [5700, 2400], [5800, 3300], [4500, 3300]],
    [[3300, 300], [4800, 250], [4700, 950], [3500, 1050]],
];
const BLOCKS = [[1750, 1150], [2350, 1100], [1800, 1750], [2450, 1800], [2900, 1450], [1450, 1500], [2650, 2700],
    [3500, 2600], [4100, 1400], [700, 700], [1100, 500], [5200, 1500]];

// A line with a point in each step.
function dense(line) {
    return line.slice(1).flatMap(([x, y], index) => {
        const [x0, y0] = line[index];
        const parts = Math.ceil(Math.hypot(x - x0, y - y0) / STEP);
        return Array.from({ length: parts }, (_, i) => [x0 + (x - x0) * i / parts, y0 + (y - y0) * i / parts]);
    }).concat([line.at(-1)]);
}

function closed(corners) {
    return dense([...corners, corners[0]]);
}

function block([x, y]) {
    return closed([[x, y], [x + 330, y + 60], [x + 290, y + 260], [x - 40, y + 200]]);
}

const SCAN_STYLE = { paper: '#efe3c6', water: '#a9bfb4', road: '#f7efdc', edge: '#6b5a3e', wood: '#cfcf9f',
    house: '#b5654a', unit: 1 };
const MAP_STYLE = { paper: '#ffffff', water: '#8fc3ea', road: '#ffffff', edge: '#7d8791', wood: '#bfe0b4',
    house: '#c9ccd1', unit: 0.62 };

// Draws the town as an image. move: from pixels of the scan to the image. style: its colours, and the width of lines.
function town(width, height, move, { paper, water, road, edge, wood, house, unit }) {
    const place = ([x, y]) => `${x.toFixed(2)} ${y.toFixed(2)}`;
    const path = (line, style) => `<path d="M${move(line).map(place).join('L')}" ${style}/>`;
    const stroke = (colour, size) => `stroke="${colour}" stroke-width="${size * unit}" stroke-linejoin="round"`;
    const line = (points, colour, size) => path(dense(points), `fill="none" ${stroke(colour, size)}`);
    const size = `width="${width}" height="${height}"`;
    const parts = [
        `<svg xmlns="http://www.w3.org/2000/svg" ${size} viewBox="0 0 ${width} ${height}">`,
        `<rect ${size} fill="${paper}"/>`,
        ...AREAS.map((area) => path(closed(area), `fill="${wood}"`)),
        line(RIVER, water, 190),
        ...ROADS.map((points) => line(points, edge, 62) + line(points, road, 44)),
        ...BLOCKS.map((corner) => path(block(corner), `fill="${house}" ${stroke(edge, 8)}`)),
        '</svg>',
    ];
    return new Blob(parts, { type: 'image/svg+xml' });
}

export function sampleScan() {
    return town(WIDTH, HEIGHT, (line) => line, SCAN_STYLE);
}

// The map covers 800 x 580 m in pixels of 0.2 m. transform: from pixels of the scan to metres.
const MAP = { left: 4499930, top: 5387880, pixel: 0.2, width: 4000, height: 2900 };

export function sampleMap(transform) {
    const move = (line) => transform(line).map(([X, Y]) => [(X - MAP.left) / MAP.pixel, (MAP.top - Y) / MAP.pixel]);
    return town(MAP.width, MAP.height, move, MAP_STYLE);
}

// The six numbers of the world file of the map.
export const SAMPLE_PLACE = [MAP.pixel, 0, 0, -MAP.pixel, MAP.left + MAP.pixel / 2, MAP.top - MAP.pixel / 2];
