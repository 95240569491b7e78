/* fit.c: fits five control points and prints the bits of a coefficient. */
#include <nuv1math_c.h>
#include <stdio.h>

int main(void)
{
    const double x[] = {0, 100, 100, 0, 40}, y[] = {0, 0, 80, 80, 30};
    const double xa[] = {12.1, 110.7, 112.4, 9.8, 51.3}, ya[] = {7.9, 11.2, 92.6, 86.1, 38.5};
    nuv_enumMethodUsed used;
    union { nuv_TOmographicParams coefs; unsigned int half[2]; } result;
    if (nuv_CalcCoefs(5, x, y, xa, ya, 1, NUV_METHOD_OMOGRAPHIC, &used, &result.coefs))
        printf("%08x%08x\n", result.half[1], result.half[0]);
    return 0;
}
