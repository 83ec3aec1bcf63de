namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>What both interpolators share.</summary>
public abstract class InterpolatorTests
{
    private protected static readonly double[] s_x = [0, 1, 3, 4];
    private protected static readonly double[] s_y = [0, 1, 4, 4.5];
    private protected static readonly double[] s_at = [0.5, 2, 3.5, 5];

    private protected static FloatArray Narrow(params double[] values) => new(Array.ConvertAll(values, v => (float)v));

    private protected static DoubleArray Wide(params double[] values) => new((double[])values.Clone());

    private protected abstract Interpolator Make();

    /// <summary>The values at <see cref="s_at"/>.</summary>
    private protected abstract double[] Expected { get; }

    private protected static void ExpectNear(double[] expected, DoubleArray found, double tolerance)
    {
        Assert.Equal(expected.Length, found.Count);
        for (int i = 0; i < expected.Length; ++i) Assert.Equal(expected[i], found[i], tolerance);
    }

    private protected static void ExpectNear(double[] expected, FloatArray found, double tolerance)
    {
        ExpectNear(expected, Wide(Array.ConvertAll(Measure.Elements(found), v => (double)v)), tolerance);
    }

    [Fact]
    public void Interpolate_ArraysOfDouble_GivesTheCurve()
    {
        using Interpolator interpolator = Make();
        var y = new DoubleArray(9);
        Assert.Equal(0, interpolator.Interpolate(Wide(s_x), Wide(s_y), Wide(s_at), y));
        ExpectNear(Expected, y, 1e-14);
    }

    [Fact]
    public void Interpolate_ArraysOfFloat_GivesTheCurve()
    {
        using Interpolator interpolator = Make();
        var y = new FloatArray(9);
        Assert.Equal(0, interpolator.Interpolate(Narrow(s_x), Narrow(s_y), Narrow(s_at), y));
        ExpectNear(Expected, y, 5e-6);
    }

    [Fact]
    public void Interpolate_OneValue_GivesTheCurve()
    {
        using Interpolator interpolator = Make();
        for (int i = 0; i < s_at.Length; ++i)
        {
            double wide = 77;
            Assert.Equal(0, interpolator.Interpolate(Wide(s_x), Wide(s_y), s_at[i], ref wide));
            Assert.Equal(Expected[i], wide, 1e-14);
            float narrow = 77;
            Assert.Equal(0, interpolator.Interpolate(Narrow(s_x), Narrow(s_y), (float)s_at[i], ref narrow));
            Assert.Equal(Expected[i], narrow, 5e-6);
        }
    }

    [Fact]
    public void Interpolate_ValuesInPlace_IsAllowed()
    {
        using Interpolator interpolator = Make();
        DoubleArray values = Wide(s_at);
        interpolator.Interpolate(Wide(s_x), Wide(s_y), values, values);
        ExpectNear(Expected, values, 1e-14);
    }

    [Fact]
    public void Interpolate_NoValues_GivesNone()
    {
        using Interpolator interpolator = Make();
        var y = new DoubleArray(3);
        Assert.Equal(0, interpolator.Interpolate(Wide(s_x), Wide(s_y), Wide(), y));
        Assert.Equal(0, y.Count);
    }

    [Fact]
    public void Interpolate_NullArrays_Fails()
    {
        using Interpolator interpolator = Make();
        DoubleArray d = Wide(s_x);
        FloatArray f = Narrow(s_x);
        double wide = 0;
        float narrow = 0;
        Action[] calls =
        [
            () => interpolator.Interpolate(null!, d, d, d),
            () => interpolator.Interpolate(d, null!, d, d),
            () => interpolator.Interpolate(d, d, null!, d),
            () => interpolator.Interpolate(d, d, d, null!),
            () => interpolator.Interpolate(null!, f, f, f),
            () => interpolator.Interpolate(f, f, f, null!),
            () => interpolator.Interpolate(null!, d, 1, ref wide),
            () => interpolator.Interpolate(f, null!, 1, ref narrow),
        ];
        foreach (Action call in calls)
        {
            Assert.IsType<ArgumentNullException>(Assert.Throws<QORNExceptionCatcher>(call).InnerException);
        }
    }

