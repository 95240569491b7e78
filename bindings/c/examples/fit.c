/* fit.c: fits five control points and prints the bits of a coefficient. */
#include <nuv1math_c.h>
#include <stdio.h>
#include <string.h>

int main(void)
{
    const double x[] = {0, 100, 100, 0, 40}, y[] = {0, 0, 80, 80, 30};
    const double xa[] = {12.1, 110.7, 112.4, 9.8, 51.3}, ya[] = {7.9, 11.2, 92.6, 86.1, 38.5};
    nuv_TOmographicParams coefs;
    nuv_enumMethodUsed used;
    unsigned int bits[2]; /* the low half first, as on every processor that the library is built for */
    if (!nuv_CalcCoefs(5, x, y, xa, ya, 1, NUV_METHOD_OMOGRAPHIC, &used, &coefs))
    {
        return 1;
    }
    memcpy(bits, &coefs.dA, sizeof bits);
    printf("%08x%08x\n", bits[1], bits[0]);
    return 0;
}
