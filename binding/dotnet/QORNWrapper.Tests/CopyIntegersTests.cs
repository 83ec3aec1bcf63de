namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>The forms of <see cref="Helper"/> for integers that stand outside the families.</summary>
public sealed class CopyIntegersTests
{
    private readonly VecInt32 m_signed = new();
    private readonly VecUInt32 m_unsigned = new();

    public CopyIntegersTests()
    {
        Helper.CopyInt(new IntArray([-1, 2, 3]), m_signed);
        Helper.CopyUInt(new UIntArray([uint.MaxValue, 2, 3]), m_unsigned);
    }

    [Fact]
    public void CopyUIntToInt_Whole_KeepsTheBits()
    {
        var array = new IntArray(7);
        Helper.CopyUIntToInt(m_unsigned, array);
        Assert.Equal([-1, 2, 3], Measure.Elements(array));
    }

    [Fact]
    public void CopyUIntToInt_WithAStart_CountsItAndKeepsWhatIsBefore()
    {
        var array = new IntArray([7]);
        Helper.CopyUIntToInt(m_unsigned, array, 1);
        Assert.Equal([7, -1, 2, 3], Measure.Elements(array));
        Assert.Throws<ArgumentNullException>(() => Helper.CopyUIntToInt(m_unsigned, null!));
        Assert.Throws<ArgumentNullException>(() => Helper.CopyUIntToInt(m_unsigned, null!, 1));
    }

    [Fact]
    public void CopyInt32_ByReference_MakesAnArrayOfTheLength()
    {
        int[] former = new int[7], array = former;
        Helper.CopyInt32(m_signed, ref array);
        Assert.Equal([-1, 2, 3], array);
        Assert.Equal(new int[7], former);
        array = null!;
        Helper.CopyInt32(m_signed, ref array);
        Assert.Equal(3, array.Length);
        Helper.CopyInt32(new VecInt32(), ref array);
        Assert.Empty(array);
        Assert.Throws<ArgumentNullException>(() => Helper.CopyInt32(null!, ref array));
    }

    [Fact]
    public void CopyInt32_FillsTheFirstElementsOfALongerArray()
    {
        int[] array = [7, 7, 7, 7];
        Helper.CopyInt32(m_signed, array);
        Assert.Equal([-1, 2, 3, 7], array);
    }

    [Fact]
    public void CopyUInt32_FillsTheFirstElementsOfALongerArray()
    {
        uint[] array = [7, 7, 7, 7];
        Helper.CopyUInt32(m_unsigned, array);
        Assert.Equal([uint.MaxValue, 2, 3, 7], array);
    }

    [Fact]
    public void PlainArrays_TooShortOrNull_AreRefused()
    {
        int[] array = [7, 7];
        Assert.Throws<ArgumentException>(() => Helper.CopyInt32(m_signed, array));
        Assert.Equal([7, 7], array);
        Assert.Throws<ArgumentException>(() => Helper.CopyUInt32(m_unsigned, new uint[2]));
        Assert.Throws<ArgumentNullException>(() => Helper.CopyInt32(m_signed, (int[])null!));
        Assert.Throws<ArgumentNullException>(() => Helper.CopyUInt32(m_unsigned, null!));
    }
}
