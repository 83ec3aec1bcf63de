namespace Morvenhal.RF.KST.QORNWrapper.Tests;

public sealed class SpectrumTests
{
    private static IQArray Tone(int n, double bin, double amplitude)
    {
        var samples = new IQArray(n);
        for (int i = 0; i < n; ++i)
        {
            double phase = 2 * Math.PI * bin * i / n;
            samples[i] = new IQ { I = (float)(amplitude * Math.Cos(phase)), Q = (float)(amplitude * Math.Sin(phase)) };
        }
        return samples;
    }

    private static FloatArray Cosine(int n, double bin, double amplitude)
    {
        var samples = new FloatArray(n);
        for (int i = 0; i < n; ++i) samples[i] = (float)(amplitude * Math.Cos(2 * Math.PI * bin * i / n));
        return samples;
    }

    [Fact]
    public void Apply_ToATone_ReadsItsLevelAtItsBin()
    {
        using var spectrum = new Spectrum(256);
        var levels = new FloatArray();
        spectrum.Apply(levels, Tone(256, 20, 0.1));
        Assert.Equal(256, levels.Count);
        Assert.Equal(-20, levels[128 + 20], 1e-3);
        Assert.Equal(20 + 128, Array.IndexOf(levels.InnerArray, Measure.Elements(levels).Max()));
        Assert.InRange(levels[128 - 20], -800, -100);
    }

    [Fact]
    public void Apply_ToACosine_ReadsHalfItsAmplitudeAtEitherSide()
    {
        using var spectrum = new Spectrum(64, QornWindowType.WindowRectangle);
        spectrum.SetUnit(PowerUnit.PowerUnitVolt);
        var volts = new FloatArray(100);
        spectrum.Apply(volts, Cosine(64, 5, 3));
        Assert.Equal(64, volts.Count);
        for (int k = 0; k < 64; ++k) Assert.Equal(k == 32 + 5 || k == 32 - 5 ? 1.5 : 0, volts[k], 2e-6);
    }

    [Theory]
    [InlineData(16)]
    [InlineData(15)]
    public void Apply_WithoutAWindow_IsTheSumOfItsDefinition(int n)
    {
        var random = new Random(n);
        var samples = new IQArray(n);
        for (int i = 0; i < n; ++i) samples[i] = new IQ { I = random.NextSingle() - 0.5f, Q = random.NextSingle() - 0.5f };
        using var spectrum = new Spectrum(n, QornWindowType.WindowRectangle);
        spectrum.SetUnit(PowerUnit.PowerUnitVolt);
        var volts = new FloatArray();
        spectrum.Apply(volts, samples);
        for (int k = 0; k < n; ++k)
        {
            System.Numerics.Complex sum = 0;
            for (int i = 0; i < n; ++i)
            {
                sum += new System.Numerics.Complex(samples[i].I, samples[i].Q)
                    * System.Numerics.Complex.Exp(new System.Numerics.Complex(0, -2 * Math.PI * (k - n / 2) * i / n));
            }
            Assert.Equal(sum.Magnitude / n, volts[k], 1e-6);
        }
    }

    // What a tone in the middle between two bins loses: figures of F. J. Harris, On the use of windows for harmonic
    // analysis with the discrete Fourier transform, Proc. IEEE 66, 1978, table 1. Those of Gauss are
    // |sum of w[n] exp(-j pi n / N)| / sum of w[n] with w[n] = exp(-(alpha (2 n / N - 1))^2 / 2).
    [Theory]
    [InlineData(QornWindowType.WindowRectangle, 0, 3.92)]
    [InlineData(QornWindowType.WindowHann, 0, 1.42)]
    [InlineData(QornWindowType.WindowHamming, 0, 1.78)]
    [InlineData(QornWindowType.WindowGauss, 2.5, 1.58)]
    [InlineData(QornWindowType.WindowGauss, 3, 1.163)]
    [InlineData(QornWindowType.WindowKaiser, 2 * Math.PI, 1.46)]
    [InlineData(QornWindowType.WindowKaiser, 3 * Math.PI, 1.02)]
    [InlineData(QornWindowType.WindowFlatTop, 0, 0)]
    public void Window_LosesWhatItShouldBetweenBins(QornWindowType window, double parameter, double loss)
    {
        const int n = 1024;
        using var spectrum = new Spectrum(n, window, (float)parameter);
        var levels = new FloatArray();
        spectrum.Apply(levels, Tone(n, 100.5, 1));
        Assert.Equal(-loss, levels[n / 2 + 100], 0.05);
        spectrum.Apply(levels, Tone(n, 100, 1));
        Assert.Equal(0, levels[n / 2 + 100], 1e-3);
    }

    [Fact]
    public void Constructors_DefaultToBlackmanHarrisAndAParameterOfZero()
    {
        FloatArray one = new(), two = new(), three = new();
        using var first = new Spectrum(128);
        using var second = new Spectrum(128, QornWindowType.WindowBlackmanHarris);
        using var third = new Spectrum(128, QornWindowType.WindowBlackmanHarris, 0);
        IQArray tone = Tone(128, 10.3, 1);
        first.Apply(one, tone);
        second.Apply(two, tone);
        third.Apply(three, tone);
        Assert.Equal(Measure.Elements(one), Measure.Elements(two));
        Assert.Equal(Measure.Elements(one), Measure.Elements(three));

        // Kaiser with beta 0 is the rectangle.
        using var kaiser = new Spectrum(128, QornWindowType.WindowKaiser);
        kaiser.Apply(one, Tone(128, 10.5, 1));
        Assert.Equal(-3.92, one[64 + 10], 0.05);
    }

