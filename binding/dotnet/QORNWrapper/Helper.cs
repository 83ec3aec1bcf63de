using System;
using System.Diagnostics;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// Copies between managed arrays and native vectors.
    /// </summary>
    /// <remarks>
    /// <para>To native: the vector gets the count of the array and, as one block, its elements. A vector that has had the
    /// count before keeps its memory. The form with a range gives the vector the length of the range and takes its
    /// elements, from element start on, through the array's indexer.</para>
    /// <para>To managed: of the vector's first elements as many are copied as there are, or count if that is less. The
    /// array's count becomes their number plus start, and they stand, as one block, from its element start on; without a
    /// start they stand from element 0 on. What stands before start stays.</para>
    /// <para>An array or vector of null is refused with <see cref="ArgumentNullException"/>, a negative count to native with
    /// <see cref="QORNExceptionCatcher"/>.</para>
    /// </remarks>
    public static class Helper
    {
        /// <summary>Copies all of an array to native.</summary>
        public static void CopyIQ32(IQArray src, VecCplx32 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyIQ32(IQArray src, VecCplx32 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyIQ32(VecCplx32 src, IQArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyIQ32(VecCplx32 src, IQArray dst, int start) => ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies at most count elements to managed, from element start of the array on.</summary>
        public static void CopyIQ32(VecCplx32 src, IQArray dst, int start, int count) =>
            ToManaged(src, dst, start, count);

        /// <summary>Copies all of an array to native.</summary>
        public static void CopyIQ64(IQDoubleArray src, VecCplx64 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyIQ64(IQDoubleArray src, VecCplx64 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyIQ64(VecCplx64 src, IQDoubleArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyIQ64(VecCplx64 src, IQDoubleArray dst, int start) =>
            ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies all of an array to native.</summary>
        public static void CopyFloat(FloatArray src, VecReal32 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyFloat(FloatArray src, VecReal32 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyFloat(VecReal32 src, FloatArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyFloat(VecReal32 src, FloatArray dst, int start) =>
            ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies at most count elements to managed, from element start of the array on.</summary>
        public static void CopyFloat(VecReal32 src, FloatArray dst, int start, int count) =>
            ToManaged(src, dst, start, count);

        /// <summary>Copies all of an array to native.</summary>
        public static void CopyDouble(DoubleArray src, VecReal64 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyDouble(DoubleArray src, VecReal64 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyDouble(VecReal64 src, DoubleArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyDouble(VecReal64 src, DoubleArray dst, int start) =>
            ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies at most count elements to managed, from element start of the array on.</summary>
        public static void CopyDouble(VecReal64 src, DoubleArray dst, int start, int count) =>
            ToManaged(src, dst, start, count);

        /// <summary>Copies all of an array to native.</summary>
        public static void CopyShort(ShortArray src, VecInt16 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyShort(ShortArray src, VecInt16 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyShort(VecInt16 src, ShortArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyShort(VecInt16 src, ShortArray dst, int start) =>
            ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies all of an array to native.</summary>
        public static void CopyInt(IntArray src, VecInt32 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyInt(IntArray src, VecInt32 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyInt(VecInt32 src, IntArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyInt(VecInt32 src, IntArray dst, int start) => ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies all of an array to native.</summary>
        public static void CopyUInt(UIntArray src, VecUInt32 dst) => ToNative(src, dst);

        /// <summary>Copies the range of count elements from start on to native.</summary>
        public static void CopyUInt(UIntArray src, VecUInt32 dst, int start, int count) =>
            ToNative(src, dst, start, count);

        /// <summary>Copies all of a vector to managed.</summary>
        public static void CopyUInt(VecUInt32 src, UIntArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>Copies all of a vector to managed, from element start of the array on.</summary>
        public static void CopyUInt(VecUInt32 src, UIntArray dst, int start) =>
            ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies all of a vector to managed; values of 2^31 and more become negative, bit by bit.</summary>
        public static void CopyUIntToInt(VecUInt32 src, IntArray dst) => ToManaged(src, dst, 0, int.MaxValue);

        /// <summary>The same, from element start of the array on.</summary>
        public static void CopyUIntToInt(VecUInt32 src, IntArray dst, int start) =>
            ToManaged(src, dst, start, int.MaxValue);

        /// <summary>Copies all of a vector to a new array of its length.</summary>
        public static void CopyInt32(VecInt32 src, ref int[] dst)
        {
            RequireArgument(src, nameof(src));
            dst = new int[src.GetSize()];
            ToManaged(src, dst);
        }

        /// <summary>Copies all of a vector to the first elements of an array.</summary>
        /// <exception cref="ArgumentException">The array is shorter than the vector.</exception>
        public static void CopyInt32(VecInt32 src, int[] dst) => ToManaged(src, dst);

        /// <inheritdoc cref="CopyInt32(VecInt32, int[])"/>
        public static void CopyUInt32(VecUInt32 src, uint[] dst) => ToManaged(src, dst);

        internal static unsafe void ToNative<T>(KSTArray<T> src, NativeVector<T> dst) where T : unmanaged
        {
            int n = BlockOf(src, out T[] block);
            RequireArgument(dst, nameof(dst));
            fixed (T* first = block) dst.Import(first, n);
        }

        /// <summary>The count of an array, and the block that holds its elements.</summary>
        internal static int BlockOf<T>(KSTArray<T> src, out T[] block) where T : unmanaged
        {
            RequireArgument(src, nameof(src));
            block = src.InnerArray;
            RequireRoom(block.Length, src.Count);
            return src.Count;
        }

        private static unsafe void ToNative<T>(KSTArray<T> src, NativeVector<T> dst, int start, int count)
            where T : unmanaged
        {
            RequireArgument(src, nameof(src));
            RequireArgument(dst, nameof(dst));
            dst.Resize(count);
            T* elements = dst.Data;
            for (int i = 0; i < count; ++i) elements[i] = src[start + i];
            GC.KeepAlive(dst);
        }

        // The two types of elements have the same size; only integers of either sign differ.
        internal static unsafe void ToManaged<T, U>(NativeVector<T> src, KSTArray<U> dst, int start, int count)
            where T : unmanaged where U : unmanaged
        {
            RequireArgument(dst, nameof(dst));
            RequireArgument(src, nameof(src));
            int n = Math.Min(src.GetSize(), count);
            dst.Count = checked(n + start);
            if (n <= 0) return;
            U[] block = dst.InnerArray;
            RequireRoom(block.Length, n + start);
            fixed (U* first = &block[start]) src.Export((T*)first, n);
        }

        private static unsafe void ToManaged<T>(NativeVector<T> src, T[] dst) where T : unmanaged
        {
            RequireArgument(dst, nameof(dst));
            RequireArgument(src, nameof(src));
            int n = src.GetSize();
            RequireRoom(dst.Length, n);
            fixed (T* first = dst) src.Export(first, n);
        }

        private static void RequireArgument(object argument, string name)
        {
            Debug.Assert(argument != null, name);
            if (argument == null) throw new ArgumentNullException(name);
        }

        // What is copied as a block must not leave the memory of the array, whatever assembly its type comes from.
        private static void RequireRoom(int length, int needed)
        {
            if (length < needed) throw new ArgumentException($"The array has room for {length} elements, {needed} are needed.");
        }
    }
}
