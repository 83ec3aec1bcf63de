using System.Diagnostics;
using System.Runtime.CompilerServices;

namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>Alone, since it measures the memory of the process.</summary>
[CollectionDefinition(nameof(LifetimeTests), DisableParallelization = true)]
public sealed class AloneCollection
{
}

[Collection(nameof(LifetimeTests))]
public sealed class LifetimeTests
{
    private const int Size = 65536;

    private static long Resident()
    {
        using Process process = Process.GetCurrentProcess();
        return process.WorkingSet64;
    }

    private static void Collect()
    {
        for (int i = 0; i < 2; ++i)
        {
            GC.Collect();
            GC.WaitForPendingFinalizers();
        }
    }

    [MethodImpl(MethodImplOptions.NoInlining)]
    private static WeakReference Abandon()
    {
        var spectrum = new Spectrum(Size);
        spectrum.Apply(new FloatArray(), new IQArray(Size));
        return new WeakReference(spectrum);
    }

    [MethodImpl(MethodImplOptions.NoInlining)]
    private static WeakReference[] AbandonInterpolators()
    {
        Interpolator[] all = [new Spline(), new CubicHermiteInterpolation()];
        foreach (Interpolator interpolator in all)
        {
            var x = new DoubleArray([0, 1, 2]);
            interpolator.Interpolate(x, x, x, new DoubleArray());
        }
        return Array.ConvertAll(all, i => new WeakReference(i));
    }

    [Fact]
    public void AbandonedObjects_GiveTheirNativeMemoryBack()
    {
        Abandon();
        Collect();
        long before = Resident();
        WeakReference last = Abandon();
        for (int i = 0; i < 300; ++i) last = Abandon(); // about 4 MB of native memory each
        Collect();
        Assert.False(last.IsAlive);
        Assert.InRange(Resident() - before, long.MinValue, 100L << 20);
        Assert.All(AbandonInterpolatorsAndCollect(), reference => Assert.False(reference.IsAlive));
    }

    private static WeakReference[] AbandonInterpolatorsAndCollect()
    {
        WeakReference[] references = AbandonInterpolators();
        Collect();
        return references;
    }

    // The managed part of a spectrum is small: without being told of the native one, the collector would see no reason
    // to look at all.
    [Fact]
    public void AbandonedObjects_AreCollectedUnderPressureAlone()
    {
        Collect();
        long before = Resident();
        int collections = GC.CollectionCount(0);
        for (int i = 0; i < 500; ++i) new Spectrum(Size).GetSize();
        Assert.True(GC.CollectionCount(0) > collections);
        Assert.InRange(Resident() - before, long.MinValue, 700L << 20); // of 1.3 GB
    }

    [Fact]
    public void AnObjectWhoseConstructorFailed_IsFinalisedWithoutHarm()
    {
        for (int i = 0; i < 100; ++i) Assert.Throws<OutOfMemoryException>(() => new Spectrum(-1));
        Collect();
    }

    // Each object is unreachable once its call has read the last of its fields: if the rest of the call does not keep it,
    // the finaliser takes the vectors away. Long tables and new destinations let the collector come in between.
    [Fact]
    public void Objects_CollectedInTheMidstOfCalls_DoNoHarm()
    {
        const int count = 8192, rounds = 500, at = count / 2;
        var x = new DoubleArray(Enumerable.Range(0, count).Select(i => (double)i).ToArray());
        var samples = new IQArray(64);
        samples[0] = new IQ { I = 64 };
        using var stop = new CancellationTokenSource();
        var collector = new Thread(() =>
        {
            while (!stop.IsCancellationRequested) Collect();
        });
        collector.Start();
        try
        {
            for (int i = 0; i < rounds; ++i)
            {
                DoubleArray splined = new(), kept = new();
                double one = 0, other = 0;
                var levels = new FloatArray();
                new Spline().Interpolate(x, x, x, splined);
                new CubicHermiteInterpolation().Interpolate(x, x, x, kept);
                new Spline().Interpolate(x, x, at, ref one);
                new CubicHermiteInterpolation().Interpolate(x, x, at, ref other);
                new Spectrum(64, QornWindowType.WindowRectangle).Apply(levels, samples);
                Assert.Equal([at, at, at, at], [splined[at], kept[at], one, other]);
                Assert.Equal(0, levels[5], 1e-4);
            }
        }
        finally
        {
            stop.Cancel();
            collector.Join();
        }
    }
}
