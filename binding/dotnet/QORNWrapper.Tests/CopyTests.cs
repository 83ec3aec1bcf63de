namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>The rules that all families of <see cref="Helper"/> share; each family is a class below.</summary>
public abstract class CopyTests<TArray, TVector, T>
    where TArray : KSTArray<T>, new() where TVector : NativeVector<T>, new() where T : unmanaged
{
    private readonly TVector m_vector = new();

    private protected abstract T Value(int i);

    private protected abstract void Copy(TArray src, TVector dst);

    private protected abstract void Copy(TArray src, TVector dst, int start, int count);

    private protected abstract void Copy(TVector src, TArray dst);

    private protected abstract void Copy(TVector src, TArray dst, int start);

    /// <summary>False if the family has no such form.</summary>
    private protected virtual bool Copy(TVector src, TArray dst, int start, int count) => false;

    private TArray Make(params int[] values)
    {
        var array = new TArray { Count = values.Length };
        for (int i = 0; i < values.Length; ++i) array[i] = Value(values[i]);
        return array;
    }

    private void ExpectVector(params int[] values)
    {
        var array = new TArray();
        Copy(m_vector, array);
        ExpectArray(array, values);
    }

    private void ExpectArray(TArray array, params int[] values)
    {
        Assert.Equal(Array.ConvertAll(values, Value), Measure.Elements(array));
    }

    [Fact]
    public void Whole_ThereAndBack_IsTheSame()
    {
        Copy(Make(1, 2, 3), m_vector);
        Assert.Equal(3, m_vector.GetSize());
        ExpectVector(1, 2, 3);
    }

    [Fact]
    public void WholeToNative_EmptyArray_GivesAnEmptyVector()
    {
        Copy(Make(1, 2, 3), m_vector);
        Copy(new TArray(), m_vector);
        Assert.Equal(0, m_vector.GetSize());
        ExpectVector();
    }

    [Fact]
    public void WholeToNative_OfCountsUpToTheCapacity_KeepsTheMemory()
    {
        Copy(Make(1, 2, 3), m_vector);
        Copy(Make(4), m_vector);
        Assert.Equal(1, m_vector.GetSize());
        Assert.Equal(3, m_vector.GetCapacity());
        Copy(Make(5, 6, 7, 8), m_vector);
        Assert.Equal(4, m_vector.GetCapacity());
        ExpectVector(5, 6, 7, 8);
    }

    [Fact]
    public void WholeToNative_TakesTheCountAndNotTheBlock()
    {
        TArray array = Make(1, 2, 3);
        array.Count = 2;
        Copy(array, m_vector);
        ExpectVector(1, 2);
    }

    [Fact]
    public void RangeToNative_TakesItsElements()
    {
        Copy(Make(1, 2, 3, 4, 5), m_vector, 1, 3);
        ExpectVector(2, 3, 4);
        Copy(Make(1, 2, 3, 4, 5), m_vector, 4, 1);
        Assert.Equal(3, m_vector.GetCapacity());
        ExpectVector(5);
        Copy(Make(1), m_vector, 0, 0);
        ExpectVector();
    }

    [Fact]
    public void RangeToNative_BeyondTheArray_Throws()
    {
        Assert.Throws<IndexOutOfRangeException>(() => Copy(Make(1, 2, 3), m_vector, 2, 2));
        Assert.Throws<IndexOutOfRangeException>(() => Copy(Make(1, 2, 3), m_vector, -1, 2));
    }

    [Fact]
    public void RangeToNative_OfANegativeCount_IsRefused()
    {
        var e = Assert.Throws<QORNExceptionCatcher>(() => Copy(Make(1), m_vector, 0, -1));
        Assert.Equal(10002, e.ErrorCode);
    }

    [Fact]
    public void ToManaged_WithAStart_CountsItAndKeepsWhatIsBefore()
    {
        Copy(Make(1, 2), m_vector);
        TArray array = Make(7, 8, 9);
        Copy(m_vector, array, 3);
        ExpectArray(array, 7, 8, 9, 1, 2);
        Copy(m_vector, array, 1);
        ExpectArray(array, 7, 1, 2);
    }

    [Fact]
    public void ToManaged_WithAStart_IntoAnEmptyArray_LeavesZerosBefore()
    {
        Copy(Make(1, 2), m_vector);
        var array = new TArray();
        Copy(m_vector, array, 3);
        Assert.Equal(5, array.Count);
        Assert.Equal(new[] { default, default, default, Value(1), Value(2) }, Measure.Elements(array));
    }

    [Fact]
    public void ToManaged_WithAStartAndACount_TakesTheSmallerNumber()
    {
        Copy(Make(1, 2, 3), m_vector);
        TArray array = Make(7, 8);
        if (!Copy(m_vector, array, 1, 2)) return;
        ExpectArray(array, 7, 1, 2);
        Copy(m_vector, array, 1, 100);
        ExpectArray(array, 7, 1, 2, 3);
        Copy(m_vector, array, 1, 0);
        ExpectArray(array, 7);
    }

    [Fact]
    public void ToManaged_ShrinksALongerArray()
    {
        Copy(Make(1, 2), m_vector);
        TArray array = Make(7, 8, 9);
        Copy(m_vector, array);
        ExpectArray(array, 1, 2);
    }

    [Fact]
    public void ToManaged_AtAnImpossibleStart_ThrowsAndWritesNothing()
    {
        Copy(Make(1, 2), m_vector);
        TArray array = Make(7, 8, 9);
        Assert.ThrowsAny<Exception>(() => Copy(m_vector, array, -1));
        Assert.Throws<OverflowException>(() => Copy(m_vector, array, int.MaxValue));
        Assert.Equal(Value(7), array.InnerArray[0]);
    }

    [Fact]
    public void Null_Throws_AfterAFailingAssertion()
    {
        int before = Assertions.Failed;
        var calls = new List<Action>
        {
            () => Copy((TArray)null!, m_vector),
            () => Copy((TArray)null!, m_vector, 0, 1),
            () => Copy(new TArray(), (TVector)null!),
            () => Copy(new TArray(), (TVector)null!, 0, 1),
            () => Copy(m_vector, (TArray)null!),
            () => Copy(m_vector, (TArray)null!, 0),
            () => Copy((TVector)null!, new TArray()),
            () => Copy((TVector)null!, new TArray(), 0),
        };
        if (Copy(m_vector, new TArray(), 0, 0)) calls.Add(() => Copy(m_vector, null!, 0, 1));
        foreach (Action call in calls) Assert.Throws<ArgumentNullException>(call);
        Assert.Equal(before + calls.Count * Assertions.One, Assertions.Failed);
    }

    [Fact]
    public void DisposedVector_Throws()
    {
        m_vector.Dispose();
        m_vector.Dispose();
        Assert.Throws<ObjectDisposedException>(() => Copy(Make(1), m_vector));
        Assert.Throws<ObjectDisposedException>(() => Copy(Make(1), m_vector, 0, 1));
        Assert.Throws<ObjectDisposedException>(() => Copy(m_vector, new TArray()));
        Assert.Throws<ObjectDisposedException>(() => m_vector.GetSize());
        Assert.Throws<ObjectDisposedException>(() => m_vector.GetCapacity());
    }

    [Fact]
    public void RepeatedCopies_AllocateNothing()
    {
        TArray src = Make(1, 2, 3), dst = Make(1, 2, 3, 4);
        long bytes = Measure.AllocatedBytes(() =>
        {
            Copy(src, m_vector);
            Copy(m_vector, dst);
            Copy(src, m_vector, 1, 2);
            Copy(m_vector, dst, 1);
            Copy(m_vector, dst, 1, 2);
        });
        Assert.Equal(0, bytes);
    }
}

