namespace Morvenhal.RF.KST.QORNWrapper.Tests;

internal static class Measure
{
    /// <summary>The bytes that a call allocates on the managed heap once it has run a few times.</summary>
    internal static long AllocatedBytes(Action call)
    {
        for (int i = 0; i < 3; ++i) call();
        long before = GC.GetAllocatedBytesForCurrentThread();
        call();
        return GC.GetAllocatedBytesForCurrentThread() - before;
    }

    internal static T[] Elements<T>(KSTArray<T> array) where T : struct => array.InnerArray[..array.Count];
}
