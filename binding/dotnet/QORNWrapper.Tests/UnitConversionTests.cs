using System.Reflection;

namespace Morvenhal.RF.KST.QORNWrapper.Tests;

public sealed class UnitConversionTests
{
    private const double Offset = 13.01029995663981;

    /// <summary>The formulas in double, for arguments above 0.</summary>
    private static readonly Dictionary<string, Func<double, double>> s_formulas = new()
    {
        ["Watt2dBm"] = w => 10 * Math.Log10(1000 * w),
        ["dBm2Watt"] = p => Math.Pow(10, p / 10) / 1000,
        ["Volt2dBm"] = v => 20 * Math.Log10(v / Math.Sqrt(0.05)),
        ["dBm2Volt"] = p => Math.Pow(10, p / 20) * Math.Sqrt(0.05),
        ["PeakVolt2dBm"] = v => 20 * Math.Log10(v) + 10,
        ["dBm2PeakVolt"] = p => Math.Pow(10, (p - 10) / 20),
        ["Volt2Watt"] = v => v * v / 50,
        ["Watt2Volt"] = w => Math.Sqrt(50 * w),
        ["dBm2dBV"] = p => p - Offset,
        ["dBV2dBm"] = u => u + Offset,
        ["dBV2Volt"] = u => Math.Pow(10, u / 20),
        ["Volt2dBV"] = v => 20 * Math.Log10(v),
        ["dBV2Watt"] = u => Math.Pow(10, u / 10) / 50,
        ["Watt2dBV"] = w => 10 * Math.Log10(50 * w),
        ["dBpT2dBuVm"] = b => b + 49.5,
        ["dBuVm2dBpT"] = e => e - 49.5,
    };

    public static TheoryData<string> Names => new(s_formulas.Keys);

    private static readonly double[] s_arguments = [0.5, 3, 20.25];

    private static MethodInfo? Form(string name, params Type[] arguments)
    {
        return typeof(UnitConversion).GetMethods(BindingFlags.Public | BindingFlags.Static).SingleOrDefault(
            m => m.Name == name && m.GetParameters().Select(p => p.ParameterType).SequenceEqual(arguments));
    }

    private static bool InDoubleOnly(string name) => name is "dBpT2dBuVm" or "dBuVm2dBpT";

    private static void ExpectNear(double expected, double found, double eps)
    {
        Assert.Equal(expected, found, eps * Math.Max(Math.Abs(expected), 20));
    }

    [Theory]
    [MemberData(nameof(Names))]
    public void Scalars_GiveTheFormula(string name)
    {
        var wide = Form(name, typeof(double))!.CreateDelegate<Func<double, double>>();
        foreach (double x in s_arguments) ExpectNear(s_formulas[name](x), wide(x), 1e-14);
        MethodInfo? single = Form(name, typeof(float));
        Assert.Equal(InDoubleOnly(name), single == null);
        var narrow = single?.CreateDelegate<Func<float, float>>();
        foreach (double x in s_arguments)
        {
            if (narrow != null) ExpectNear(s_formulas[name](x), narrow((float)x), 3e-7);
        }
    }

    [Theory]
    [MemberData(nameof(Names))]
    public void Arrays_GiveWhatTheScalarsGive(string name)
    {
        var wide = Form(name, typeof(double))!.CreateDelegate<Func<double, double>>();
        var each = Form(name, typeof(DoubleArray), typeof(DoubleArray))!.CreateDelegate<Action<DoubleArray, DoubleArray>>();
        var dst = new DoubleArray(7);
        each(dst, new DoubleArray(s_arguments));
        Assert.Equal(Array.ConvertAll(s_arguments, x => wide(x)), Measure.Elements(dst));
        each(dst, new DoubleArray());
        Assert.Equal(0, dst.Count);

        MethodInfo? single = Form(name, typeof(FloatArray), typeof(FloatArray));
        Assert.Equal(InDoubleOnly(name), single == null);
        if (single == null) return;
        var narrow = Form(name, typeof(float))!.CreateDelegate<Func<float, float>>();
        var place = new FloatArray(Array.ConvertAll(s_arguments, x => (float)x));
        single.CreateDelegate<Action<FloatArray, FloatArray>>()(place, place);
        Assert.Equal(Array.ConvertAll(s_arguments, x => narrow((float)x)), Measure.Elements(place));
    }

    [Fact]
    public void TheClass_HasTheFormsAndNoOther()
    {
        int count = typeof(UnitConversion).GetMethods(BindingFlags.Public | BindingFlags.Static).Length;
        Assert.Equal(14 * 4 + 2 * 2, count);
        Assert.Equal(16, s_formulas.Count);
    }

    [Fact]
    public void Logarithms_MeetNoZeroAndNoNegativeNumber()
    {
        Assert.Equal(-800.0000468161031, UnitConversion.Volt2dBV(0.0), 1e-9);
        Assert.Equal(-400.00002340805156, UnitConversion.Watt2dBm(0.0), 1e-9);
        Assert.Equal(-19980.0, UnitConversion.Volt2dBm(-1.0));
        Assert.Equal(-19970.0, UnitConversion.PeakVolt2dBm(-1.0));
        Assert.Equal(-10003.01029995664, UnitConversion.Watt2dBV(-1.0), 1e-9);
        var dst = new DoubleArray();
        UnitConversion.Volt2dBm(dst, new DoubleArray([-1.0]));
        Assert.Equal(-19980.0, dst[0]); // where the vector form of the native library gives not-a-number
    }

    [Fact]
    public void NullArrays_AreRefused()
    {
        Assert.Throws<ArgumentNullException>(() => UnitConversion.Watt2dBm(new DoubleArray(), null!));
        Assert.Throws<ArgumentNullException>(() => UnitConversion.Watt2dBm(null!, new FloatArray()));
    }

    [Fact]
    public void Arrays_OfTheSameCount_AllocateNothing()
    {
        FloatArray src = new([1, 2, 3]), dst = new();
        Assert.Equal(0, Measure.AllocatedBytes(() => UnitConversion.Volt2dBm(dst, src)));
    }
}