public sealed class CopyIQ32Tests : CopyTests<IQArray, VecCplx32, IQ>
{
    private protected override IQ Value(int i) => new() { I = i, Q = -i - 0.5f };

    private protected override void Copy(IQArray src, VecCplx32 dst) => Helper.CopyIQ32(src, dst);

    private protected override void Copy(IQArray src, VecCplx32 dst, int start, int count) =>
        Helper.CopyIQ32(src, dst, start, count);

    private protected override void Copy(VecCplx32 src, IQArray dst) => Helper.CopyIQ32(src, dst);

    private protected override void Copy(VecCplx32 src, IQArray dst, int start) => Helper.CopyIQ32(src, dst, start);

    private protected override bool Copy(VecCplx32 src, IQArray dst, int start, int count)
    {
        Helper.CopyIQ32(src, dst, start, count);
        return true;
    }
}

public sealed class CopyIQ64Tests : CopyTests<IQDoubleArray, VecCplx64, IQDouble>
{
    private protected override IQDouble Value(int i) => new() { I = i + 1e-12, Q = -i };

    private protected override void Copy(IQDoubleArray src, VecCplx64 dst) => Helper.CopyIQ64(src, dst);

    private protected override void Copy(IQDoubleArray src, VecCplx64 dst, int start, int count) =>
        Helper.CopyIQ64(src, dst, start, count);

