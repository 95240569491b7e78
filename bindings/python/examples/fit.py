"""fit.py: fits five control points and prints the bits of a coefficient."""
import struct

from nuv1math import CalcCoefs

x, y = [0, 100, 100, 0, 40], [0, 0, 80, 80, 30]
xa, ya = [12.1, 110.7, 112.4, 9.8, 51.3], [7.9, 11.2, 92.6, 86.1, 38.5]
used, coefs = CalcCoefs(x, y, xa, ya)
print(struct.pack(">d", coefs.a).hex())
