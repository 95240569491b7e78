// fit.mjs: fits five control points and prints the bits of a coefficient.
import { load } from 'nuv1math';

const library = await load();
const source = [[0, 0], [100, 0], [100, 80], [0, 80], [40, 30]];
const target = [[12.1, 7.9], [110.7, 11.2], [112.4, 92.6], [9.8, 86.1], [51.3, 38.5]];
const fit = library.fit(source, target, { kind: 'omographic', localOrigin: false });
const bits = new BigUint64Array(Float64Array.of(fit.matrix[0][0]).buffer)[0];
console.log(bits.toString(16));