    private protected override void Copy(VecCplx64 src, IQDoubleArray dst) => Helper.CopyIQ64(src, dst);

    private protected override void Copy(VecCplx64 src, IQDoubleArray dst, int start) =>
        Helper.CopyIQ64(src, dst, start);
}

public sealed class CopyFloatTests : CopyTests<FloatArray, VecReal32, float>
{
    private protected override float Value(int i) => i + 0.25f;

    private protected override void Copy(FloatArray src, VecReal32 dst) => Helper.CopyFloat(src, dst);

    private protected override void Copy(FloatArray src, VecReal32 dst, int start, int count) =>
        Helper.CopyFloat(src, dst, start, count);

    private protected override void Copy(VecReal32 src, FloatArray dst) => Helper.CopyFloat(src, dst);

    private protected override void Copy(VecReal32 src, FloatArray dst, int start) => Helper.CopyFloat(src, dst, start);

    private protected override bool Copy(VecReal32 src, FloatArray dst, int start, int count)
    {
        Helper.CopyFloat(src, dst, start, count);
        return true;
    }
}

public sealed class CopyDoubleTests : CopyTests<DoubleArray, VecReal64, double>
{
    private protected override double Value(int i) => i + 1e-12;

    private protected override void Copy(DoubleArray src, VecReal64 dst) => Helper.CopyDouble(src, dst);

    private protected override void Copy(DoubleArray src, VecReal64 dst, int start, int count) =>
        Helper.CopyDouble(src, dst, start, count);

    private protected override void Copy(VecReal64 src, DoubleArray dst) => Helper.CopyDouble(src, dst);

    private protected override void Copy(VecReal64 src, DoubleArray dst, int start) =>
        Helper.CopyDouble(src, dst, start);

    private protected override bool Copy(VecReal64 src, DoubleArray dst, int start, int count)
    {
        Helper.CopyDouble(src, dst, start, count);
        return true;
    }
}

public sealed class CopyShortTests : CopyTests<ShortArray, VecInt16, short>
{
    private protected override short Value(int i) => (short)(i * -1000);

    private protected override void Copy(ShortArray src, VecInt16 dst) => Helper.CopyShort(src, dst);

    private protected override void Copy(ShortArray src, VecInt16 dst, int start, int count) =>
        Helper.CopyShort(src, dst, start, count);

    private protected override void Copy(VecInt16 src, ShortArray dst) => Helper.CopyShort(src, dst);

    private protected override void Copy(VecInt16 src, ShortArray dst, int start) => Helper.CopyShort(src, dst, start);
}

public sealed class CopyIntTests : CopyTests<IntArray, VecInt32, int>
{
    private protected override int Value(int i) => i * -100000;

    private protected override void Copy(IntArray src, VecInt32 dst) => Helper.CopyInt(src, dst);

    private protected override void Copy(IntArray src, VecInt32 dst, int start, int count) =>
        Helper.CopyInt(src, dst, start, count);

    private protected override void Copy(VecInt32 src, IntArray dst) => Helper.CopyInt(src, dst);

    private protected override void Copy(VecInt32 src, IntArray dst, int start) => Helper.CopyInt(src, dst, start);
}

public sealed class CopyUIntTests : CopyTests<UIntArray, VecUInt32, uint>
{
    private protected override uint Value(int i) => uint.MaxValue - (uint)i;

    private protected override void Copy(UIntArray src, VecUInt32 dst) => Helper.CopyUInt(src, dst);

    private protected override void Copy(UIntArray src, VecUInt32 dst, int start, int count) =>
        Helper.CopyUInt(src, dst, start, count);

    private protected override void Copy(VecUInt32 src, UIntArray dst) => Helper.CopyUInt(src, dst);

    private protected override void Copy(VecUInt32 src, UIntArray dst, int start) => Helper.CopyUInt(src, dst, start);
}
