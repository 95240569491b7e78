// Fit.cs: fits five control points and prints the bits of a coefficient.
using System.Runtime.InteropServices;

static class Fit
{
    [DllImport("nuv1math_c", CallingConvention = CallingConvention.Cdecl)]
    static extern int nuv_CalcCoefs(int count, double[] x, double[] y, double[] xa, double[] ya, int sameOrientation,
                                    int kind, out int used, [Out] double[] coefs);

    static void Main()
    {
        double[] x = { 0, 100, 100, 0, 40 }, y = { 0, 0, 80, 80, 30 };
        double[] xa = { 12.1, 110.7, 112.4, 9.8, 51.3 }, ya = { 7.9, 11.2, 92.6, 86.1, 38.5 }, coefs = new double[8];
        if (nuv_CalcCoefs(5, x, y, xa, ya, 1, 2, out int used, coefs) != 0)
            System.Console.WriteLine(System.BitConverter.DoubleToInt64Bits(coefs[0]).ToString("x16"));
    }
}
