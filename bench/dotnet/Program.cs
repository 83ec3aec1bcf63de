// Spectrum.Apply from C#, with its copies from and to managed arrays, against Spectrum::Apply from C++, on vectors that
// are kept. The two take turns within one process; the ratio is the median of the ratios of neighbouring turns.
using System.Runtime.InteropServices;
using Morvenhal.RF.KST.QORNWrapper;
using Morvenhal.RF.KST.Shared;

const double turnSeconds = 0.002;
const int turns = 301;

Console.WriteLine("| samples | points | C++, us | C#, us | ratio |");
Console.WriteLine("|---|---|---|---|---|");
foreach (int n in new[] { 1024, 16384, 262144 })
{
    var random = new Random(1);
    IQArray iq = new(n);
    FloatArray real = new(n), levels = new(n);
    for (int i = 0; i < n; ++i)
    {
        iq[i] = new IQ { I = random.NextSingle() - 0.5f, Q = random.NextSingle() - 0.5f };
        real[i] = random.NextSingle() - 0.5f;
    }
    IntPtr block = Cpp.MakeBlock(n, iq.InnerArray, real.InnerArray);
    using var spectrum = new Spectrum(n);
    Compare("IQ", n, block, () => Cpp.ApplyToIQ(block), () => spectrum.Apply(levels, iq), levels);
    Compare("real", n, block, () => Cpp.ApplyToReal(block), () => spectrum.Apply(levels, real), levels);
    Cpp.DeleteBlock(block);
}

static void Compare(string samples, int n, IntPtr block, Action cpp, Action managed, FloatArray levels)
{
    // The first calls make plans and let the runtime compile for good.
    for (int i = 0; i < 200; ++i)
    {
        cpp();
        managed();
    }
    for (int k = 0; k < n; ++k)
    {
        if (levels[k] != Cpp.GetLevel(block, k)) throw new InvalidOperationException("The two differ.");
    }
    int calls = (int)Math.Max(1, turnSeconds / Turn(cpp, 10));
    var of = new double[2][] { new double[turns], new double[turns] };
    var ratios = new double[turns];
    for (int i = 0; i < turns; ++i)
    {
        int first = i % 2;
        of[first][i] = Turn(first == 0 ? cpp : managed, calls);
        of[1 - first][i] = Turn(first == 0 ? managed : cpp, calls);
        ratios[i] = of[1][i] / of[0][i];
    }
    Console.WriteLine(FormattableString.Invariant(
        $"| {samples} | {n} | {Median(of[0]) * 1e6:F1} | {Median(of[1]) * 1e6:F1} | {Median(ratios):F3} |"));
}

// Seconds of the processor per call.
static double Turn(Action call, int calls)
{
    double start = Cpp.GetThreadSeconds();
    for (int i = 0; i < calls; ++i) call();
    return (Cpp.GetThreadSeconds() - start) / calls;
}

static double Median(double[] values)
{
    double[] sorted = (double[])values.Clone();
    Array.Sort(sorted);
    return sorted[sorted.Length / 2];
}

internal static class Cpp
{
    private const string Library = "qorn_bench_cpp";

    [DllImport(Library)]
    internal static extern IntPtr MakeBlock(int n, IQ[] iq, float[] real);

    [DllImport(Library)]
    internal static extern void DeleteBlock(IntPtr block);

    [DllImport(Library)]
    internal static extern void ApplyToIQ(IntPtr block);

    [DllImport(Library)]
    internal static extern void ApplyToReal(IntPtr block);

    [DllImport(Library)]
    internal static extern double GetThreadSeconds();

    [DllImport(Library)]
    internal static extern float GetLevel(IntPtr block, int k);
}