    [Fact]
    public void Interpolate_OnceMore_AllocatesNothing()
    {
        using Interpolator interpolator = Make();
        DoubleArray x = Wide(s_x), y = Wide(s_y), at = Wide(s_at), dst = new();
        FloatArray xf = Narrow(s_x), yf = Narrow(s_y), atf = Narrow(s_at), dstf = new();
        double wide = 0;
        float narrow = 0;
        Assert.Equal(0, Measure.AllocatedBytes(() => interpolator.Interpolate(x, y, at, dst)));
        Assert.Equal(0, Measure.AllocatedBytes(() => interpolator.Interpolate(xf, yf, atf, dstf)));
        Assert.Equal(0, Measure.AllocatedBytes(() => interpolator.Interpolate(x, y, 1, ref wide)));
        Assert.Equal(0, Measure.AllocatedBytes(() => interpolator.Interpolate(xf, yf, 1, ref narrow)));
    }

    [Fact]
    public void Disposed_RefusesEveryCall()
    {
        Interpolator interpolator = Make();
        interpolator.Dispose();
        interpolator.Dispose();
        DoubleArray d = Wide(s_x);
        FloatArray f = Narrow(s_x);
        double wide = 0;
        float narrow = 0;
        Assert.Throws<ObjectDisposedException>(() => interpolator.Interpolate(d, d, d, d));
        Assert.Throws<ObjectDisposedException>(() => interpolator.Interpolate(f, f, f, f));
        Assert.Throws<ObjectDisposedException>(() => interpolator.Interpolate(d, d, 1, ref wide));
        Assert.Throws<ObjectDisposedException>(() => interpolator.Interpolate(f, f, 1, ref narrow));
    }
}

public sealed class SplineTests : InterpolatorTests
{
    private protected override Interpolator Make() => new Spline();

    // scipy.interpolate.CubicSpline([0, 1, 3, 4], [0, 1, 4, 4.5], bc_type='natural')
    private protected override double[] Expected => [0.44140625, 2.59375, 4.33203125, 5];

    // The same with bc_type=((1, 2.0), (1, -1.0))
    private static readonly double[] s_clamped = [0.6446428571428571, 2.35, 4.555357142857143, 0.8857142857142861];

    private static DoubleArray Values(Spline spline)
    {
        var y = new DoubleArray();
        Assert.Equal(0, spline.Interpolate(Wide(s_x), Wide(s_y), Wide(s_at), y));
        return y;
    }

    [Fact]
    public void SetBoundaryCondition_GivesTheEndsTheirSlopes()
    {
        using var spline = new Spline();
        spline.SetBoundaryCondition1(2);
        spline.SetBoundaryCondition2(-1);
        ExpectNear(s_clamped, Values(spline), 1e-14);
        spline.SetNaturalSpline();
        ExpectNear(Expected, Values(spline), 1e-14);
    }

    [Fact]
    public void SetBoundaryCondition_Above1e30_IsNatural()
    {
        using var spline = new Spline();
        spline.SetBoundaryCondition1(2);
        spline.SetBoundaryCondition2(-1);
        spline.SetBoundaryCondition1(1.1e30);
        spline.SetBoundaryCondition2(1e31);
        ExpectNear(Expected, Values(spline), 1e-14);
    }

    [Fact]
    public void Interpolate_TableOfUnequalCounts_ReturnsTheNativeCode()
    {
        using var spline = new Spline();
        Assert.Equal(10003, spline.Interpolate(Wide(0, 1, 2), Wide(0, 1), Wide(1), new DoubleArray()));
        Assert.Equal(10003, spline.Interpolate(Narrow(0, 1, 2), Narrow(0, 1), Narrow(1), new FloatArray()));
        double y = 77;
        Assert.Equal(10003, spline.Interpolate(Wide(0, 1, 2), Wide(0, 1), 1, ref y));
    }

    [Fact]
    public void Interpolate_EmptyTable_ReturnsTheNativeCode()
    {
        using var spline = new Spline();
        var y = new DoubleArray();
        Assert.Equal(10002, spline.Interpolate(Wide(), Wide(), Wide(1), y));
        Assert.Equal([double.NaN], Measure.Elements(y));
    }

