namespace Morvenhal.RF.KST.QORNWrapper.Tests;

public sealed class ConcurrencyTests
{
    private static readonly DoubleArray s_x = new([0, 1, 2, 3]);

    // Separate objects share nothing: what they give side by side is, to the bit, what one gives alone.
    [Fact]
    public void SeparateObjects_SideBySide_GiveWhatTheyGiveAlone()
    {
        float[][] alone = Enumerable.Range(0, 8).Select(Run).ToArray();
        var beside = new float[alone.Length][];
        var threads = Enumerable.Range(0, alone.Length).Select(i => new Thread(() => beside[i] = Run(i))).ToArray();
        foreach (Thread thread in threads) thread.Start();
        foreach (Thread thread in threads) thread.Join();
        Assert.Equal(alone, beside);
    }

    private static float[] Run(int seed)
    {
        var random = new Random(seed);
        int size = 500 + 31 * seed;
        using var spectrum = new Spectrum(size, QornWindowType.WindowHann);
        using var spline = new Spline();
        using var hermite = new CubicHermiteInterpolation();
        var samples = new IQArray(size);
        var levels = new FloatArray();
        var results = new List<float>();
        DoubleArray y = new(4), at = new([0.25, 1.75]), values = new();
        for (int block = 0; block < 50; ++block)
        {
            for (int i = 0; i < size; ++i) samples[i] = new IQ { I = random.NextSingle(), Q = random.NextSingle() };
            spectrum.Apply(levels, samples);
            results.Add(levels[random.Next(size)]);
            for (int i = 0; i < 4; ++i) y[i] = random.NextDouble();
            foreach (Interpolator interpolator in new Interpolator[] { spline, hermite })
            {
                interpolator.Interpolate(s_x, y, at, values);
                results.Add((float)values[1]);
            }
            results.Add(UnitConversion.Volt2dBm(random.NextSingle()));
            try
            {
                hermite.Interpolate(y, y, at, new DoubleArray([1]), block % 2 == 0);
            }
            catch (QORNExceptionCatcher e)
            {
                results.Add(e.ErrorCode);
            }
        }
        return results.ToArray();
    }
}
