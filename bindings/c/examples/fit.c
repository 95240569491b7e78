/* fit.c: fits five control points and prints the bits of a coefficient. */
#include <nuv1math_c.h>
#include <stdio.h>

int main(void)
{
    const double x[] = {0, 100, 100, 0, 40}, y[] = {0, 0, 80, 80, 30};
    const double xa[] = {12.1, 110.7, 112.4, 9.8, 51.3}, ya[] = {7.9, 11.2, 92.6, 86.1, 38.5};
    nuv_TOmographicParams coefs = {0};
    const unsigned char* raw = (const unsigned char*)&coefs.dA;
    int used, found = nuv_CalcCoefs(5, x, y, xa, ya, 1, NUV_METHOD_OMOGRAPHIC, &used, &coefs);
    printf("%02x%02x%02x%02x%02x%02x%02x%02x\n", raw[7], raw[6], raw[5], raw[4], raw[3], raw[2], raw[1], raw[0]);
    return !found;
}
