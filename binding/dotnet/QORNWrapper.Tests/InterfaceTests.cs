using System.Reflection;

namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>What hosts compile against and debug: names and numbers.</summary>
public sealed class InterfaceTests
{
    private static bool HasField(Type type, string name)
    {
        return type.GetField(name, BindingFlags.Instance | BindingFlags.NonPublic) != null;
    }

    [Fact]
    public void WindowTypes_HaveTheNumbersOfTheNativeOnes()
    {
        string[] names =
        [
            "WindowRectangle", "WindowBlackmanHarris", "WindowFlatTop", "WindowHann", "WindowGauss", "WindowCISPR6dB",
            "WindowMil6dB", "WindowKaiser", "WindowHamming", "WindowBlackman", "WindowBarlett", "WindowTriangular",
            "WindowTukey", "WindowChebyshev", "WindowUserDefined",
        ];
        for (int i = 0; i < names.Length; ++i) Assert.Equal(names[i], ((QornWindowType)i).ToString());
        Assert.False(Enum.IsDefined((QornWindowType)15));
        Assert.Equal(16, (int)QornWindowType.WindowNone);
        Assert.Equal(16, Enum.GetValues<QornWindowType>().Length);
        Assert.Equal(0, (int)PowerUnit.PowerUnitDBV);
    }

    [Fact]
    public void Fields_BearTheirNames()
    {
        foreach (string name in new[] { "m_disposed", "m_size", "m_pQorn", "m_vecCplx32In", "m_vecReal32Out", "m_vecReal32In" })
        {
            Assert.True(HasField(typeof(Spectrum), name), name);
        }
        foreach (Type type in new[] { typeof(Spline), typeof(CubicHermiteInterpolation) })
        {
            Assert.True(HasField(type, "m_disposed"));
            Assert.True(HasField(type, "m_pQorn"));
            foreach (string width in new[] { "32", "64" })
            {
                foreach (string role in new[] { "XIn", "YIn", "XOut", "YOut" })
                {
                    Assert.True(HasField(type, "m_vecReal" + width + role), width + role);
                }
            }
        }
        foreach ((string name, Type type) in new[]
                 {
                     ("FileName", typeof(string)), ("LineNumber", typeof(int)), ("ErrorCode", typeof(int)),
                 })
        {
            Assert.Equal(type, typeof(QORNExceptionCatcher).GetField(name)!.FieldType);
        }
    }

    [Fact]
    public void Assembly_HasTheVersionOfTheLibrary()
    {
        Version version = typeof(Spectrum).Assembly.GetName().Version!;
        Assert.True(version > new Version(0, 0, 9, 9), version.ToString());
    }
}