    [Fact]
    public void Disposed_RefusesTheBoundaries()
    {
        var spline = new Spline();
        spline.Dispose();
        Assert.Throws<ObjectDisposedException>(() => spline.SetBoundaryCondition1(1));
        Assert.Throws<ObjectDisposedException>(() => spline.SetBoundaryCondition2(1));
        Assert.Throws<ObjectDisposedException>(() => spline.SetNaturalSpline());
    }
}

public sealed class CubicHermiteInterpolationTests : InterpolatorTests
{
    private protected override Interpolator Make() => new CubicHermiteInterpolation();

    // scipy.interpolate.PchipInterpolator([0, 1, 3, 4], [0, 1, 4, 4.5])
    private protected override double[] Expected =>
        [0.4574275362318841, 2.6158466819221964, 4.317982456140351, 4.087719298245614];

    [Fact]
    public void Interpolate_TableThatDoesNotAscend_Fails()
    {
        using var hermite = new CubicHermiteInterpolation();
        DoubleArray x = Wide(0, 2, 2);
        var e = Assert.Throws<QORNExceptionCatcher>(() => hermite.Interpolate(x, x, x, new DoubleArray()));
        Assert.Equal("10002 - invalid input parameter", e.Message);
        Assert.Equal(10002, e.ErrorCode);
        Assert.Equal("math\\CubicHermiteInterpolation", e.FileName);
        Assert.True(e.LineNumber > 0);
    }

    [Fact]
    public void Interpolate_TableOfOnePoint_Fails()
    {
        using var hermite = new CubicHermiteInterpolation();
        FloatArray x = Narrow(1);
        float y = 77;
        var e = Assert.Throws<QORNExceptionCatcher>(() => hermite.Interpolate(x, x, 1, ref y));
        Assert.Equal("12005 - CubicHermiteInterpolation error", e.Message);
        Assert.Equal(12005, e.ErrorCode);
        Assert.Equal(77, y);
    }

    [Fact]
    public void Interpolate_WithoutTheInnerValuesAlone_GivesAll()
    {
        using var hermite = new CubicHermiteInterpolation();
        var wide = new DoubleArray(9);
        Assert.Equal(0, hermite.Interpolate(Wide(s_x), Wide(s_y), Wide(s_at), wide, false));
        ExpectNear(Expected, wide, 1e-14);
        var narrow = new FloatArray(9);
        Assert.Equal(0, hermite.Interpolate(Narrow(s_x), Narrow(s_y), Narrow(s_at), narrow, false));
        ExpectNear(Expected, narrow, 5e-6);
    }

    [Fact]
    public void Interpolate_InnerValuesAlone_StandFromIndexOneOn()
    {
        using var hermite = new CubicHermiteInterpolation();
        DoubleArray wide = Wide(70, 71, 72, 73, 74);
        Assert.Equal(0, hermite.Interpolate(Wide(s_x), Wide(s_y), Wide(s_at), wide, true));
        ExpectNear([70, Expected[0], Expected[1]], wide, 1e-14);
        var narrow = new FloatArray();
        Assert.Equal(0, hermite.Interpolate(Narrow(s_x), Narrow(s_y), Narrow(s_at), narrow, true));
        ExpectNear([0, Expected[0], Expected[1]], narrow, 5e-6);

        // Fewer values than inner points: all of them.
        Assert.Equal(0, hermite.Interpolate(Wide(s_x), Wide(s_y), Wide(2), wide, true));
        ExpectNear([70, Expected[1]], wide, 1e-14);
    }

    // The curve through points of a straight line is the line.
    [Theory]
    [InlineData(0, 8, 6, 0)]
    [InlineData(0, 8, 4, 0)]
    [InlineData(5, 8, 6, 3)]
    [InlineData(5, 8, 7, 3)]
    [InlineData(5, 8, 0, 0)]
    [InlineData(5, 8, 100, 6)]
    [InlineData(5, 2, 0, 0)]
    public void Interpolate_UniformData_GivesTheShiftedLine(int first, int n, int filterLength, int from)
    {
        const double step = 0.5, offset = 10, shift = 0.125, slope = 3;
        var yIn = new FloatArray(first + n);
        for (int k = 0; k < yIn.Count; ++k) yIn[k] = (float)(slope * (k * step + offset));
        var yOut = new FloatArray(first + n + 1);
        for (int k = 0; k < yOut.Count; ++k) yOut[k] = -k;
        using var hermite = new CubicHermiteInterpolation();
        Assert.Equal(0, hermite.Interpolate(first, n, step, offset, shift, filterLength, yIn, yOut));
        Assert.Equal(first + n + 1, yOut.Count);
        for (int k = 0; k < yOut.Count; ++k)
        {
            int i = k - first;
            double expected = i >= from && i < n - 2 ? slope * ((k + 1) * step + offset + shift) : -k;
            Assert.Equal(expected, yOut[k], 1e-5);
        }
    }