    [Fact]
    public void SetUnit_AnyValueButZero_SelectsVolts()
    {
        using var spectrum = new Spectrum(64, QornWindowType.WindowHann);
        var levels = new FloatArray();
        foreach (int unit in new[] { 1, 2, -1 })
        {
            spectrum.SetUnit((PowerUnit)unit);
            spectrum.Apply(levels, Tone(64, 0, 0.1));
            Assert.Equal(0.1, levels[32], 1e-6);
            spectrum.SetUnit(PowerUnit.PowerUnitDBV);
            spectrum.Apply(levels, Tone(64, 0, 0.1));
            Assert.Equal(-20, levels[32], 1e-4);
        }
    }

    [Fact]
    public void Apply_InPlace_IsAllowed()
    {
        using var spectrum = new Spectrum(64);
        FloatArray samples = Cosine(64, 5, 1), levels = new();
        spectrum.Apply(levels, samples);
        spectrum.Apply(samples, samples);
        Assert.Equal(Measure.Elements(levels), Measure.Elements(samples));
    }

    [Fact]
    public void Apply_TakesTheCountAndNotTheBlock()
    {
        using var spectrum = new Spectrum(64);
        FloatArray samples = Cosine(64, 5, 1), expected = new(), levels = new();
        spectrum.Apply(expected, samples);
        samples.Count = 100;
        for (int i = 64; i < 100; ++i) samples[i] = 1e6f;
        samples.Count = 64;
        spectrum.Apply(levels, samples);
        Assert.Equal(Measure.Elements(expected), Measure.Elements(levels));
    }

    [Fact]
    public void GetSize_IsThatOfTheConstructor()
    {
        using var spectrum = new Spectrum(77);
        Assert.Equal(77, spectrum.GetSize());
        using var none = new Spectrum(0);
        Assert.Equal(0, none.GetSize());
        var levels = new FloatArray(3);
        none.Apply(levels, new IQArray());
        Assert.Equal(0, levels.Count);
    }

    [Theory]
    [InlineData(QornWindowType.WindowBlackman)]
    [InlineData(QornWindowType.WindowUserDefined)]
    [InlineData(QornWindowType.WindowNone)]
    [InlineData((QornWindowType)1000)]
    public void Apply_WithAWindowThatIsNotOffered_Fails(QornWindowType window)
    {
        using var spectrum = new Spectrum(8, window);
        var e = Assert.Throws<QORNExceptionCatcher>(() => spectrum.Apply(new FloatArray(), new IQArray(8)));
        Assert.Equal("10002 - invalid input parameter", e.Message);
        Assert.Equal(10002, e.ErrorCode);
        Assert.Equal("dsp\\Spectrum", e.FileName);
        Assert.True(e.LineNumber > 0);
    }

    [Fact]
    public void Constructor_WithoutMemory_ThrowsTheRuntimesException()
    {
        Assert.Throws<OutOfMemoryException>(() => new Spectrum(-1));
        Assert.Throws<OutOfMemoryException>(() => new Spectrum(int.MaxValue));
    }

    [Fact]
    public void Apply_ToNull_Fails()
    {
        using var spectrum = new Spectrum(8);
        var e = Assert.Throws<QORNExceptionCatcher>(() => spectrum.Apply(new FloatArray(), (IQArray)null!));
        Assert.IsType<ArgumentNullException>(e.InnerException);
        e = Assert.Throws<QORNExceptionCatcher>(() => spectrum.Apply(new FloatArray(), (FloatArray)null!));
        Assert.IsType<ArgumentNullException>(e.InnerException);
        e = Assert.Throws<QORNExceptionCatcher>(() => spectrum.Apply(null!, new IQArray(8)));
        Assert.IsType<ArgumentNullException>(e.InnerException);
    }

    [Fact]
    public void Apply_OnceMore_AllocatesNothing()
    {
        using var spectrum = new Spectrum(512);
        var levels = new FloatArray();
        IQArray tone = Tone(512, 3, 1);
        FloatArray cosine = Cosine(512, 3, 1);
        Assert.Equal(0, Measure.AllocatedBytes(() => spectrum.Apply(levels, tone)));
        Assert.Equal(0, Measure.AllocatedBytes(() => spectrum.Apply(levels, cosine)));
        Assert.Equal(0, Measure.AllocatedBytes(() => spectrum.SetUnit(PowerUnit.PowerUnitVolt)));
    }

    [Fact]
    public void Disposed_RefusesEveryCall()
    {
        var spectrum = new Spectrum(8);
        spectrum.Dispose();
        spectrum.Dispose();
        Assert.Throws<ObjectDisposedException>(() => spectrum.Apply(new FloatArray(), new IQArray(8)));
        Assert.Throws<ObjectDisposedException>(() => spectrum.Apply(new FloatArray(), new FloatArray(8)));
        Assert.Throws<ObjectDisposedException>(() => spectrum.SetUnit(PowerUnit.PowerUnitDBV));
        Assert.Throws<ObjectDisposedException>(() => spectrum.GetSize());
    }
}
