using System.Diagnostics;
using System.Runtime.CompilerServices;

namespace Morvenhal.RF.KST.QORNWrapper.Tests;

/// <summary>
/// Counts failing debug assertions, which would end the test run otherwise. Release builds have none.
/// </summary>
internal sealed class Assertions : TraceListener
{
    [ThreadStatic]
    private static int s_failed;

    /// <summary>The number of assertions that failed on this thread.</summary>
    internal static int Failed => s_failed;

    /// <summary>The number that a failing assertion adds in this build.</summary>
#if DEBUG
    internal const int One = 1;
#else
    internal const int One = 0;
#endif

    [ModuleInitializer]
    internal static void Install()
    {
        Trace.Listeners.Clear();
        Trace.Listeners.Add(new Assertions());
    }

    public override void Fail(string? message) => ++s_failed;

    public override void Fail(string? message, string? detailMessage) => ++s_failed;

    public override void Write(string? message)
    {
    }

    public override void WriteLine(string? message)
    {
    }
}