    [Fact]
    public void Interpolate_UniformData_IsTheCurveOfItsTable()
    {
        const int first = 2, n = 7;
        var yIn = new FloatArray([5, 1, 0, 1, 4, 4.5f, 4.25f, 8, 9]);
        DoubleArray x = new(n), y = new(n), at = new(n), expected = new();
        for (int i = 0; i < n; ++i)
        {
            x[i] = (first + i) * 0.1 - 3;
            at[i] = x[i] + 0.03;
            y[i] = yIn[first + i];
        }
        using var hermite = new CubicHermiteInterpolation();
        hermite.Interpolate(x, y, at, expected);
        var yOut = new FloatArray(first + n);
        Assert.Equal(0, hermite.Interpolate(first, n, 0.1, -3, 0.03, 2, yIn, yOut));
        for (int i = 1; i < n - 2; ++i) Assert.Equal((float)expected[i + 1], yOut[first + i]);
        Assert.Equal(0, yOut[first]);
    }

    [Fact]
    public void Interpolate_UniformDataThatCannotBe_Fails()
    {
        using var hermite = new CubicHermiteInterpolation();
        var data = new FloatArray(10);
        QORNExceptionCatcher Fails(int first, int n, int filterLength, FloatArray yIn, FloatArray yOut)
        {
            return Assert.Throws<QORNExceptionCatcher>(
                () => hermite.Interpolate(first, n, 1, 0, 0, filterLength, yIn, yOut));
        }

        Assert.IsType<IndexOutOfRangeException>(Fails(5, 6, 0, data, data).InnerException);
        Assert.IsType<IndexOutOfRangeException>(Fails(-1, 6, 0, data, data).InnerException);
        Assert.IsType<IndexOutOfRangeException>(Fails(0, 8, 0, data, new FloatArray(5)).InnerException);
        Assert.IsType<ArgumentNullException>(Fails(0, 8, 0, null!, data).InnerException);
        Assert.IsType<ArgumentNullException>(Fails(0, 8, 0, data, null!).InnerException);
        Assert.IsType<ArgumentOutOfRangeException>(Fails(1, 8, -1, data, data).InnerException);
        Assert.Equal(12005, Fails(0, 1, 0, data, data).ErrorCode);
        Assert.Equal(12005, Fails(0, 0, 0, data, data).ErrorCode);
        Assert.Equal(10002, Fails(0, -1, 0, data, data).ErrorCode);
        var e = Assert.Throws<QORNExceptionCatcher>(() => hermite.Interpolate(0, 5, 0, 0, 0, 0, data, data));
        Assert.Equal(10002, e.ErrorCode);
    }

    [Fact]
    public void Interpolate_UniformDataOnceMore_AllocatesNothing()
    {
        using var hermite = new CubicHermiteInterpolation();
        FloatArray yIn = new(100), yOut = new(100);
        DoubleArray x = Wide(s_x), y = Wide(s_y), at = Wide(s_at), dst = new();
        Assert.Equal(0, Measure.AllocatedBytes(() => hermite.Interpolate(0, 100, 1, 0, 0.5, 8, yIn, yOut)));
        Assert.Equal(0, Measure.AllocatedBytes(() => hermite.Interpolate(x, y, at, dst, true)));
    }

    [Fact]
    public void Disposed_RefusesTheOtherForms()
    {
        var hermite = new CubicHermiteInterpolation();
        hermite.Dispose();
        var data = new FloatArray(4);
        var wide = new DoubleArray(4);
        Assert.Throws<ObjectDisposedException>(() => hermite.Interpolate(data, data, data, data, true));
        Assert.Throws<ObjectDisposedException>(() => hermite.Interpolate(wide, wide, wide, wide, false));
        Assert.Throws<ObjectDisposedException>(() => hermite.Interpolate(0, 4, 1, 0, 0, 0, data, data));
    }
}
